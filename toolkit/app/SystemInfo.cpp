// SPDX-License-Identifier: MIT
#include "toolkit/app/SystemInfo.h"

#include <atomic>
#include <cerrno>
#include <vector>

#include <endian.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/platinfo.h>

#include "toolkit/app/CmdLineParser.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/process/ChildStarter.h"
#include "toolkit/internal/system/SystemCodes.h"
#include "toolkit/log/LogLine.h"

namespace Toolkit
{

namespace
{

// wxWidgets would ask a shell for the same names, and only while it is started.
utsname Kernel()
{
    utsname kernel = {};
    uname(&kernel);
    return kernel;
}

// The value in `cache`, which is found out first while the cache still holds `unknown`.
template <class T, class Find>
T Cached(std::atomic<T>& cache, T unknown, Find find)
{
    T value = cache.load(std::memory_order_relaxed);
    if (value == unknown)
    {
        value = find();
        cache.store(value, std::memory_order_relaxed);
    }
    return value;
}

const unsigned int s_uNotYetKnown = 0xFFFFFFFFU;

#if __BYTE_ORDER == __LITTLE_ENDIAN
const unsigned int s_uEndianness = wxENDIAN_LITTLE;
#elif __BYTE_ORDER == __BIG_ENDIAN
const unsigned int s_uEndianness = wxENDIAN_BIG;
#else
const unsigned int s_uEndianness = wxENDIAN_PDP;
#endif

// As `waitpid` tells it.
int WaitFor(pid_t child, int& status)
{
    pid_t answer = 0;
    do
        answer = waitpid(child, &status, 0);
    while (answer == -1 && errno == EINTR);
    return answer;
}

// The result, and how the child ended, which the result does not tell.
TString<wchar_t> ExitTrace(int result, int status)
{
    const TString<wchar_t> trace = L"<<< StartProcess()=" + LogText::Of(result);
    if (result == -1)
        return trace;
    if (WIFSIGNALED(status))
        return trace + L", signal " + LogText::Of(WTERMSIG(status));
    return trace + L", exit code " + LogText::Of(WEXITSTATUS(status));
}

} // namespace

smart_ptr<SystemInfo, smart_ptr_policy>* SystemInfo::s_pInstance = nullptr;

SystemInfo::SystemInfo() = default;

SystemInfo::~SystemInfo() = default;

unsigned int SystemInfo::GetOSMajorVersion()
{
    static std::atomic<unsigned int> osm{s_uNotYetKnown};
    return Cached(osm, s_uNotYetKnown, [] { return SystemCodes::ReleaseOf(Kernel().release).m_uMajor; });
}

unsigned int SystemInfo::GetOSMinorVersion()
{
    static std::atomic<unsigned int> osm{s_uNotYetKnown};
    return Cached(osm, s_uNotYetKnown, [] { return SystemCodes::ReleaseOf(Kernel().release).m_uMinor; });
}

unsigned int SystemInfo::GetOperatingSystemId()
{
    static std::atomic<unsigned int> os{s_uNotYetKnown};
    return Cached(os, s_uNotYetKnown,
                  [] { return SystemCodes::CombinedId(GetOSMajorVersion(), GetOSMinorVersion()); });
}

SystemInfo::Platform SystemInfo::GetPlatform()
{
    static std::atomic<Platform> pi{PlatformUnknown};
    return Cached(pi, PlatformUnknown,
                  [] {
                      return static_cast<Platform>(
                          SystemCodes::PlatformOf(SystemCodes::SystemIdOf(Kernel().sysname)));
                  });
}

SystemInfo::Endian SystemInfo::GetEndian()
{
    static std::atomic<Endian> ei{EndianUnknown};
    return Cached(ei, EndianUnknown,
                  [] { return static_cast<Endian>(SystemCodes::ByteOrderOf(s_uEndianness)); });
}

bool SystemInfo::HasAdministratorCredentials()
{
    return false;
}

bool SystemInfo::HasPowerUserCredentials()
{
    return false;
}

bool SystemInfo::CanElevateCredentialsUsingUAC()
{
    return true;
}

int SystemInfo::StartProcess(const TString<wchar_t>& path, const TString<wchar_t>& arguments, bool wait)
{
    std::vector<TString<wchar_t>> tokens;
    CmdLineParser::Tokenize(arguments, tokens);
    std::vector<TString<char>> texts = {UTF8::ToUTF8(path)};
    for (const TString<wchar_t>& token : tokens)
        texts.push_back(UTF8::ToUTF8(token));
    std::vector<char*> vector;
    for (TString<char>& text : texts)
        vector.push_back(text.data());
    vector.push_back(nullptr);

    const char* const files[] = {vector[0], nullptr};
    ChildPlan plan;
    plan.m_pFiles = files;
    plan.m_pArguments = vector.data();
    plan.m_pEnvironment = environ;
    int error = 0;
    const pid_t child = ChildStarter::Start(plan, error);
    if (child == -1)
        return error;
    if (!wait)
        return child;
    int status = 0;
    const int result = WaitFor(child, status);
    LogLine::Stream(LogSeverity::Info, __LINE__, "StartProcess", ExitTrace(result, status));
    return result;
}

} // namespace Toolkit
