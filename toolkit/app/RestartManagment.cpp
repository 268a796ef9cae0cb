// SPDX-License-Identifier: MIT
#include "toolkit/app/RestartManagment.h"

#include <cstdlib>

#include <unistd.h>
#include <wx/filename.h>
#include <wx/utils.h>

#include "toolkit/app/PathManager.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/Directory.h"
#include "toolkit/files/FFile.h"
#include "toolkit/internal/system/GuardedFile.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/wx/WxText.h"
#include "toolkit/log/LogLine.h"

namespace Toolkit
{

namespace
{

const int s_iNotStarted = 0x7FFFFFFF;

const wchar_t* const c_strRestart = L"-restart";
const wchar_t* const c_strCulture = L"-culture";

void Trace(unsigned int line, const char* function, const TString<wchar_t>& message)
{
    LogLine::Stream(LogSeverity::Info, line, function, message);
}

// The path manager's application path joined with its application name.
TString<wchar_t> Executable()
{
    TString<wchar_t> path;
    const smart_ptr<PathManager> paths = InstalledPathManager();
    if (!paths.IsNull())
        PathManager::AppendPath(path, paths->GetApplicationPath(), paths->GetApplicationName());
    return path;
}

// Leaves an empty file behind. The descriptor is made first, as the place is not to be trusted.
void CreateLock(const TString<wchar_t>& path)
{
    // Nothing is allocated between the descriptor and its owner.
    FFile file;
    Descriptor descriptor = GuardedFile::Open(NativePath(path));
    if (descriptor.IsOpen() && GuardedFile::Empty(descriptor.Get()))
        file.Attach(descriptor.ToStream("w"));
    file.Close();
}

// The arguments of the new process as one text; the first entry is the executable itself.
TString<wchar_t> ArgumentsOf(int argc, const wchar_t** argv)
{
    TString<wchar_t> text;
    for (int i = 1; argv != nullptr && i < argc; ++i)
    {
        const TString<wchar_t> argument(argv[i] != nullptr ? argv[i] : L"");
        if (argument.empty() || argument.compareNoCase(c_strRestart) == 0)
            continue;
        if (argument.compareNoCase(c_strCulture) == 0)
            ++i;
        else
            text += argument + L' ';
    }
    return text + c_strRestart;
}

} // namespace

smart_ptr<RestartManagment, smart_ptr_policy>* RestartManagment::s_pInstance = nullptr;
TOOLKIT_ONCE TString<wchar_t> RestartManagment::s_strExecutableFilename;
TOOLKIT_ONCE const TString<wchar_t> RestartManagment::c_strUniqueIdentifer =
    L"{3F2A9C71-8D44-4b1e-A6C0-5E7B2D19F4A8}";

RestartManagment::RestartManagment() = default;

RestartManagment::~RestartManagment() = default;

TString<wchar_t> RestartManagment::GetAppName()
{
    TString<wchar_t> volume;
    TString<wchar_t> path;
    TString<wchar_t> name;
    TString<wchar_t> extension;
    PathManager::SplitPath(s_strExecutableFilename, volume, path, name, extension);
    return name;
}

TString<wchar_t> RestartManagment::GetTempDir()
{
    for (const char* const variable : {"TMPDIR", "TMP", "TEMP"})
    {
        const TString<wchar_t> folder = UTF8::ToUNICODE(TString<char>(std::getenv(variable)));
        if (!folder.empty())
            return folder;
    }
    return L"/tmp";
}

TString<wchar_t> RestartManagment::GetLockFileName()
{
    return GetTempDir() + FromWx(wxFileName::GetPathSeparators()).at(0) + GetAppName() +
           FromWx(wxGetUserId()) + L".restart";
}

bool RestartManagment::IsLocked()
{
    return GuardedFile::IsAt(NativePath(GetLockFileName()));
}

void RestartManagment::RemoveLock()
{
    const TString<wchar_t> path = GetLockFileName();
    if (!GuardedFile::IsAt(NativePath(path)))
        return;
    Trace(__LINE__, __func__, L"Remove lock file: " + path);
    Directory::RemoveFile(path);
}

bool RestartManagment::ActivateRestartProcess(int argc, const wchar_t** argv)
{
    Trace(__LINE__, __func__, L">>> ActivateRestartProcess()");
    const TString<wchar_t> executable = Executable();
    CreateLock(GetLockFileName());
    const TString<wchar_t> arguments = ArgumentsOf(argc, argv);
    Trace(__LINE__, __func__, L"<<< ActivateRestartProcess(" + executable + L" " + arguments + L")");
    const bool started = SystemInfo::StartProcess(executable, arguments, false) != s_iNotStarted;
    Trace(__LINE__, __func__, L"<<< ActivateRestartProcess()=" + LogText::Of(started));
    return started;
}

bool RestartManagment::WaitingForPreviousProcessFinish()
{
    Trace(__LINE__, __func__, L">>> WaitingForPreviousProcessFinish()");
    Trace(__LINE__, __func__, L"<<< WaitingForPreviousProcessFinish()");
    return false;
}

bool RestartManagment::RestartProcessFinish()
{
    const bool result = false;
    Trace(__LINE__, __func__, L">>> RestartProcessFinish()");
    Trace(__LINE__, __func__, L"<<< RestartProcessFinish()=" + LogText::Of(result));
    return result;
}

} // namespace Toolkit
