// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_BACKGROUNDOPERATIONHANDLER_H
#define TOOLKIT_THREADING_BACKGROUNDOPERATIONHANDLER_H

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// A listener of a BackgroundOperation, which shares it and calls it on the thread that announces, with the
/// list of listeners held: it returns quickly. A handler of several operations keeps its own reference to the
/// one it watches.
///
/// @code
/// struct Watcher : Toolkit::BackgroundOperationHandler
/// {
///     void OnOperationStarted() override { Show("begun"); }
///     void OnOperationEnded() override { Show("done"); }
/// };
/// @endcode
class TOOLKIT_API BackgroundOperationHandler
{
public:
    virtual ~BackgroundOperationHandler() = default;

    /// The operation has begun.
    virtual void OnOperationStarted() = 0;
    /// The operation has ended.
    virtual void OnOperationEnded() = 0;
};

} // namespace Toolkit

#endif
