#include "tests/faults/FailingSystem.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ToolkitTest
{

namespace
{

thread_local bool t_bSpared = false;
std::atomic<bool> s_bArmed{false};
std::atomic<bool> s_bOnwards{false};
std::atomic<std::uint32_t> s_uFault{0};
std::atomic<unsigned long> s_uFailing{0};
std::atomic<unsigned long> s_uCount{0};
// Those that failed, in their order; later ones are forgotten.
const std::size_t s_uMostFailed = 256;
std::atomic<const char*> s_failed[s_uMostFailed];
std::atomic<std::size_t> s_uFailed{0};

int ErrorOf(std::uint32_t fault)
{
    switch (fault)
    {
    case FailingSystem::NoSpace:
        return ENOSPC;
    case FailingSystem::Broken:
        return EIO;
    case FailingSystem::Interrupted:
        return EINTR;
    default:
        return EMFILE;
    }
}

} // namespace

// True when this call fails; `faults` are those that it knows.
bool Fails(const char* call, std::uint32_t faults)
{
    if (!s_bArmed || t_bSpared || (faults & s_uFault) == 0)
        return false;
    const unsigned long number = ++s_uCount;
    if (s_bOnwards ? number < s_uFailing : number != s_uFailing)
        return false;
    const std::size_t place = s_uFailed++;
    if (place < s_uMostFailed)
        s_failed[place] = call;
    errno = ErrorOf(s_uFault);
    return true;
}

// How much of a transfer that fails still takes place.
std::size_t PartOf(std::size_t count)
{
    return count / 2;
}

bool IsShort()
{
    return s_uFault == FailingSystem::Short;
}

void FailingSystem::Set(unsigned long failing, Fault fault, bool onwards)
{
    s_uFailing = failing;
    s_uFault = fault;
    s_bOnwards = onwards;
    s_uCount = 0;
    s_uFailed = 0;
}

FailingSystem::Fault FailingSystem::GetFault()
{
    return static_cast<Fault>(s_uFault.load());
}

bool FailingSystem::IsOnwards()
{
    return s_bOnwards;
}

void FailingSystem::Arm()
{
    s_bArmed = true;
}

void FailingSystem::ArmOtherThreads()
{
    t_bSpared = true;
    s_bArmed = true;
}

void FailingSystem::Disarm()
{
    s_bArmed = false;
    t_bSpared = false;
}

bool FailingSystem::HasFailed()
{
    return s_uFailed != 0;
}

bool FailingSystem::HasFailed(const char* call)
{
    const std::size_t count = std::min<std::size_t>(s_uFailed, s_uMostFailed);
    return std::any_of(s_failed, s_failed + count,
                       [call](const char* failed) { return std::strcmp(failed, call) == 0; });
}

const char* FailingSystem::GetFailed()
{
    return HasFailed() ? s_failed[0].load() : "nothing";
}

} // namespace ToolkitTest

using ToolkitTest::FailingSystem;
using ToolkitTest::Fails;
using ToolkitTest::IsShort;
using ToolkitTest::PartOf;

namespace
{

const std::uint32_t s_uChange = FailingSystem::NoSpace | FailingSystem::Broken;
const std::uint32_t s_uWait = FailingSystem::Broken | FailingSystem::Interrupted;
const std::uint32_t s_uOpen = FailingSystem::NoSpace | s_uWait | FailingSystem::NoDescriptors;
const std::uint32_t s_uWrite = FailingSystem::NoSpace | s_uWait | FailingSystem::Short;

// What the C library sets in a stream for `ferror` to answer.
const int s_iErrorSeen = 0x20;

template <class Function>
Function* Next(Function*, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// The next definition of the function that is being defined, which the C library may know by the name for
// large files.
#define NEXT(function, symbol) static const auto next = Next(&function, symbol)

extern "C"
{
    int open(const char* path, int flags, ...)
    {
        NEXT(open, "open64");
        va_list arguments;
        va_start(arguments, flags);
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
        va_end(arguments);
        return Fails("open", s_uOpen) ? -1 : next(path, flags, mode);
    }

    // The descriptor is gone in any case.
    int close(int descriptor)
    {
        NEXT(close, "close");
        const bool fails = Fails("close", s_uWait | FailingSystem::NoSpace);
        const int error = errno;
        const int answer = next(descriptor);
        if (!fails)
            return answer;
        errno = error;
        return -1;
    }

    ssize_t read(int descriptor, void* buffer, size_t count)
    {
        NEXT(read, "read");
        if (!Fails("read", s_uWait | FailingSystem::Short))
            return next(descriptor, buffer, count);
        return IsShort() ? next(descriptor, buffer, std::max(PartOf(count), size_t{1})) : -1;
    }

    ssize_t pread(int descriptor, void* buffer, size_t count, off_t offset)
    {
        NEXT(pread, "pread64");
        if (!Fails("pread", s_uWait | FailingSystem::Short))
            return next(descriptor, buffer, count, offset);
        return IsShort() ? next(descriptor, buffer, std::max(PartOf(count), size_t{1}), offset) : -1;
    }

    ssize_t write(int descriptor, const void* buffer, size_t count)
    {
        NEXT(write, "write");
        if (!Fails("write", s_uWrite))
            return next(descriptor, buffer, count);
        return IsShort() ? next(descriptor, buffer, std::max(PartOf(count), size_t{1})) : -1;
    }

    int fstat(int descriptor, struct stat* status) noexcept
    {
        NEXT(fstat, "fstat64");
        return Fails("fstat", FailingSystem::Broken) ? -1 : next(descriptor, status);
    }

    int stat(const char* path, struct stat* status) noexcept
    {
        static const auto next =
            reinterpret_cast<int (*)(const char*, struct stat*)>(dlsym(RTLD_NEXT, "stat64"));
        return Fails("stat", FailingSystem::Broken) ? -1 : next(path, status);
    }

    int lstat(const char* path, struct stat* status) noexcept
    {
        NEXT(lstat, "lstat64");
        return Fails("lstat", FailingSystem::Broken) ? -1 : next(path, status);
    }

    off_t lseek(int descriptor, off_t offset, int from) noexcept
    {
        NEXT(lseek, "lseek64");
        return Fails("lseek", FailingSystem::Broken) ? -1 : next(descriptor, offset, from);
    }

    int ftruncate(int descriptor, off_t length) noexcept
    {
        NEXT(ftruncate, "ftruncate64");
        return Fails("ftruncate", s_uWait) ? -1 : next(descriptor, length);
    }

    int flock(int descriptor, int operation) noexcept
    {
        NEXT(flock, "flock");
        return Fails("flock", s_uWait) ? -1 : next(descriptor, operation);
    }

    int rename(const char* from, const char* to) noexcept
    {
        NEXT(rename, "rename");
        return Fails("rename", s_uChange) ? -1 : next(from, to);
    }

    int unlink(const char* path) noexcept
    {
        NEXT(unlink, "unlink");
        return Fails("unlink", FailingSystem::Broken) ? -1 : next(path);
    }

    int fchmod(int descriptor, mode_t mode) noexcept
    {
        NEXT(fchmod, "fchmod");
        return Fails("fchmod", FailingSystem::Broken) ? -1 : next(descriptor, mode);
    }

    int fchown(int descriptor, uid_t owner, gid_t group) noexcept
    {
        NEXT(fchown, "fchown");
        return Fails("fchown", FailingSystem::Broken) ? -1 : next(descriptor, owner, group);
    }

    int mkdir(const char* path, mode_t mode) noexcept
    {
        NEXT(mkdir, "mkdir");
        return Fails("mkdir", s_uChange) ? -1 : next(path, mode);
    }

    DIR* opendir(const char* path)
    {
        NEXT(opendir, "opendir");
        return Fails("opendir", FailingSystem::Broken | FailingSystem::NoDescriptors) ? nullptr : next(path);
    }

    struct dirent* readdir(DIR* folder)
    {
        NEXT(readdir, "readdir64");
        return Fails("readdir", FailingSystem::Broken) ? nullptr : next(folder);
    }

    FILE* fdopen(int descriptor, const char* mode) noexcept
    {
        NEXT(fdopen, "fdopen");
        return Fails("fdopen", FailingSystem::NoDescriptors) ? nullptr : next(descriptor, mode);
    }

    size_t fread(void* buffer, size_t size, size_t count, FILE* stream)
    {
        NEXT(fread, "fread");
        if (!Fails("fread", s_uWait))
            return next(buffer, size, count, stream);
        stream->_flags |= s_iErrorSeen;
        return next(buffer, size, PartOf(count), stream);
    }

    size_t fwrite_unlocked(const void* data, size_t size, size_t count, FILE* stream)
    {
        NEXT(fwrite_unlocked, "fwrite_unlocked");
        if (!Fails("fwrite", FailingSystem::NoSpace | s_uWait))
            return next(data, size, count, stream);
        const int error = errno;
        const size_t written = next(data, size, PartOf(count), stream);
        stream->_flags |= s_iErrorSeen;
        errno = error;
        return written;
    }

    int fflush_unlocked(FILE* stream)
    {
        NEXT(fflush_unlocked, "fflush_unlocked");
        if (!Fails("fflush", FailingSystem::NoSpace | s_uWait))
            return next(stream);
        stream->_flags |= s_iErrorSeen;
        return EOF;
    }

    int fclose(FILE* stream)
    {
        NEXT(fclose, "fclose");
        const bool fails = Fails("fclose", FailingSystem::NoSpace | s_uWait);
        const int error = errno;
        const int answer = next(stream);
        if (!fails)
            return answer;
        errno = error;
        return EOF;
    }

    pid_t fork() noexcept
    {
        NEXT(fork, "fork");
        if (!Fails("fork", FailingSystem::NoDescriptors))
            return next();
        errno = EAGAIN;
        return -1;
    }

    pid_t waitpid(pid_t child, int* status, int options)
    {
        NEXT(waitpid, "waitpid");
        return Fails("waitpid", FailingSystem::Interrupted) ? -1 : next(child, status, options);
    }
}
