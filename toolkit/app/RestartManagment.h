// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_RESTARTMANAGMENT_H
#define TOOLKIT_APP_RESTARTMANAGMENT_H

#include <cstdint>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"

namespace Toolkit
{

/// The restart of the running application: the old process leaves a lock file and starts the executable again
/// with "-restart" after its arguments; the new process sees the lock and removes it once it has taken over.
/// Every operation is static and driven by the host, with or without the instance, which the library's module
/// owns. Failures are not reported. A lock file that is no regular file of this user is left alone and does
/// not count.
///
/// @code
/// Toolkit::RestartManagment::s_strExecutableFilename = L"desk";
/// if (Toolkit::RestartManagment::IsLocked())
///     Toolkit::RestartManagment::RemoveLock(); // a restart brought this process up
/// const wchar_t* arguments[] = {L"desk", L"-quiet"};
/// Toolkit::RestartManagment::ActivateRestartProcess(2, arguments);
/// @endcode
class TOOLKIT_API RestartManagment
{
public:
    /// Null before the modules are initialised and after they are released.
    static smart_ptr<RestartManagment, smart_ptr_policy>* s_pInstance;

    /// The path or the name of the host's executable, from which the lock file has its name. The host sets
    /// it, alike in the old process and the new one; empty at first.
    static TString<wchar_t> s_strExecutableFilename;

    /// A text for the host's use. Quirk: its name is misspelled.
    static const TString<wchar_t> c_strUniqueIdentifer;

    RestartManagment();
    virtual ~RestartManagment();

    RestartManagment(const RestartManagment&) = delete;
    RestartManagment& operator=(const RestartManagment&) = delete;

    /// The name in `s_strExecutableFilename`, without folder and extension.
    static TString<wchar_t> GetAppName();
    /// The first of the variables TMPDIR, TMP and TEMP that is not empty; "/tmp" if there is none. Quirk: a
    /// variable whose value is no UTF-8 is passed over. Quirk: it asks the environment, unlike `GetTempDir`
    /// of the path manager.
    static TString<wchar_t> GetTempDir();
    /// "<temporary folder>/<application><user>.restart".
    static TString<wchar_t> GetLockFileName();

    /// True while the lock file exists.
    static bool IsLocked();
    /// Removes the lock file, if there is one.
    static void RemoveLock();

    /// Makes the lock file and starts the executable in the application's folder, without waiting, with the
    /// arguments after the first one and "-restart". Left out are null and empty arguments, an earlier
    /// "-restart", and "-culture" with the argument that follows it; upper and lower case are alike. The
    /// caller ends its own process.
    /// Quirk: arguments are not quoted, so one with a space in it arrives as two. Quirk: the executable's
    /// extension is left out. Quirk: the result is always true, and the lock file stays when nothing could be
    /// started.
    static bool ActivateRestartProcess(int argc, const wchar_t** argv);

    /// Quirk: on this platform it only writes to the log, and returns false at once.
    static bool WaitingForPreviousProcessFinish();
    /// Writes to the log and returns false at once, too.
    static bool RestartProcessFinish();

private:
    [[maybe_unused]] std::int32_t m_iState = 0;
};

} // namespace Toolkit

#endif
