// SPDX-License-Identifier: MIT
#include "toolkit/app/Instance.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <exception>
#include <optional>
#include <system_error>
#include <utility>

#include <cxxabi.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/app/Folders.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCConversation.h"
#include "toolkit/internal/ipc/IPCMessage.h"
#include "toolkit/internal/ipc/InstanceServer.h"
#include "toolkit/internal/ipc/InstanceWire.h"
#include "toolkit/internal/system/LeakOnPurpose.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"
#include "toolkit/internal/text/Fingerprint.h"

namespace Toolkit
{

namespace
{

const mode_t s_uFolderMode = 0700;
const mode_t s_uFileMode = 0600;
// Between two looks whether the first instance listens yet.
const int s_iLookPause = 5;
// A time-out that is longer is none.
const std::chrono::hours s_longest(24 * 365 * 100);
const std::size_t s_uReadAtOnce = 64 * 1024;

using Clock = IPCConversation::Clock;

bool Wait(int descriptor, short events, int milliseconds)
{
    pollfd waited = {descriptor, events, 0};
    return poll(&waited, 1, milliseconds) > 0 && waited.revents != 0;
}

// The folder of all instances of this user, made if missing, which nobody else may enter.
Result<Descriptor> OpenFolder()
{
    const Result<Folders> folders = Folders::Of("toolkit");
    if (!folders)
        return folders.error();
    const std::filesystem::path path = folders->Runtime();
    const std::filesystem::path parent = path.parent_path();
    std::error_code ignored;
    std::vector<std::filesystem::path> missing;
    for (std::filesystem::path each = parent; !each.empty() && !std::filesystem::exists(each, ignored);
         each = each.parent_path())
        missing.push_back(each);
    for (auto each = missing.rbegin(); each != missing.rend(); ++each)
        mkdir(each->c_str(), s_uFolderMode);
    mkdir(path.c_str(), s_uFolderMode);
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (!folder.IsOpen() || fstat(folder.Get(), &status) != 0)
        return SystemFailure("cannot open the folder", path.native(), errno);
    if (status.st_uid != geteuid() || fchmod(folder.Get(), s_uFolderMode) != 0)
        return SystemFailure("cannot use the folder", path.native(),
                             status.st_uid != geteuid() ? EPERM : errno);
    return Result<Descriptor>(std::move(folder));
}

struct flock WholeFile(short type = F_WRLCK)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

Failure NotAnswered(const std::string& key, const char* why)
{
    return Failure(Errc::NotAnswered, "cannot ask " + key + ": " + why);
}

InstanceWire::Answer Execute(const Instance::Handler& handler, InstanceWire::Command command)
{
    try
    {
        const Instance::Answer answer =
            handler(Instance::Command(std::move(command.m_arguments), std::move(command.m_strFolder)));
        return {answer.Code(), answer.Text()};
    }
    catch (const std::exception& failure)
    {
        return {1, failure.what()};
    }
    catch (const abi::__forced_unwind&)
    {
        // The handler ends its thread.
        throw;
    }
    catch (...)
    {
        return {1, "unknown exception"};
    }
}

// The answer, from messages as they arrive.
std::optional<InstanceWire::Answer> ReceiveAnswer(IPCConversation& conversation)
{
    IPCMessageReader reader;
    IPCMessage message;
    std::string bytes;
    std::vector<char> buffer(s_uReadAtOnce);
    for (;;)
        switch (reader.Next(message))
        {
        case IPCMessageReader::Result::Complete:
            if (message.m_uCode != IPCMessage::Advise)
                return std::nullopt;
            bytes += message.m_strData;
            if (InstanceWire::Answer answer; message.m_uFormat == InstanceWire::s_uLast)
                return InstanceWire::Decode(bytes, answer) ? std::optional(std::move(answer)) : std::nullopt;
            break;
        case IPCMessageReader::Result::Incomplete:
        {
            const std::size_t count = conversation.Receive(buffer.data(), buffer.size());
            if (count == 0)
                return std::nullopt;
            reader.Append(buffer.data(), count);
            break;
        }
        case IPCMessageReader::Result::Broken:
            return std::nullopt;
        }
}

} // namespace

struct Instance::Command::Content
{
    std::vector<std::string> m_arguments;
    std::filesystem::path m_folder;
};

Instance::Command::Command(std::vector<std::string> arguments, std::filesystem::path folder)
    : m_pContent(std::make_shared<const Content>(Content{std::move(arguments), std::move(folder)}))
{
}

Instance::Command::Command(const Command& other) noexcept = default;
Instance::Command& Instance::Command::operator=(const Command& other) noexcept = default;
Instance::Command::~Command() = default;

const std::vector<std::string>& Instance::Command::Arguments() const noexcept
{
    return m_pContent->m_arguments;
}

const std::filesystem::path& Instance::Command::Folder() const noexcept
{
    return m_pContent->m_folder;
}

struct Instance::Answer::Content
{
    int m_iCode;
    std::string m_strText;
};

Instance::Answer::Answer(int code, std::string text)
    : m_pContent(std::make_shared<const Content>(Content{code, std::move(text)}))
{
}

Instance::Answer::Answer(const Answer& other) noexcept = default;
Instance::Answer& Instance::Answer::operator=(const Answer& other) noexcept = default;
Instance::Answer::~Answer() = default;

int Instance::Answer::Code() const noexcept
{
    return m_pContent->m_iCode;
}

const std::string& Instance::Answer::Text() const noexcept
{
    return m_pContent->m_strText;
}

// The lock of the first instance is that of an open file: it ends with the process, and asking for it takes
// nothing. The file stays, so that there is never a second one beside it. All paths go by the folder's
// descriptor, so that none is too long for a socket.
struct Instance::Content
{
    explicit Content(std::string key) : m_strKey(std::move(key)) {}

    Result<void> Open()
    {
        Result<Descriptor> folder = OpenFolder();
        if (!folder)
            return folder.error();
        m_folder = *std::move(folder);
        m_strPath = "/proc/self/fd/" + std::to_string(m_folder.Get()) + "/" + Fingerprint(m_strKey);
        const std::string file = m_strPath + ".lock";
        m_lock = UnsharedDescriptor(
            [&file] {
                return Descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, s_uFileMode));
            });
        struct flock lock = WholeFile();
        if (m_lock.IsOpen() && fcntl(m_lock.Get(), F_OFD_SETLK, &lock) == 0)
            return Listen();
        if (!m_lock.IsOpen() || (errno != EAGAIN && errno != EACCES))
            return SystemFailure("cannot claim", m_strKey, errno);
        return {};
    }

    Result<void> Listen()
    {
        m_process = getpid();
        m_pServer = std::make_unique<InstanceServer>();
        errno = 0;
        if (m_pServer->Open(Address()))
            return {};
        const int error = errno != 0 ? errno : EADDRINUSE;
        return SystemFailure("cannot listen for", m_strKey, error);
    }

    IPCAddress Address() const
    {
        return IPCAddress(TString<wchar_t>(std::wstring(m_strPath.begin(), m_strPath.end()) + L".socket"));
    }

    bool IsFirst() const { return m_pServer != nullptr; }

    // False once the first instance has ended or cannot serve.
    bool HasFirst() const
    {
        struct flock lock = WholeFile();
        return IsFirst() ? !m_bServesNobody
                         : fcntl(m_lock.Get(), F_OFD_GETLK, &lock) != 0 || lock.l_type == F_WRLCK;
    }

    // The first instance stays the first; those who ask see by the weaker lock that they wait in vain.
    void ServeNobody()
    {
        struct flock lock = WholeFile(F_RDLCK);
        fcntl(m_lock.Get(), F_OFD_SETLK, &lock);
        m_bServesNobody = true;
    }

    const std::string m_strKey;
    Descriptor m_folder;
    std::string m_strPath;
    UnsharedDescriptor m_lock;
    std::unique_ptr<InstanceServer> m_pServer;
    pid_t m_process = 0;
    bool m_bServes = false;
    std::atomic<bool> m_bServesNobody{false};
};

Result<Instance> Instance::Claim(std::string_view key)
{
    if (key.empty())
        return Failure(std::make_error_code(std::errc::invalid_argument), "cannot claim an empty key");
    auto content = std::make_unique<Content>(std::string(key));
    if (Result<void> opened = content->Open(); !opened)
        return opened.error();
    return Instance(std::move(content));
}

Instance::Instance(std::unique_ptr<Content> content) noexcept : m_pContent(std::move(content)) {}
Instance::Instance(Instance&& other) noexcept = default;

Instance& Instance::operator=(Instance&& other) noexcept
{
    const Instance before(std::exchange(m_pContent, std::move(other.m_pContent)));
    return *this;
}

// In a forked process the threads of the first instance are not there, and nobody can wait for them.
Instance::~Instance()
{
    if (m_pContent != nullptr && m_pContent->IsFirst() && m_pContent->m_process != getpid())
        LeakOnPurpose(m_pContent.release());
}

bool Instance::IsFirst() const noexcept
{
    return m_pContent->IsFirst();
}

Result<Instance::Answer> Instance::Ask(const std::vector<std::string>& arguments) const
{
    return Ask(arguments, std::chrono::nanoseconds::max());
}

Result<Instance::Answer> Instance::Ask(const std::vector<std::string>& arguments,
                                       std::chrono::nanoseconds timeout) const
{
    std::optional<Clock::time_point> end;
    if (timeout < s_longest)
        end = Clock::now() + std::max(timeout, std::chrono::nanoseconds(0));
    IPCConversation conversation(end, Wait);
    const std::string& key = m_pContent->m_strKey;
    const IPCAddress address = m_pContent->Address();
    for (auto opened = conversation.Open(address); opened != IPCConversation::Opened::Yes;
         opened = conversation.Open(address))
    {
        if (opened == IPCConversation::Opened::Stranger)
            return Failure(Errc::Refused, "cannot ask " + key + ": another user listens");
        if (!m_pContent->HasFirst())
            return NotAnswered(key, m_pContent->IsFirst() ? "this instance cannot serve"
                                                          : "the first instance has ended");
        if (!conversation.IsTimeLeft())
            return NotAnswered(key, "no answer in time");
        conversation.Pause(s_iLookPause);
    }
    std::error_code ignored;
    TString<char> request;
    IPCMessage::AppendConnect(request, "instance");
    if (conversation.Send(request) && conversation.ReceiveByte() == IPCMessage::Connect &&
        conversation.Send(InstanceWire::Encode(
            InstanceWire::Command{arguments, std::filesystem::current_path(ignored).native()})))
        if (std::optional<InstanceWire::Answer> answer = ReceiveAnswer(conversation))
            return Answer(answer->m_iCode, std::move(answer->m_strText));
    return NotAnswered(key, conversation.IsTimeLeft()
                                ? "the first instance has ended or did not take the command"
                                : "no answer in time");
}

void Instance::Serve(Handler handler)
{
    Serve(std::move(handler), Executor(), false);
}

void Instance::Serve(Handler handler, Executor executor)
{
    Serve(std::move(handler), std::move(executor), false);
}

void Instance::Serve(Handler handler, Mode mode)
{
    Serve(std::move(handler), Executor(), mode == Parallel);
}

void Instance::Serve(Handler handler, Executor executor, bool isParallel)
{
    if (!IsFirst() || m_pContent->m_process != getpid() || std::exchange(m_pContent->m_bServes, true))
        return;
    if (!m_pContent->m_pServer->Serve([handler = std::move(handler)](InstanceWire::Command command)
                                      { return Execute(handler, std::move(command)); },
                                      std::move(executor), isParallel))
        m_pContent->ServeNobody();
}

} // namespace Toolkit
