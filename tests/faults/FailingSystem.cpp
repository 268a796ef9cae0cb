// SPDX-License-Identifier: MIT
#include "tests/faults/FailingSystem.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "tests/support/NextDefinition.h"

namespace ToolkitTest
{

namespace
{

std::atomic<bool> s_bArmed{false};
thread_local bool t_bSpared = false;

// What a forked process shares with the one that it comes from.
struct State
{
    static constexpr std::size_t s_uMostFailed = 256;

    std::atomic<bool> m_bOnwards{false};
    std::atomic<std::uint32_t> m_uFault{0};
    std::atomic<unsigned long> m_uFailing{0};
    std::atomic<unsigned long> m_uCount{0};
    // Those that failed, in their order; later ones are forgotten.
    std::atomic<const char*> m_failed[s_uMostFailed] = {};
    std::atomic<std::size_t> m_uFailed{0};
    std::atomic<bool> m_bClosedStrange{false};
    // The only call that fails; null for all of them.
    std::atomic<const char*> m_pOnly{nullptr};
};

// Null until something is set, for the calls that are made before `main`.
std::atomic<State*> s_pState{nullptr};

State& GetState()
{
    static void* const memory =
        mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    static State* const state = new (memory) State;
    s_pState = state;
    return *state;
}

int ErrorOf(std::uint32_t fault, int noSpace)
{
    switch (fault)
    {
    case FailingSystem::NoSpace:
        return noSpace;
    case FailingSystem::Broken:
        return EIO;
    case FailingSystem::Interrupted:
        return EINTR;
    default:
        return EMFILE;
    }
}

} // namespace

// True when this call fails; `faults` are those that it knows, and `noSpace` is its error of the first kind.
bool Fails(const char* call, std::uint32_t faults, int noSpace = ENOSPC)
{
    State* const state = s_pState;
    if (state == nullptr || !s_bArmed || t_bSpared)
        return false;
    const std::uint32_t fault = state->m_uFault;
    if (((faults | FailingSystem::Killed) & fault) == 0)
        return false;
    const char* const only = state->m_pOnly;
    if (only != nullptr && std::strcmp(only, call) != 0)
        return false;
    const unsigned long number = ++state->m_uCount;
    if (state->m_bOnwards ? number < state->m_uFailing : number != state->m_uFailing)
        return false;
    const std::size_t place = state->m_uFailed++;
    if (place < State::s_uMostFailed)
        state->m_failed[place] = call;
    if (fault == FailingSystem::Killed)
        kill(getpid(), SIGKILL);
    errno = ErrorOf(fault, noSpace);
    return true;
}

// How much of a transfer that fails still takes place.
std::size_t PartOf(std::size_t count)
{
    return count / 2;
}

bool IsShort()
{
    return FailingSystem::GetFault() == FailingSystem::Short;
}

void NoteClosed(int answer)
{
    if (State* const state = s_pState; state != nullptr && answer != 0 && errno == EBADF)
        state->m_bClosedStrange = true;
}

void FailingSystem::Set(unsigned long failing, Fault fault, bool onwards)
{
    State& state = GetState();
    state.m_uFailing = failing;
    state.m_uFault = fault;
    state.m_bOnwards = onwards;
    state.m_uCount = 0;
    state.m_uFailed = 0;
    state.m_bClosedStrange = false;
    state.m_pOnly = nullptr;
}

void FailingSystem::SetAlways(const char* call, Fault fault)
{
    Set(1, fault, true);
    GetState().m_pOnly = call;
}

FailingSystem::Fault FailingSystem::GetFault()
{
    return static_cast<Fault>(GetState().m_uFault.load());
}

bool FailingSystem::IsOnwards()
{
    return GetState().m_bOnwards;
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
    return GetState().m_uFailed != 0;
}

bool FailingSystem::HasFailed(const char* call)
{
    const State& state = GetState();
    const std::size_t count = std::min<std::size_t>(state.m_uFailed, State::s_uMostFailed);
    return std::any_of(state.m_failed, state.m_failed + count,
                       [call](const char* failed) { return std::strcmp(failed, call) == 0; });
}

const char* FailingSystem::GetFailed()
{
    return HasFailed() ? GetState().m_failed[0].load() : "nothing";
}

bool FailingSystem::HasClosedStrange()
{
    return GetState().m_bClosedStrange;
}

} // namespace ToolkitTest

using ToolkitTest::FailingSystem;
using ToolkitTest::Fails;
using ToolkitTest::IsShort;
using ToolkitTest::NextDefinition;
using ToolkitTest::NoteClosed;
using ToolkitTest::PartOf;

namespace
{

// A call that never fails.
const std::uint32_t s_uNone = 0;
const std::uint32_t s_uChange = FailingSystem::NoSpace | FailingSystem::Broken;
const std::uint32_t s_uWait = FailingSystem::Broken | FailingSystem::Interrupted;
const std::uint32_t s_uOpen = FailingSystem::NoSpace | s_uWait | FailingSystem::NoDescriptors;
// What makes a socket, or anything else that is no file.
const std::uint32_t s_uMake = FailingSystem::NoSpace | FailingSystem::NoDescriptors;
const std::uint32_t s_uWrite = FailingSystem::NoSpace | s_uWait | FailingSystem::Short;

// What the C library sets in a stream for `ferror` to answer.
const int s_iErrorSeen = 0x20;

// Pipes and counters that are not full, like those that wake loops up, take and give what they are asked to.
std::uint32_t OnlyOfFiles(int descriptor, std::uint32_t faults)
{
    static const auto next = NextDefinition<int(int, struct stat*)>("fstat64");
    struct stat status = {};
    const int error = errno;
    const bool isFile = next(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    errno = error;
    return isFile ? faults : s_uNone;
}

} // namespace

// The next definition of the function that is being defined, which the C library may know by the name for
// large files.
#define NEXT(function, symbol) static const auto next = NextDefinition<decltype(function)>(symbol)

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

    int openat(int folder, const char* path, int flags, ...)
    {
        NEXT(openat, "openat64");
        va_list arguments;
        va_start(arguments, flags);
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
        va_end(arguments);
        return Fails("open", s_uOpen) ? -1 : next(folder, path, flags, mode);
    }

    int fsync(int descriptor)
    {
        NEXT(fsync, "fsync");
        return Fails("fsync", s_uWait | FailingSystem::NoSpace) ? -1 : next(descriptor);
    }

    // The descriptor is gone in any case.
    int close(int descriptor)
    {
        NEXT(close, "close");
        const bool fails = Fails("close", s_uWait | FailingSystem::NoSpace);
        const int error = errno;
        const int answer = next(descriptor);
        NoteClosed(answer);
        if (!fails)
            return answer;
        errno = error;
        return -1;
    }

    ssize_t read(int descriptor, void* buffer, size_t count)
    {
        NEXT(read, "read");
        if (!Fails("read", OnlyOfFiles(descriptor, s_uWait | FailingSystem::Short)))
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
        if (!Fails("write", OnlyOfFiles(descriptor, s_uWrite)))
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
        static const auto next = NextDefinition<int(const char*, struct stat*)>("stat64");
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
        return Fails("flock", s_uWait | FailingSystem::NoSpace, ENOLCK) ? -1 : next(descriptor, operation);
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

    int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept
    {
        NEXT(renameat, "renameat");
        return Fails("rename", s_uChange) ? -1 : next(fromFolder, from, toFolder, to);
    }

    int unlinkat(int folder, const char* path, int flags) noexcept
    {
        NEXT(unlinkat, "unlinkat");
        return Fails("unlink", FailingSystem::Broken) ? -1 : next(folder, path, flags);
    }

    int fsetxattr(int descriptor, const char* name, const void* value, size_t size, int flags) noexcept
    {
        NEXT(fsetxattr, "fsetxattr");
        return Fails("fsetxattr", s_uChange) ? -1 : next(descriptor, name, value, size, flags);
    }

    ssize_t fgetxattr(int descriptor, const char* name, void* value, size_t size) noexcept
    {
        NEXT(fgetxattr, "fgetxattr");
        return Fails("fgetxattr", FailingSystem::Broken) ? -1 : next(descriptor, name, value, size);
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

    int chdir(const char* path) noexcept
    {
        NEXT(chdir, "chdir");
        return Fails("chdir", FailingSystem::Broken) ? -1 : next(path);
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

    int fcntl(int descriptor, int command, ...)
    {
        NEXT(fcntl, "fcntl64");
        va_list arguments;
        va_start(arguments, command);
        void* const argument = va_arg(arguments, void*);
        va_end(arguments);
        const bool locks = command == F_SETLK || command == F_GETLK;
        return Fails("fcntl", locks ? FailingSystem::NoSpace : s_uNone, ENOLCK)
                   ? -1
                   : next(descriptor, command, argument);
    }

    int socket(int family, int type, int protocol) noexcept
    {
        NEXT(socket, "socket");
        return Fails("socket", s_uMake, ENOBUFS) ? -1 : next(family, type, protocol);
    }

    int connect(int socket, const sockaddr* address, socklen_t size)
    {
        NEXT(connect, "connect");
        return Fails("connect", s_uWait | FailingSystem::NoSpace, ENOMEM) ? -1 : next(socket, address, size);
    }

    int bind(int socket, const sockaddr* address, socklen_t size) noexcept
    {
        NEXT(bind, "bind");
        return Fails("bind", s_uChange) ? -1 : next(socket, address, size);
    }

    int listen(int socket, int most) noexcept
    {
        NEXT(listen, "listen");
        return Fails("listen", FailingSystem::NoSpace, ENOBUFS) ? -1 : next(socket, most);
    }

    int accept4(int socket, sockaddr* address, socklen_t* size, int flags)
    {
        NEXT(accept4, "accept4");
        return Fails("accept", s_uMake | s_uWait, ENOBUFS) ? -1 : next(socket, address, size, flags);
    }

    ssize_t send(int socket, const void* data, size_t count, int flags)
    {
        NEXT(send, "send");
        if (!Fails("send", s_uWrite, ENOBUFS))
            return next(socket, data, count, flags);
        return IsShort() ? next(socket, data, std::max(PartOf(count), size_t{1}), flags) : -1;
    }

    ssize_t recv(int socket, void* buffer, size_t count, int flags)
    {
        NEXT(recv, "recv");
        if (!Fails("recv", s_uWrite, ENOMEM))
            return next(socket, buffer, count, flags);
        // So little is rarely there that half of what is asked for would be less.
        return IsShort() ? next(socket, buffer, std::min(count, size_t{1}), flags) : -1;
    }

    int getsockopt(int socket, int level, int option, void* value, socklen_t* size) noexcept
    {
        NEXT(getsockopt, "getsockopt");
        return Fails("getsockopt", FailingSystem::NoSpace, ENOMEM) ? -1
                                                                   : next(socket, level, option, value, size);
    }

    int setsockopt(int socket, int level, int option, const void* value, socklen_t size) noexcept
    {
        NEXT(setsockopt, "setsockopt");
        return Fails("setsockopt", FailingSystem::NoSpace, ENOMEM) ? -1
                                                                   : next(socket, level, option, value, size);
    }

    int shutdown(int socket, int how) noexcept
    {
        NEXT(shutdown, "shutdown");
        Fails("shutdown", s_uNone);
        return next(socket, how);
    }

    int poll(pollfd* descriptors, nfds_t count, int milliseconds)
    {
        NEXT(poll, "poll");
        return Fails("poll", FailingSystem::Interrupted | FailingSystem::NoSpace, ENOMEM)
                   ? -1
                   : next(descriptors, count, milliseconds);
    }

    // So few descriptors as are waited for need no memory of the system's.
    int ppoll(pollfd* descriptors, nfds_t count, const timespec* time, const sigset_t* mask)
    {
        NEXT(ppoll, "ppoll");
        return Fails("ppoll", FailingSystem::Interrupted) ? -1 : next(descriptors, count, time, mask);
    }

    int epoll_create(int size) noexcept
    {
        NEXT(epoll_create, "epoll_create");
        return Fails("epoll_create", s_uMake, ENOMEM) ? -1 : next(size);
    }

    int epoll_create1(int flags) noexcept
    {
        NEXT(epoll_create1, "epoll_create1");
        return Fails("epoll_create", s_uMake, ENOMEM) ? -1 : next(flags);
    }

    int epoll_ctl(int poll, int operation, int descriptor, epoll_event* event) noexcept
    {
        NEXT(epoll_ctl, "epoll_ctl");
        return Fails("epoll_ctl", operation == EPOLL_CTL_ADD ? FailingSystem::NoSpace : s_uNone)
                   ? -1
                   : next(poll, operation, descriptor, event);
    }

    int epoll_wait(int poll, epoll_event* events, int most, int milliseconds)
    {
        NEXT(epoll_wait, "epoll_wait");
        return Fails("epoll_wait", FailingSystem::Interrupted) ? -1 : next(poll, events, most, milliseconds);
    }

    int timerfd_create(clockid_t clock, int flags) noexcept
    {
        NEXT(timerfd_create, "timerfd_create");
        return Fails("timerfd_create", s_uMake, ENOMEM) ? -1 : next(clock, flags);
    }

    int eventfd(unsigned int count, int flags) noexcept
    {
        NEXT(eventfd, "eventfd");
        return Fails("eventfd", s_uMake, ENOMEM) ? -1 : next(count, flags);
    }

    int pipe(int* ends) noexcept
    {
        NEXT(pipe, "pipe");
        return Fails("pipe", FailingSystem::NoDescriptors) ? -1 : next(ends);
    }

    int pipe2(int* ends, int flags) noexcept
    {
        NEXT(pipe2, "pipe2");
        return Fails("pipe2", FailingSystem::NoDescriptors) ? -1 : next(ends, flags);
    }

    pid_t fork() noexcept
    {
        NEXT(fork, "fork");
        if (!Fails("fork", FailingSystem::NoDescriptors))
            return next();
        errno = EAGAIN;
        return -1;
    }

    pid_t _Fork() noexcept
    {
        NEXT(_Fork, "_Fork");
        if (!Fails("_Fork", FailingSystem::NoDescriptors))
            return next();
        errno = EAGAIN;
        return -1;
    }

    // A copy of the process does what a child that borrows its memory may do.
    pid_t vfork() noexcept
    {
        return fork();
    }

    int execve(const char* path, char* const* arguments, char* const* environment) noexcept
    {
        NEXT(execve, "execve");
        return Fails("execve", FailingSystem::Broken | FailingSystem::NoDescriptors)
                   ? -1
                   : next(path, arguments, environment);
    }

    int pidfd_open(pid_t process, unsigned int flags) noexcept
    {
        NEXT(pidfd_open, "pidfd_open");
        return Fails("pidfd_open", s_uMake, ENOMEM) ? -1 : next(process, flags);
    }

    int waitid(idtype_t type, id_t id, siginfo_t* info, int options)
    {
        NEXT(waitid, "waitid");
        return Fails("waitid", FailingSystem::Interrupted) ? -1 : next(type, id, info, options);
    }

    pid_t waitpid(pid_t child, int* status, int options)
    {
        NEXT(waitpid, "waitpid");
        return Fails("waitpid", FailingSystem::Interrupted) ? -1 : next(child, status, options);
    }
}
