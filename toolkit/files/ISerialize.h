// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_ISERIALIZE_H
#define TOOLKIT_FILES_ISERIALIZE_H

#include "toolkit/core/Export.h"
#include "toolkit/files/StreamResult.h"

namespace Toolkit
{

class IStream;

/// An object that writes itself to a stream and reads itself back. `Deserialize` reads exactly the items that
/// `Serialize` wrote, in the same order; both return the first failure that they meet.
///
/// @code
/// struct Window : Toolkit::ISerialize
/// {
///     Toolkit::StreamResult Serialize(Toolkit::IStream& to) const override { return to.Write(width); }
///     Toolkit::StreamResult Deserialize(Toolkit::IStream& from) override { return from.Read(width); }
///     unsigned int width = 640;
/// };
/// @endcode
class TOOLKIT_API ISerialize
{
public:
    virtual ~ISerialize() = default;

    /// Writes the object to the stream.
    virtual StreamResult Serialize(IStream& stream) const = 0;
    /// Reads the object from the stream.
    virtual StreamResult Deserialize(IStream& stream) = 0;
};

} // namespace Toolkit

#endif
