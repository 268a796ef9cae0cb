// SPDX-License-Identifier: MIT
#include "toolkit/app/Process.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "toolkit/app/Folders.h"
#include "toolkit/internal/process/ChildCommand.h"
#include "toolkit/internal/process/ChildSettings.h"
#include "toolkit/internal/process/ChildTalk.h"
#include "toolkit/internal/process/ImageReplacement.h"
#include "toolkit/internal/system/MovedFrom.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/SystemFailure.h"

namespace Toolkit
{

namespace
{

using Clock = ChildTalk::Clock;

const Clock::time_point s_never = Clock::time_point::max();

// What the system appends to the name of a file that was removed or replaced since it was run.
const std::string_view c_strDeleted = " (deleted)";
const char* const c_strSelf = "/proc/self/exe";
const char* const c_strWait = "cannot wait for the process";

Failure NotAnswered(const ChildTalk& talk, const char* what)
{
    return Failure(Errc::NotAnswered, talk.Name() + " has not " + what + " in time");
}

Result<void> Write(ChildTalk* process, std::string_view text, Clock::time_point end)
{
    if (process == nullptr)
        return MovedFrom::Refused("cannot write to the process");
    ChildTalk& talk = *process;
    bool sent = talk.AwaitSent(end);
    if (sent && talk.TakesInput())
    {
        talk.Send(text);
        sent = talk.AwaitSent(end);
        talk.ForgetInput();
    }
    if (!sent)
        return NotAnswered(talk, "taken its input");
    if (!talk.TakesInput())
        return SystemFailure("cannot write to", talk.Name(), EPIPE);
    return {};
}

Result<std::string> ReadLine(ChildTalk* process, Clock::time_point end)
{
    if (process == nullptr)
        return MovedFrom::Refused("cannot read a line of the process");
    ChildTalk& talk = *process;
    if (!talk.AwaitLine(end))
        return NotAnswered(talk, "written a line");
    if (std::optional<std::string> line = talk.TakeLine())
        return *std::move(line);
    return SystemFailure("cannot read a line of", talk.Name(), ENODATA);
}

// The names by which the file of this process is to be run: a newer one in its place comes first.
std::vector<std::string> OwnFiles()
{
    std::vector<std::string> files = {Folders::Executable().native(), c_strSelf};
    const std::string& own = files[0];
    if (own.size() > c_strDeleted.size() &&
        own.compare(own.size() - c_strDeleted.size(), own.npos, c_strDeleted) == 0)
        files.insert(files.begin() + 1, own.substr(0, own.size() - c_strDeleted.size()));
    return files;
}

} // namespace

Result<ProcessResult> Process::Run(const std::vector<std::string>& arguments, const ProcessOptions& options)
{
    if (options.m_pSettings == nullptr)
        return Run(arguments);
    const Result<std::unique_ptr<ChildTalk>> started = ChildTalk::Start(arguments, *options.m_pSettings);
    if (!started)
        return started.error();
    ChildTalk& talk = **started;
    if (!options.m_pSettings->m_strInput.empty())
        talk.Send(options.m_pSettings->m_strInput);
    talk.EndInput();
    talk.AwaitEnd(s_never);
    return ProcessResult(talk.TakeOutcome());
}

Result<Process> Process::Start(const std::vector<std::string>& arguments, const ProcessOptions& options)
{
    if (options.m_pSettings == nullptr)
        return Start(arguments);
    Result<std::unique_ptr<ChildTalk>> started = ChildTalk::Start(arguments, *options.m_pSettings);
    if (!started)
        return started.error();
    (*started)->SendOwn(options.m_pSettings->m_strInput);
    return Process(*std::move(started));
}

Result<void> Process::ReplaceSelf(const std::vector<std::string>& arguments)
{
    const std::vector<std::string> names = OwnFiles();
    std::vector<std::string> texts = {names[names.size() - 2]};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    if (Result<void> checked = ChildCommand::Check(texts, ChildSettings()); !checked)
        return checked;
    std::vector<const char*> files;
    for (const std::string& name : names)
        files.push_back(name.c_str());
    files.push_back(nullptr);
    std::vector<char*> vector;
    for (std::string& text : texts)
        vector.push_back(text.data());
    vector.push_back(nullptr);
    return SystemFailure("cannot become anew", texts[0],
                         ImageReplacement::Become(files.data(), vector.data()));
}

Process::Process(std::unique_ptr<ChildTalk> talk) noexcept : m_pTalk(std::move(talk)) {}
Process::Process(Process&& other) noexcept = default;

Process& Process::operator=(Process&& other) noexcept
{
    if (this != &other)
    {
        const Process before(std::exchange(m_pTalk, std::move(other.m_pTalk)));
    }
    return *this;
}

Process::~Process() = default;

int Process::Id() const noexcept
{
    return m_pTalk != nullptr ? m_pTalk->Id() : 0;
}

Result<void> Process::Write(std::string_view text)
{
    return Toolkit::Write(m_pTalk.get(), text, s_never);
}

Result<void> Process::Write(std::string_view text, std::chrono::nanoseconds timeout)
{
    return Toolkit::Write(m_pTalk.get(), text, ChildTalk::After(timeout));
}

void Process::CloseInput()
{
    if (m_pTalk != nullptr)
        m_pTalk->EndInput();
}

Result<std::string> Process::ReadLine()
{
    return Toolkit::ReadLine(m_pTalk.get(), s_never);
}

Result<std::string> Process::ReadLine(std::chrono::nanoseconds timeout)
{
    return Toolkit::ReadLine(m_pTalk.get(), ChildTalk::After(timeout));
}

Result<ProcessResult> Process::Wait()
{
    if (m_pTalk == nullptr)
        return MovedFrom::Refused(c_strWait);
    CloseInput();
    m_pTalk->AwaitEnd(s_never);
    return ProcessResult(m_pTalk->TakeOutcome());
}

Result<ProcessResult> Process::Wait(std::chrono::nanoseconds timeout)
{
    if (m_pTalk == nullptr)
        return MovedFrom::Refused(c_strWait);
    if (!m_pTalk->AwaitEnd(ChildTalk::After(timeout)))
        return NotAnswered(*m_pTalk, "ended");
    return ProcessResult(m_pTalk->TakeOutcome());
}

void Process::Terminate()
{
    if (m_pTalk != nullptr)
        m_pTalk->Terminate();
}

void Process::Terminate(std::chrono::nanoseconds patience)
{
    if (m_pTalk != nullptr)
        m_pTalk->Terminate(ChildTalk::After(patience));
}

} // namespace Toolkit
