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

#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCCommandText.h"
#include "toolkit/internal/ipc/IPCConversation.h"
#include "toolkit/internal/ipc/IPCEndpoint.h"
#include "toolkit/internal/ipc/IPCMessage.h"
#include "toolkit/internal/ipc/InstancePlace.h"
#include "toolkit/internal/ipc/InstanceServer.h"
#include "toolkit/internal/ipc/InstanceWire.h"
#include "toolkit/internal/system/LeakOnPurpose.h"
#include "toolkit/internal/system/MovedFrom.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"
#include "toolkit/internal/text/Utf8Codec.h"

namespace Toolkit
{

namespace
{

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

Failure RefusedByStranger(const std::string& key)
{
    return Failure(Errc::Refused, "cannot ask " + key + ": another user listens");
}

// Where an `IPCServer` listens whose service is the key; nowhere where that is no local one, as anybody may
// listen at a port.
IPCAddress ServerOf(const std::string& key)
{
    const IPCAddress address(key.find('\0') == key.npos ? Utf8Codec::Decode(key) : TString<wchar_t>());
    return address.IsLocal() ? address : IPCAddress(TString<wchar_t>());
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

// The answer, from messages as they arrive after the byte that accepts the connection.
std::optional<InstanceWire::Answer> ReceiveAnswer(IPCConversation& conversation)
{
    IPCMessageReader reader;
    IPCMessage message;
    std::string bytes;
    const std::unique_ptr<char[]> buffer(new char[s_uReadAtOnce]);
    const std::size_t first = conversation.Receive(buffer.get(), s_uReadAtOnce);
    if (first == 0 || buffer[0] != static_cast<char>(IPCMessage::Connect))
        return std::nullopt;
    reader.Append(buffer.get() + 1, first - 1);
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
            const std::size_t count = conversation.Receive(buffer.get(), s_uReadAtOnce);
            if (count == 0)
                return std::nullopt;
            reader.Append(buffer.get(), count);
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
// nothing. The file stays, so that there is never a second one beside it.
struct Instance::Content
{
    Content(std::string key, InstancePlace place)
        : m_strKey(std::move(key)), m_place(std::move(place)), m_server(ServerOf(m_strKey))
    {
    }

    Result<void> Open()
    {
        const std::string file = m_place.LockFile();
        m_lock = UnsharedDescriptor(
            [&file] {
                return Descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, s_uFileMode));
            });
        struct flock lock = WholeFile();
        if (m_lock.IsOpen() && fcntl(m_lock.Get(), F_OFD_SETLK, &lock) == 0)
        {
            const Result<bool> hasServer = HasServer();
            if (!hasServer)
                return hasServer.error();
            if (!*hasServer)
                return Listen();
            ChangeLock(F_UNLCK);
            return {};
        }
        if (!m_lock.IsOpen() || (errno != EAGAIN && errno != EACCES))
            return SystemFailure("cannot claim", m_strKey, errno);
        return {};
    }

    Result<void> Listen()
    {
        m_process = getpid();
        m_pServer = std::make_unique<InstanceServer>();
        errno = 0;
        if (m_pServer->Open(m_place.Socket()))
            return {};
        const int error = errno != 0 ? errno : EADDRINUSE;
        return SystemFailure("cannot listen for", m_strKey, error);
    }

    // True when an `IPCServer` of that name lives, be it too busy to take a client.
    Result<bool> HasServer() const
    {
        using Opened = IPCConversation::Opened;
        IPCConversation probe(Clock::now(), Wait);
        const Opened opened = m_server.IsLocal() ? probe.Open(m_server) : Opened::Nobody;
        // What has the name but is no such socket is no server, and neither is one that has just ended.
        if (opened == Opened::No && errno != EPROTOTYPE && errno != ENOENT)
            return SystemFailure("cannot claim", m_strKey, errno);
        return opened == Opened::Yes || opened == Opened::Busy;
    }

    bool IsFirst() const { return m_pServer != nullptr; }

    // Has the `IPCServer` of that name execute the command. It takes it without an answer.
    Result<Answer> TellServer(const std::vector<std::string>& arguments,
                              std::optional<Clock::time_point> end) const
    {
        using Opened = IPCConversation::Opened;
        IPCConversation conversation(end, IPCEndpoint::WaitFor);
        const Opened opened = m_server.IsLocal() ? conversation.Open(m_server) : Opened::Nobody;
        if (opened == Opened::Stranger)
            return RefusedByStranger(m_strKey);
        if (opened != Opened::Yes)
            return NotAnswered(m_strKey,
                               opened == Opened::Busy ? "no answer in time" : "the first instance has ended");
        const std::optional<TString<char>> text = IPCCommandText::FromArguments(arguments);
        if (!text)
            return NotAnswered(m_strKey, "these arguments are no text for its server");
        if (!conversation.SendCommand(*text))
            return NotAnswered(m_strKey, conversation.IsTimeLeft() ? "its server did not take the command"
                                                                   : "no answer in time");
        return Answer();
    }

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
        ChangeLock(F_RDLCK);
        m_bServesNobody = true;
    }

    void ChangeLock(short type)
    {
        struct flock lock = WholeFile(type);
        fcntl(m_lock.Get(), F_OFD_SETLK, &lock);
    }

    const std::string m_strKey;
    const InstancePlace m_place;
    // Where an `IPCServer` of that name listens.
    const IPCAddress m_server;
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
    Result<InstancePlace> place = InstancePlace::Make(key);
    if (!place)
        return place.error();
    auto content = std::make_unique<Content>(std::string(key), *std::move(place));
    if (Result<void> opened = content->Open(); !opened)
        return opened.error();
    return Instance(std::move(content));
}

Instance::Instance(std::unique_ptr<Content> content) noexcept : m_pContent(std::move(content)) {}
Instance::Instance(Instance&& other) noexcept = default;

Instance& Instance::operator=(Instance&& other) noexcept
{
    if (this != &other)
    {
        const Instance before(std::exchange(m_pContent, std::move(other.m_pContent)));
    }
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
    return m_pContent != nullptr && m_pContent->IsFirst();
}

Result<Instance::Answer> Instance::Ask(const std::vector<std::string>& arguments) const
{
    return Ask(arguments, std::chrono::nanoseconds::max());
}

Result<Instance::Answer> Instance::Ask(const std::vector<std::string>& arguments,
                                       std::chrono::nanoseconds timeout) const
{
    if (m_pContent == nullptr)
        return MovedFrom::Refused("cannot ask the instance");
    std::optional<Clock::time_point> end;
    if (timeout < s_longest)
        end = Clock::now() + std::max(timeout, std::chrono::nanoseconds(0));
    IPCConversation conversation(end, Wait);
    const std::string& key = m_pContent->m_strKey;
    const IPCAddress address = m_pContent->m_place.Socket();
    for (auto opened = conversation.Open(address); opened != IPCConversation::Opened::Yes;
         opened = conversation.Open(address))
    {
        if (opened == IPCConversation::Opened::Stranger)
            return RefusedByStranger(key);
        if (!m_pContent->HasFirst())
            return m_pContent->IsFirst() ? NotAnswered(key, "this instance cannot serve")
                                         : m_pContent->TellServer(arguments, end);
        if (!conversation.IsTimeLeft())
            return NotAnswered(key, "no answer in time");
        conversation.Pause(s_iLookPause);
    }
    std::error_code ignored;
    if (conversation.Send(InstanceWire::Encode(
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
