// SPDX-License-Identifier: MIT
#include "Application.h"

#include <chrono>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "Host.h"
#include "Index.h"
#include "Opener.h"
#include "Preferences.h"
#include "toolkit/app/Process.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/RunLog.h"
#include "toolkit/regExp/Pattern.h"

namespace Desk
{

using namespace Toolkit;
using namespace std::chrono_literals;

struct Application::Running
{
    Running(const Preferences& preferences, const Folders& folders, const std::filesystem::path& bundle,
            const TaskBase::Executor& executor)
        : m_preferences(preferences),
          m_host(Folders::Executable().parent_path() / "plugins"),
          m_index(m_host, bundle, folders.Cache() / "archive"),
          m_opener(folders.Cache() / "attachments", executor)
    {
    }

    Preferences m_preferences;
    Host m_host;
    Index m_index;
    Opener m_opener;
};

namespace
{

const char* const c_strKey = "org.example.desk";

// How long a start waits for a desk that begins or ends just now.
const std::chrono::seconds s_patience(20);

std::string Argument(const Instance::Command& command)
{
    return command.Arguments().size() > 1 ? command.Arguments()[1] : std::string();
}

// A relative path is meant from where the later start stands.
std::filesystem::path File(const Instance::Command& command)
{
    return (command.Folder() / Argument(command)).lexically_normal();
}

// What this start would have the desk that runs do: a verb, and an argument if there is one.
std::vector<std::string> WordsOf(const Options& options)
{
    if (!options.open.empty())
        return {"open", options.open.string()};
    const std::string& text = options.send;
    const std::size_t blank = text.find(' ');
    if (blank == text.npos)
        return {text};
    return {text.substr(0, blank), text.substr(blank + 1)};
}

Instance::Answer Failed(const Failure& failure)
{
    return Instance::Answer(1, failure.Message() + '\n');
}

// What a program wrote, as a document.
Document OutputOf(const std::string& name, const ProcessResult& result)
{
    Document document;
    document.title = name;
    document.text = result.Output() + result.Errors();
    return document;
}

} // namespace

Application::Application(const Options& options, const Folders& folders, View& view)
    : m_options(options), m_folders(folders), m_view(view)
{
}

Application::~Application()
{
    End();
}

std::optional<Instance::Answer> Application::Begin()
{
    if (const std::optional<Answer> answer = AskFirst())
        return answer;
    if (!m_options.send.empty())
        return Answer(1, "no desk takes the command\n");
    if (const Result<void> run = Run(); !run)
        return Failed(run.error());
    return std::nullopt;
}

std::optional<Instance::Answer> Application::AskFirst()
{
    const auto start = std::chrono::steady_clock::now();
    while (true)
    {
        Result<Instance> instance = Instance::Claim(c_strKey);
        if (!instance)
            return Failed(instance.error());
        if (instance->IsFirst())
        {
            m_instance.emplace(*std::move(instance));
            return std::nullopt;
        }
        const Result<Answer> answer = instance->Ask(WordsOf(m_options), s_patience);
        if (answer)
            return *answer;
        // The first one may end just now, and then this one may be the next.
        if (!m_options.send.empty() || std::chrono::steady_clock::now() - start > s_patience)
            return Failed(answer.error());
        std::this_thread::sleep_for(50ms);
    }
}

Result<void> Application::Run()
{
    OpenLog();
    const std::filesystem::path bundle =
        m_options.data.empty() ? m_folders.Data() : std::filesystem::absolute(m_options.data);
    const Result<Preferences> preferences =
        Preferences::Load(bundle / "desk.ini", m_folders.Config() / "desk.ini");
    if (!preferences)
        return preferences.error();
    m_running = std::make_unique<Running>(*preferences, m_folders, bundle, OnMainThread());
    m_running->m_host.Configure(preferences->Current());
    m_view.ShowSettings(preferences->Current());
    if (!m_options.open.empty())
        Execute(Command(WordsOf(m_options), std::filesystem::current_path()));
    m_instance->Serve([this](const Command& command) { return Execute(command); }, OnMainThread());
    m_view.Tell("takes commands");
    StartIndex(m_options.paused);
    return Result<void>();
}

void Application::OpenLog()
{
    const Result<std::shared_ptr<RunLog>> file =
        RunLog::Open(RunLogOptions("desk").Folder(m_folders.State() / "logs").Threshold(LogSeverity::Info));
    if (!file)
        m_view.Tell("there is no log: " + file.error().Message());
    Log::Install({file.value_or(nullptr), m_view.MakeLogSink()});
}

TaskBase::Executor Application::OnMainThread()
{
    return [&view = m_view](std::function<void()> function) { view.Post(std::move(function)); };
}

void Application::StartIndex(bool paused)
{
    m_view.Tell(paused ? "the index is paused before the first mail"
                       : "the mails are indexed in the background");
    m_running->m_index.Start(
        m_running->m_preferences.Current(), paused,
        [this](const TaskProgress& progress) { ShowProgress(progress); }, OnMainThread());
}

void Application::ShowProgress(const TaskProgress& progress)
{
    m_view.ShowProgress(progress);
    if (!progress.IsFinished())
        return;
    m_view.ShowIndex(m_running->m_index.Documents());
    TellIndex();
}

void Application::TellIndex()
{
    const std::string count = std::to_string(m_running->m_index.Documents().size());
    m_view.Tell(m_running->m_index.IsComplete() ? count + " mails are indexed"
                                                : "the index was stopped after " + count + " mails");
}

Instance::Answer Application::Execute(const Command& command)
{
    const struct
    {
        const char* verb;
        Answer (Application::*execute)(const Command&);
    } rows[] = {
        {"", &Application::ShowItself},
        {"open", &Application::Open},
        {"attachment", &Application::OpenAttachment},
        {"plug-ins", &Application::ShowPlugins},
        {"list", &Application::List},
        {"status", &Application::TellStatus},
        {"set", &Application::Set},
        {"pause", &Application::Pause},
        {"resume", &Application::Resume},
        {"cancel", &Application::Cancel},
        {"dump", &Application::Describe},
        {"picture", &Application::SavePicture},
        {"restart", &Application::Restart},
        {"quit", &Application::Quit},
    };
    const std::string verb = command.Arguments().empty() ? std::string() : command.Arguments()[0];
    const std::string argument = Argument(command);
    TOOLKIT_LOG(LogSeverity::Info) << "command " << verb << (argument.empty() ? "" : " ") << argument;
    for (const auto& row : rows)
        if (verb == row.verb)
            return (this->*row.execute)(command);
    return Answer(2, "there is no command " + verb + '\n');
}

Instance::Answer Application::Open(const Command& command)
{
    const Result<Document> document = m_running->m_host.Read(File(command));
    if (!document)
    {
        m_view.Tell(document.error().Message());
        return Failed(document.error());
    }
    m_view.Show(*document);
    return Answer(0, "opened " + document->file.filename().string() + ": \"" + document->title + "\", " +
                         std::to_string(document->hidden) + " places hidden\n");
}

Instance::Answer Application::OpenAttachment(const Command& command)
{
    const Result<Document> document = m_running->m_host.Read(File(command));
    if (!document)
        return Failed(document.error());
    if (document->attachments.empty())
        return Answer(1, "nothing is attached to " + document->file.filename().string() + '\n');
    const Attachment& attachment = document->attachments.front();
    const auto show = [this, name = attachment.name](const Opener::Output& output)
    {
        if (output)
            m_view.Show(OutputOf(name, *output));
        else
            m_view.Tell(output.error().Message());
    };
    const Result<void> begun = m_running->m_opener.Open(attachment, m_running->m_preferences.Current(), show);
    return begun ? Answer(0, attachment.name + " is handed to its program\n") : Failed(begun.error());
}

Instance::Answer Application::ShowPlugins(const Command&)
{
    Document document;
    document.title = "Plug-ins";
    for (const std::shared_ptr<Reader>& reader : m_running->m_host.Readers())
        document.text += reader->Info().Name() + ' ' + reader->Info().Version() + '\n';
    for (const Failure& failure : m_running->m_host.Refused())
        document.text += "refused: " + failure.Message() + '\n';
    m_view.Show(document);
    return Answer(0, document.text);
}

Instance::Answer Application::List(const Command&)
{
    std::string text;
    for (const Document& document : m_running->m_index.Documents())
        text +=
            document.date + " | " + document.from + " | " + document.title + " | " + document.preview + '\n';
    return Answer(0, text);
}

Instance::Answer Application::TellStatus(const Command&)
{
    const TaskProgress progress = m_running->m_index.Progress();
    return Answer(0, std::to_string(progress.Done()) + " of " + std::to_string(progress.All()) + " mails" +
                         (m_running->m_index.IsRunning() ? ", more to come\n" : "\n"));
}

Instance::Answer Application::Set(const Command& command)
{
    static const Pattern s_setting = Pattern::Compile("^([^/]+)/([^ ]+) (.*)$").value();
    const std::string text = Argument(command);
    const Match setting = s_setting.Find(text);
    if (!setting)
        return Answer(2, "a setting is SECTION/KEY VALUE\n");
    const Result<void> saved = m_running->m_preferences.Set(std::string(setting[1]), std::string(setting[2]),
                                                            std::string(setting[3]));
    if (!saved)
        return Failed(saved.error());
    m_running->m_host.Configure(m_running->m_preferences.Current());
    m_view.ShowSettings(m_running->m_preferences.Current());
    StartIndex(false);
    return Answer();
}

Instance::Answer Application::Pause(const Command&)
{
    m_running->m_index.Pause();
    return Answer();
}

Instance::Answer Application::Resume(const Command&)
{
    m_running->m_index.Resume();
    return Answer();
}

Instance::Answer Application::Cancel(const Command&)
{
    m_running->m_index.Cancel();
    return Answer();
}

Instance::Answer Application::Describe(const Command&)
{
    return Answer(0, m_view.Describe());
}

Instance::Answer Application::SavePicture(const Command& command)
{
    return m_view.SavePicture(File(command)) ? Answer() : Answer(1, "there is no picture\n");
}

Instance::Answer Application::Restart(const Command&)
{
    m_bRestart = true;
    m_view.Leave();
    return Answer();
}

Instance::Answer Application::Quit(const Command&)
{
    m_view.Leave();
    return Answer();
}

Instance::Answer Application::ShowItself(const Command&)
{
    m_view.Tell("started once more");
    return Answer(0, "desk runs already\n");
}

void Application::End()
{
    m_instance.reset();
    if (m_running != nullptr)
    {
        const bool stopped = m_running->m_index.IsRunning();
        m_running->m_index.End();
        if (stopped)
            TellIndex();
        m_running.reset();
        m_view.Tell(m_bRestart ? "ends, and starts again" : "ends");
    }
    // The view's sink must not outlive the view.
    Log::Install({});
    if (!std::exchange(m_bRestart, false))
        return;
    // It only comes back when it fails.
    if (const Result<void> replaced = Process::ReplaceSelf(m_options.arguments); !replaced)
        m_view.Tell(replaced.error().Message());
}

} // namespace Desk
