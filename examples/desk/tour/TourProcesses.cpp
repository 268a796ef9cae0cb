// SPDX-License-Identifier: MIT
#include "tour/Tour.h"

#include <chrono>
#include <utility>

#include "Loop.h"
#include "Opener.h"
#include "Text.h"
#include "toolkit/log/Log.h"
#include "tour/TourText.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

// A step that hangs fails; one that is slow, on a busy machine, does not.
const std::chrono::seconds s_patience(60);

// Desk itself, with these arguments.
std::vector<std::string> DeskWith(const std::vector<std::string>& arguments)
{
    std::vector<std::string> all = {Folders::Executable().string()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

// A desk with a home of its own, so that it meets no other one.
ProcessOptions AtHomeIn(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder / "runtime");
    std::filesystem::permissions(folder / "runtime", std::filesystem::perms::owner_all);
    ProcessOptions options;
    options.Environment("HOME", folder.string()).Environment("TMPDIR", folder.string());
    options.Environment("XDG_RUNTIME_DIR", (folder / "runtime").string());
    for (const char* const name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
        options.Environment(name, (folder / name).string());
    return options;
}

} // namespace

void Tour::HandOverAttachment()
{
    Begin("The attachment of a mail is handed to the program that the settings name");
    const Result<Document> mail = m_host->Read(m_bundle / "mails" / "5-roster.eml");
    std::vector<std::string> lines;
    Loop loop;
    Opener opener(m_output, [&loop](std::function<void()> function) { loop.Post(std::move(function)); });
    const auto done = [&loop, &lines](const Opener::Output& output)
    {
        lines = Lines(output ? output->Output() : output.error().Message());
        loop.Leave();
    };
    const Result<void> begun = mail && !mail->attachments.empty()
                                   ? opener.Open(mail->attachments.front(), m_preferences->Current(), done)
                                   : Failure(Errc::Malformed, "nothing is attached");
    if (begun)
        loop.Run();
    Say(begun ? mail->attachments.front().name + " is handed to " +
                    m_preferences->Current().Get("programs", ".txt", "")
              : begun.error().Message());
    for (const std::string& line : lines)
        Say("  " + line);
    End(lines.size() == 4 && lines.front() == "2026-06-08 Amélie Rousseau");
}

void Tour::TalkToChild()
{
    Begin("A child process: desk starts itself, hands over two texts and reads what it says");
    const std::string greeting = "Grüße \"aus\" dem Kindprozess";
    const Result<ProcessResult> child =
        Process::Run(DeskWith({"-child", "-text", greeting}),
                     ProcessOptions().Input("and its input\n").Timeout(s_patience));
    for (const std::string& line : Lines(child ? child->Output() : child.error().Message()))
        Say("it wrote: " + line);
    TOOLKIT_LOG(LogSeverity::Info) << "desk: the child process has ended";
    End(child && child->ExitCode() == 0 && child->Output() == greeting + "\nand its input\n");
}

void Tour::StartTwice()
{
    Begin("A second start hands its file to the first desk, which indexes the bundle in the background");
    // The index waits, so that what is printed is always in the same order.
    Result<Process> first = Process::Start(DeskWith({"-data", m_bundle.string(), "-paused"}),
                                           AtHomeIn(m_output / "processes").MergeErrors());
    if (first)
        m_first = *std::move(first);
    const std::string mail = (m_bundle / "mails" / "1-garden.eml").string();
    End(m_first && SayUntil("the index is paused") && SayAnswer("second", {"-open", mail}) &&
        SayUntil("opened 1-garden.eml") && WaitForCount() && SayAnswer("third", {"-send", "status"}) &&
        SayAnswer("fourth", {"-send", "resume"}) && SayUntil("7 mails are indexed") &&
        SayAnswer("fifth", {"-send", "set view/preview 20"}) && SayUntil("7 mails are indexed") &&
        SayAnswer("sixth", {"-send", "list"}));
}

void Tour::RestartInPlace()
{
    Begin("The first desk replaces itself by a new one, whose index is cancelled");
    const bool restarted = m_first && SayAnswer("seventh", {"-send", "restart"}) &&
                           SayUntil("ends, and starts again") && SayUntil("the index is paused");
    const bool cancelled = restarted && SayAnswer("eighth", {"-send", "cancel"}) &&
                           SayUntil("the index was stopped after 0 mails");
    const bool asked = cancelled && SayAnswer("ninth", {"-send", "quit"}) && SayUntil("ends");
    const Result<ProcessResult> ended = asked ? m_first->Wait(s_patience) : Failure(Errc::NotAnswered, "");
    m_first.reset();
    // It is the process that was started, so that its end can be waited for.
    End(ended && ended->ExitCode() == 0);
}

void Tour::RestartWithLock()
{
    Begin("A classic restart: the new process sees the lock of the restart and takes over");
    // The shell's "cat" ends when both processes have, as the second one inherits the output of the first.
    const Result<ProcessResult> both =
        Process::Run({"sh", "-c", "\"$0\" -classic-restart | cat", Folders::Executable().string()},
                     AtHomeIn(m_output / "processes").MergeErrors().Timeout(s_patience));
    const std::vector<std::string> lines = Lines(both ? both->Output() : both.error().Message());
    for (const std::string& line : lines)
        Say(line);
    End(lines ==
        std::vector<std::string>{"ends, and starts again", "restarted: the lock was there and is removed"});
}

bool Tour::SayUntil(const std::string& beginning)
{
    while (true)
    {
        const Result<std::string> line = m_first->ReadLine(s_patience);
        Say("first: " + (line ? *line : line.error().Message()));
        if (!line || BeginsWith(*line, beginning))
            return line.has_value();
    }
}

bool Tour::WaitForCount() const
{
    const auto end = std::chrono::steady_clock::now() + s_patience;
    while (std::chrono::steady_clock::now() < end)
    {
        const Result<ProcessResult> status = AskFirst({"-send", "status"});
        if (!status || !BeginsWith(status->Output(), "0 of 0 "))
            return status.has_value();
    }
    return false;
}

Result<ProcessResult> Tour::AskFirst(const std::vector<std::string>& arguments) const
{
    return Process::Run(DeskWith(arguments), AtHomeIn(m_output / "processes").Timeout(s_patience));
}

bool Tour::SayAnswer(const std::string& name, const std::vector<std::string>& arguments) const
{
    const Result<ProcessResult> desk = AskFirst(arguments);
    Say(name + ": " + arguments.front() + ' ' + arguments.back());
    for (const std::string& line : Lines(desk ? desk->Output() + desk->Errors() : desk.error().Message()))
        Say("  the first desk says: " + line);
    return desk && desk->ExitCode() == 0;
}

} // namespace Desk
