// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_SYSTEMINFO_H
#define TOOLKIT_APP_SYSTEMINFO_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"

namespace Toolkit
{

/// What system the library runs on, and the start of child processes. Every operation is static and may be
/// called on any thread, with or without the instance, which the library's module owns. The questions about
/// the system cannot fail; each is asked once.
///
/// @code
/// const int code = Toolkit::SystemInfo::StartProcess(L"/bin/ls", L"-l /tmp", true);
/// if (code == -1)
///     return Fail("the child could not be waited for");
/// const bool little = Toolkit::SystemInfo::GetEndian() == Toolkit::SystemInfo::EndianLittle;
/// @endcode
class TOOLKIT_API SystemInfo
{
public:
    /// The families of systems that the library tells apart.
    enum Platform : unsigned int
    {
        PlatformUnknown = 0,
        PlatformWindows = 1,
        PlatformMac = 2,
        PlatformUnix = 3
    };

    /// The orders of bytes that the library tells apart.
    enum Endian : unsigned int
    {
        EndianUnknown = 0,
        EndianBig = 1,
        EndianLittle = 2,
        EndianMiddle = 3
    };

    /// Null before the modules are initialised and after they are released.
    static smart_ptr<SystemInfo, smart_ptr_policy>* s_pInstance;

    SystemInfo();
    ~SystemInfo();

    SystemInfo(const SystemInfo&) = delete;
    SystemInfo& operator=(const SystemInfo&) = delete;

    /// The first number of the kernel's release; 0 when unknown.
    static unsigned int GetOSMajorVersion();
    /// The second number of the kernel's release; 0 when unknown.
    static unsigned int GetOSMinorVersion();
    /// Major * 100 + minor * 10. Quirk: a minor version of ten reads as the next major one.
    static unsigned int GetOperatingSystemId();
    /// The family of the system. Quirk: wxWidgets' ids of the two small Windows variants count as unknown.
    static Platform GetPlatform();
    /// The order of bytes of the machine.
    static Endian GetEndian();

    /// False on this platform. Quirk: the questions about rights have fixed answers: no, no, yes.
    static bool HasAdministratorCredentials();
    /// False on this platform.
    static bool HasPowerUserCredentials();
    /// True on this platform.
    static bool CanElevateCredentialsUsingUAC();

    /// Runs the executable at `path`, not searched for, with `path` and what `CmdLineParser::Tokenize` finds
    /// in `arguments` as its UTF-8 argument vector; each text is cut at its first NUL. The result is the
    /// child's process id; with `wait` the call blocks until the child ends, and -1 tells that it could not
    /// be waited for; a trace then tells the child's exit code, or the signal that ended it. Without `wait`
    /// the caller reaps the child. Quirk: when no child can be made the result is the positive error number.
    /// Quirk: when the executable cannot be run, only the child's exit code tells the error number, which the
    /// result does not; with `wait` the trace does.
    static int StartProcess(const TString<wchar_t>& path, const TString<wchar_t>& arguments, bool wait);
};

} // namespace Toolkit

#endif
