// SPDX-License-Identifier: MIT
#include "Commands.h"

#include <chrono>

#include <toolkit/app/Process.h>
#include <toolkit/log/Log.h>
#include <toolkit/regExp/Pattern.h>

namespace catalog
{

using namespace Toolkit;
using namespace std::chrono_literals;
using Answer = Instance::Answer;

namespace
{

const char* const c_strUsage = "read FOLDER | status | list [PATTERN] | show NAME | set KEY VALUE | quit\n";

Answer Failed(const Failure& failure)
{
    return Answer(1, failure.Message() + '\n');
}

} // namespace

Commands::Commands(Catalog& catalog, Settings& settings, Event& end)
    : m_catalog(catalog), m_settings(settings), m_end(end)
{
}

Answer Commands::Execute(const Instance::Command& command)
{
    const Words& words = command.Arguments();
    const std::string verb = words.empty() ? "status" : words[0];
    TOOLKIT_LOG(LogSeverity::Info) << "asked to " << verb;
    if (verb == "read" && words.size() == 2)
        return Read(command);
    if (verb == "status" && words.size() <= 1)
        return Answer(0, m_catalog.Progress() + '\n');
    if (verb == "list" && words.size() <= 2)
        return List(words);
    if (verb == "show" && words.size() == 2)
        return Show(words);
    if (verb == "set" && words.size() == 3)
        return Set(words);
    if (verb != "quit")
        return Answer(2, c_strUsage);
    m_end.Set();
    return Answer();
}

// A relative folder is meant from where the later start stands.
Answer Commands::Read(const Instance::Command& command)
{
    m_catalog.Read(command.Folder() / command.Arguments()[1],
                   std::chrono::milliseconds(m_settings.Get("read", "pause", 0)));
    return Answer();
}

Answer Commands::List(const Words& words) const
{
    const Result<Pattern> wanted = Pattern::Compile(words.size() == 2 ? words[1] : "", Pattern::IgnoreCase);
    if (!wanted)
        return Failed(wanted.error());
    std::string text;
    for (const Entry& entry : m_catalog.Entries())
        if (wanted->Find(entry.document.title))
            text += entry.file.filename().string() + ": " + entry.document.title +
                    (entry.document.date.empty() ? "\n" : ", " + entry.document.date + '\n');
    return Answer(0, text);
}

// Hands the file to the program of the settings, and its output to who asked.
Answer Commands::Show(const Words& words) const
{
    for (const Entry& entry : m_catalog.Entries())
    {
        if (entry.file.filename() != words[1])
            continue;
        const Result<ProcessResult> shown = Process::Run(
            {m_settings.Get("show", "program", "cat"), entry.file.string()}, ProcessOptions().Timeout(10s));
        if (!shown)
            return Failed(shown.error());
        return Answer(shown->ExitCode(), shown->Output() + shown->Errors());
    }
    return Answer(1, "there is no " + words[1] + '\n');
}

// "set show/program less"
Answer Commands::Set(const Words& words)
{
    const std::size_t slash = words[1].find('/');
    if (slash == std::string::npos)
        return Answer(2, "a key is SECTION/NAME\n");
    Result<void> done = m_settings.Set(words[1].substr(0, slash), words[1].substr(slash + 1), words[2]);
    if (done)
        done = m_settings.Save();
    return done ? Answer() : Failed(done.error());
}

} // namespace catalog
