// SPDX-License-Identifier: MIT
#include "toolkit/internal/process/ChildTalk.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "toolkit/internal/process/ChildCommand.h"
#include "toolkit/internal/process/Pipe.h"
#include "toolkit/internal/process/QuietPipes.h"
#include "toolkit/internal/system/SystemFailure.h"

namespace Toolkit
{

namespace
{

// As much as a pipe holds.
const std::size_t s_uAtOnce = 64 * 1024;
// Between two looks whether the child has ended, where the system does not tell by itself.
const std::chrono::milliseconds s_lookPause(5);

using Clock = ChildTalk::Clock;

void PollUntil(pollfd* polled, nfds_t count, Clock::time_point end)
{
    if (end == Clock::time_point::max())
    {
        ppoll(polled, count, nullptr, nullptr);
        return;
    }
    const auto left = std::max<std::chrono::nanoseconds>(end - Clock::now(), std::chrono::nanoseconds(0));
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec time = {static_cast<std::time_t>(seconds.count()),
                           static_cast<long>((left - seconds).count())};
    ppoll(polled, count, &time, nullptr);
}

} // namespace

Clock::time_point ChildTalk::After(std::chrono::nanoseconds time)
{
    const Clock::time_point now = Clock::now();
    if (time >= Clock::time_point::max() - now)
        return Clock::time_point::max();
    return now + std::max(time, std::chrono::nanoseconds(0));
}

ChildTalk::ChildTalk(const std::string& name, const ChildSettings& settings)
    : m_strName(name),
      m_uMost(settings.m_uMaxOutput),
      m_host(getpid()),
      m_deadline(settings.m_timeout ? After(*settings.m_timeout) : Clock::time_point::max()),
      m_pOutcome(std::make_shared<ChildOutcome>()),
      m_output{Descriptor(), m_pOutcome->m_strOutput},
      m_errors{Descriptor(), m_pOutcome->m_strErrors}
{
}

ChildTalk::~ChildTalk()
{
    if (getpid() != m_host)
        m_child.Abandon();
}

Result<std::unique_ptr<ChildTalk>> ChildTalk::Start(const std::vector<std::string>& arguments,
                                                    const ChildSettings& settings)
{
    if (Result<void> checked = ChildCommand::Check(arguments, settings); !checked)
        return checked.error();
    std::unique_ptr<ChildTalk> talk(new ChildTalk(arguments[0], settings));
    if (Result<void> opened = talk->Open(arguments, settings); !opened)
        return opened.error();
    return talk;
}

// No forked process shares the end of the input, or the child would wait for its end for ever.
Result<void> ChildTalk::Open(const std::vector<std::string>& arguments, const ChildSettings& settings)
{
    const ChildCommand command(arguments, settings);
    ChildPlan plan = command.Plan();
    Pipe input;
    Pipe output;
    Pipe errors;
    m_input = UnsharedDescriptor(
        [&input]
        {
            input.Open();
            return std::move(input.m_write);
        });
    ChildStarter::Trouble trouble = {0, ChildStarter::Step::Start};
    if (!m_input.IsOpen() || !input.m_read.IsOpen() || !output.Open() ||
        (!settings.m_bMergeErrors && !errors.Open()))
        trouble.m_iError = errno;
    else
    {
        plan.m_standard[0] = input.m_read.Get();
        plan.m_standard[1] = output.m_write.Get();
        plan.m_standard[2] = (settings.m_bMergeErrors ? output : errors).m_write.Get();
        m_child.Start(plan, trouble);
    }
    if (m_child.Id() == -1)
        return command.FailureOf(trouble);
    m_output.m_descriptor = std::move(output.m_read);
    m_errors.m_descriptor = std::move(errors.m_read);
    return {};
}

void ChildTalk::Send(std::string_view input)
{
    fcntl(m_input.Get(), F_SETFL, O_NONBLOCK);
    m_unsent = input;
}

void ChildTalk::SendOwn(std::string input)
{
    m_strOwnInput = std::move(input);
    Send(m_strOwnInput);
}

void ChildTalk::EndInput()
{
    m_bEndsInput = true;
    if (m_unsent.empty())
        CloseInput();
}

bool ChildTalk::AwaitSent(Clock::time_point end)
{
    return Await([this] { return m_unsent.empty(); }, end);
}

bool ChildTalk::AwaitLine(Clock::time_point end)
{
    return Await([this] { return HasLine() || !m_output.m_descriptor.IsOpen(); }, end);
}

bool ChildTalk::AwaitEnd(Clock::time_point end)
{
    return Await([this] { return m_bEnded; }, end);
}

std::optional<std::string> ChildTalk::TakeLine()
{
    if (!HasLine())
        return std::nullopt;
    std::string& text = m_output.m_strText;
    std::string line = text.substr(m_uLine, m_uSearched - m_uLine);
    m_uLine = m_uSearched = std::min(m_uSearched + 1, text.size());
    if (!m_bTold && (m_uLine == text.size() || m_uLine > std::max(s_uAtOnce, text.size() / 2)))
        ForgetLines();
    return line;
}

std::shared_ptr<const ChildOutcome> ChildTalk::TakeOutcome()
{
    if (!std::exchange(m_bTold, true))
        ForgetLines();
    return m_pOutcome;
}

void ChildTalk::ForgetLines()
{
    m_output.m_strText.erase(0, m_uLine);
    m_uSearched -= m_uLine;
    m_uLine = 0;
}

void ChildTalk::Terminate()
{
    m_bWholeGroup = true;
    m_child.Signal(SIGKILL);
    AwaitEnd(Clock::time_point::max());
}

void ChildTalk::Terminate(Clock::time_point end)
{
    m_bWholeGroup = true;
    m_child.Signal(SIGTERM);
    // One that was stopped would not hear it.
    m_child.Signal(SIGCONT);
    if (!AwaitEnd(end))
        Terminate();
}

// Even without any time it is looked once what is there.
template <class Condition>
bool ChildTalk::Await(Condition condition, Clock::time_point end)
{
    for (bool isLast = false; !condition(); Serve(end))
    {
        if (isLast)
            return false;
        isLast = Clock::now() >= end;
    }
    return true;
}

void ChildTalk::Serve(Clock::time_point end)
{
    const auto wanted = [](bool isWanted, int descriptor, short events) {
        return pollfd{isWanted ? descriptor : -1, events, 0};
    };
    pollfd polled[] = {
        wanted(!m_unsent.empty(), m_input.Get(), POLLOUT), wanted(true, m_output.m_descriptor.Get(), POLLIN),
        wanted(true, m_errors.m_descriptor.Get(), POLLIN), wanted(true, m_child.EndDescriptor(), POLLIN)};
    PollUntil(polled, std::size(polled), NextLook(end));
    if (polled[0].revents != 0)
        SendSome();
    if (polled[1].revents != 0)
        Receive(m_output, s_uAtOnce);
    if (polled[2].revents != 0)
        Receive(m_errors, s_uAtOnce);
    if (polled[3].revents != 0 || (m_child.EndDescriptor() == -1 && m_child.HasEnded()))
        Finish();
    else if (Clock::now() >= m_deadline)
        TimeOut();
}

Clock::time_point ChildTalk::NextLook(Clock::time_point end) const
{
    const Clock::time_point due = std::min(end, m_deadline);
    return m_child.EndDescriptor() != -1 ? due : std::min(due, Clock::now() + s_lookPause);
}

// A child that takes no more input is no failure of anything but the sending.
void ChildTalk::SendSome()
{
    const QuietPipes quiet;
    const ssize_t count = write(m_input.Get(), m_unsent.data(), m_unsent.size());
    if (count >= 0)
        m_unsent.remove_prefix(static_cast<std::size_t>(count));
    if ((count == -1 && errno != EAGAIN && errno != EINTR) || (m_unsent.empty() && m_bEndsInput))
        CloseInput();
}

void ChildTalk::CloseInput()
{
    m_input.Close();
    ForgetInput();
}

// What memory cannot hold is lost, which the outcome tells then, too.
std::size_t ChildTalk::Receive(Stream& stream, std::size_t most)
{
    char buffer[s_uAtOnce];
    const ssize_t count = read(stream.m_descriptor.Get(), buffer, std::min(most, sizeof buffer));
    if (count == 0 || (count == -1 && errno != EINTR && errno != EAGAIN))
        stream.m_descriptor.Close();
    if (count <= 0)
        return 0;
    const auto size = static_cast<std::size_t>(count);
    const std::size_t kept =
        std::min<std::uint64_t>(size, m_uMost - std::min<std::uint64_t>(m_uMost, Kept(stream)));
    const bool wasTruncated = std::exchange(m_pOutcome->m_bTruncated, true);
    stream.m_strText.append(buffer, kept);
    m_pOutcome->m_bTruncated = wasTruncated || kept < size;
    return size;
}

void ChildTalk::ReceiveRest(Stream& stream)
{
    int there = 0;
    if (stream.m_descriptor.IsOpen() && ioctl(stream.m_descriptor.Get(), FIONREAD, &there) == 0)
        for (auto left = static_cast<std::size_t>(there); left > 0 && stream.m_descriptor.IsOpen();)
            left -= Receive(stream, left);
    stream.m_descriptor.Close();
}

std::size_t ChildTalk::Kept(const Stream& stream) const
{
    return stream.m_strText.size() - (&stream == &m_output ? m_uLine : 0);
}

bool ChildTalk::HasLine()
{
    const std::string& text = m_output.m_strText;
    m_uSearched = std::min(text.find('\n', m_uSearched), text.size());
    return m_uSearched < text.size() || (!m_output.m_descriptor.IsOpen() && m_uLine < text.size());
}

void ChildTalk::TimeOut()
{
    m_pOutcome->m_bTimedOut = true;
    m_deadline = Clock::time_point::max();
    m_child.Signal(SIGKILL);
}

// The signal comes first: once the end is taken, the number of the group may be another's.
void ChildTalk::Finish()
{
    if (m_bWholeGroup)
        m_child.Signal(SIGKILL);
    ReceiveRest(m_output);
    ReceiveRest(m_errors);
    CloseInput();
    m_pOutcome->m_end = m_child.TakeEnd();
    m_bEnded = true;
}

} // namespace Toolkit
