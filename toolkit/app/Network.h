// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_NETWORK_H
#define TOOLKIT_APP_NETWORK_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// Tells whether the internet can be reached. Any thread may ask.
///
/// @code
/// const bool reached = Toolkit::Network::TestNetwork(5);
/// if (!reached)
///     return Fail("the internet cannot be reached");
/// @endcode
class TOOLKIT_API Network
{
public:
    /// The public web host that is probed, on port 80.
    static const TString<wchar_t> c_strProbedHost;

    /// True when a connection to the probed host could be made; nothing is sent over it. Blocks for the name
    /// resolution and then for at most `timeoutSeconds`; a negative time-out counts as 0.
    static bool TestNetwork(int timeoutSeconds);
};

} // namespace Toolkit

#endif
