// SPDX-License-Identifier: MIT
#include "Tour.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Archive.h"
#include "Loop.h"
#include "Opener.h"
#include "Text.h"
#include "classic/Dates.h"
#include "classic/State.h"
#include "toolkit/app/GetTickCount.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/FSInputSerializer.h"
#include "toolkit/files/FSOutputSerializer.h"
#include "toolkit/files/FSStream.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/StreamResult.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;
using namespace std::chrono_literals;

namespace
{

// A step that hangs fails; one that is slow, on a busy machine, does not.
const std::chrono::seconds s_patience(60);

// Text and paths for the classic classes, and theirs for us.
TString<wchar_t> Wide(const std::string& text)
{
    return UTF8::ToUNICODE(TString<char>(text));
}

std::string Narrow(const TString<wchar_t>& text)
{
    return UTF8::ToUTF8(text);
}

std::vector<std::string> LinesOf(const std::filesystem::path& file)
{
    return Lines(ReadFile(file).value_or(std::string()));
}

bool BeginsWith(const std::string& text, const std::string& beginning)
{
    return text.rfind(beginning, 0) == 0;
}

// The position of the first line that ends in `message`; the number of lines if none does.
std::size_t FindMessage(const std::vector<std::string>& lines, const std::string& message)
{
    const auto ends = [&message](const std::string& line)
    { return line.size() >= message.size() && line.substr(line.size() - message.size()) == message; };
    return static_cast<std::size_t>(std::find_if(lines.begin(), lines.end(), ends) - lines.begin());
}

std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string PlatformName()
{
    switch (SystemInfo::GetPlatform())
    {
    case SystemInfo::PlatformUnix:
        return "Unix";
    case SystemInfo::PlatformMac:
        return "Mac";
    case SystemInfo::PlatformWindows:
        return "Windows";
    default:
        return "unknown";
    }
}

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

Tour::Tour(const std::filesystem::path& bundle, const Toolkit::Folders& folders)
    : m_bundle(bundle), m_folders(folders), m_output(folders.Cache() / "tour")
{
}

Tour::~Tour()
{
    Log::Install({});
}

bool Tour::Play()
{
    OpenSession();
    FindFolders();
    AskSystem();
    ReadSettings();
    LoadPlugins();
    ReadMails();
    ShowDates();
    HideInNotes();
    ReadArchive();
    ChangeSetting();
    SaveState();
    HandOverAttachment();
    TalkToChild();
    StartTwice();
    RestartInPlace();
    RestartWithLock();
    ShutDown();
    ShowLog();
    PrintLine();
    PrintLine(std::to_string(m_uHolding) + '/' + std::to_string(m_uSteps) + " steps");
    return m_uHolding == m_uSteps;
}

void Tour::OpenSession()
{
    Begin("The host installs a log for this run, and opens a ToolkitSession for the classic classes");
    const Result<std::shared_ptr<RunLog>> log = RunLog::Open(
        RunLogOptions("desk").Folder(m_folders.State() / "logs").Threshold(LogSeverity::Info).Keep(5));
    m_log = log.value_or(nullptr);
    Log::Install({m_log});
    m_session = std::make_unique<ToolkitSession>();
    (*PathManager::s_pInstance)
        ->SetApplicationRessourcesPath((*PathManager::s_pInstance)->GetApplicationPath());
    std::filesystem::create_directories(m_output);
    Say("the library registered its module, wxWidgets was started, the module made its singletons:");
    Say("logger, system information, version, path manager, restart, single instance");
    Say("version of the library: " + Narrow((*Version::s_pInstance)->ToString()));
    Say(log ? "log file: " + m_log->File().string() : log.error().Message());
    End(log && LibModuleManager::s_pInstance != nullptr && ILogger::s_pInstance != nullptr &&
        SystemInfo::s_pInstance != nullptr && Version::s_pInstance != nullptr &&
        PathManager::s_pInstance != nullptr && RestartManagment::s_pInstance != nullptr &&
        SingleApplicationInstance::s_pInstance != nullptr);
}

void Tour::FindFolders()
{
    Begin("Folders and the classic path manager know where everything lies");
    const smart_ptr<PathManager> paths = *PathManager::s_pInstance;
    Say("application:      " + Folders::Executable().string());
    Say("settings:         " + m_folders.Config().string());
    Say("logs:             " + m_folders.State().string());
    Say("cache:            " + m_folders.Cache().string());
    Say("plug-ins:         " + Narrow(paths->GetPluginsPath()));
    Say("application data: " + Narrow(paths->GetApplicationDataPath()));
    Say("documents:        " + Narrow(paths->GetDocumentsPath()));
    Say("unique instance:  " + Narrow(paths->GetUniqueInstanceName()));
    End(PathManager::DirExists(paths->GetApplicationDataPath()) &&
        PathManager::DirExists(paths->GetPluginsPath()) &&
        !paths->GetUniqueInstanceName().Contains(paths->GetPathSeparator()) &&
        Narrow(paths->GetApplicationName()) == Folders::Executable().filename());
}

void Tour::AskSystem()
{
    Begin("The system around it");
    const bool littleEndian = SystemInfo::GetEndian() == SystemInfo::EndianLittle;
    Say(PlatformName() + ", version " + std::to_string(SystemInfo::GetOSMajorVersion()) + '.' +
        std::to_string(SystemInfo::GetOSMinorVersion()) + ", " +
        (littleEndian ? "little-endian" : "not little-endian"));
    Say("tick count: " + std::to_string(GetTickCount()) + " ms");
    End(SystemInfo::GetPlatform() != SystemInfo::PlatformUnknown &&
        SystemInfo::GetEndian() != SystemInfo::EndianUnknown);
}

void Tour::ReadSettings()
{
    const std::filesystem::path file = m_bundle / "desk.ini";
    Begin("The host reads its settings from " + file.string());
    // The user's own are the tour's, so that it changes nobody's.
    std::filesystem::remove(m_output / "desk.ini");
    Result<Preferences> preferences = Preferences::Load(file, m_output / "desk.ini");
    if (preferences)
        m_preferences = *std::move(preferences);
    else
        Say(preferences.error().Message());
    const IniFile classic(Wide(file.string()));
    bool same = m_preferences && classic.IsLoaded();
    for (const char* const section : {"view", "archive", "mailtext", "programs", "redact"})
        for (const std::string& key :
             same ? m_preferences->Current().Keys(section) : std::vector<std::string>())
        {
            const std::string value = m_preferences->Current().Get(section, key, "");
            Say('[' + std::string(section) + "] " + key + " = " + value);
            same = same && Narrow(classic.GetValue(Wide(section), Wide(key), Wide(""))) == value;
        }
    Say(same ? "IniFile reads the same" : "IniFile reads something else");
    End(same && m_preferences->Current().Get("view", "preview", 0) == 60);
}

void Tour::LoadPlugins()
{
    Begin("The plug-ins are loaded, but for one that was made for another version of their interface");
    m_host = std::make_unique<Host>(Folders::Executable().parent_path() / "plugins");
    const std::vector<Failure> problems = m_host->Configure(m_preferences->Current());
    for (const std::shared_ptr<Reader>& reader : m_host->Readers())
        Say(reader->Info().Name() + ' ' + reader->Info().Version());
    for (const Failure& failure : m_host->Refused())
        Say("refused: " + failure.Message());
    for (const Failure& problem : problems)
        Say("a setting is left out: " + problem.Message());
    const std::vector<std::string> lines = LinesOf(m_log->File());
    Say("redact registered a module, which was initialised at once");
    End(m_host->Readers().size() == 2 && m_host->Refused().size() == 1 &&
        m_host->Refused().front().Code() == Errc::WrongInterface && problems.size() == 1 &&
        BeginsWith(problems.front().Message(), "unfinished") &&
        FindMessage(lines, "redact: module initialised") < FindMessage(lines, "redact: ready"));
}

void Tour::ReadMails()
{
    const std::filesystem::path folder = m_bundle / "mails";
    Begin("Plug-in mailtext reads the mails in " + folder.string());
    const std::vector<std::filesystem::path> files = FilesIn(folder);
    End(!files.empty() &&
        std::count_if(files.begin(), files.end(), [this](const auto& file) { return ReadMail(file); }) ==
            static_cast<std::ptrdiff_t>(files.size()));
}

void Tour::ShowDates()
{
    Begin("The same date in the short forms of five locales, which LC_ALL names, and relative to now");
    std::vector<std::string> report;
    const bool five = ShowInFiveLocales(report);
    const bool relative = ShowRelativeToNow(report);
    for (const std::string& line : report)
        Say(line);
    End(five && relative);
}

void Tour::HideInNotes()
{
    const std::filesystem::path folder = m_bundle / "notes";
    Begin("Plug-in redact hides what its patterns find in " + folder.string());
    bool all = true;
    for (const std::filesystem::path& file : FilesIn(folder))
        all = HideInNote(file) && all;
    const std::string members = ReadFile(m_output / "members.txt").value_or(std::string());
    End(all && members.find("nora.lindqvist@") == members.npos &&
        members.find("[telephone]") != members.npos);
}

void Tour::ReadArchive()
{
    const Settings& settings = m_preferences->Current();
    const std::filesystem::path archive = m_bundle / settings.Get("archive", "file", "");
    const std::string wanted = settings.Get("archive", "entries", "");
    Begin("Mails are taken from the ZIP archive " + archive.string() + ", those that " + wanted + " matches");
    const auto extracted = ExtractFiles(archive, wanted, m_output);
    if (extracted)
        m_mails = *extracted;
    else
        Say(extracted.error().Message());
    bool all = true;
    for (const std::filesystem::path& mail : m_mails)
        all = ReadMail(mail) && all;
    End(all && m_mails.size() == 2);
}

void Tour::ChangeSetting()
{
    Begin("A changed setting changes what is shown, and is written back: [view] preview = 12");
    const Result<Document> before = m_host->Read(m_mails.front());
    const Result<void> saved = m_preferences->Set("view", "preview", "12");
    m_host->Configure(m_preferences->Current());
    const Result<Document> after = m_host->Read(m_mails.front());
    Say("before: " + before->preview);
    Say("after:  " + after->preview);
    for (const std::string& line : LinesOf(m_output / "desk.ini"))
        Say("in " + (m_output / "desk.ini").string() + ": " + line);
    const IniFile written(Wide((m_output / "desk.ini").string()));
    End(saved && before->title == after->title && after->preview.size() < before->preview.size() &&
        written.GetUint32(L"view", L"preview", 0) == 12);
}

void Tour::SaveState()
{
    const std::filesystem::path file = m_output / "state.bin";
    Begin("The host saves its state through the classic serializer and reads it back");
    State saved;
    saved.m_uRuns = 1;
    for (const std::filesystem::path& mail : m_mails)
        saved.m_names.push_back(Wide(mail.string()));
    const StreamResult written = FSOutputSerializer(Wide(file.string())).Serialize(saved);
    State read;
    const StreamResult readResult = FSInputSerializer(Wide(file.string())).Deserialize(read);
    Say(file.string() + ", " + std::to_string(FSStream(Wide(file.string()), FSStream::ModeRead).Length()) +
        " bytes: " + std::to_string(read.m_uRuns) + " run, " + std::to_string(read.m_names.size()) +
        " mails");
    End(!IsError(written) && !IsError(readResult) && read.m_uRuns == saved.m_uRuns &&
        read.m_names == saved.m_names);
}

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
        SayUntil("opened 1-garden.eml") && SayAnswer("third", {"-send", "status"}) &&
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

void Tour::ShutDown()
{
    Begin("Shutdown: plug-ins are given up in reverse order, modules are released, wxWidgets stops");
    m_host.reset();
    TOOLKIT_LOG(LogSeverity::Info) << "desk: shutting down";
    m_session.reset();
    const std::vector<std::string> lines = LinesOf(m_log->File());
    const std::size_t module = FindMessage(lines, "redact: module released");
    const std::size_t second = FindMessage(lines, "redact: released");
    const std::size_t first = FindMessage(lines, "mailtext: released");
    Say("redact's module, redact, mailtext, toolkit");
    End(LibModuleManager::s_pInstance == nullptr && ILogger::s_pInstance == nullptr && module < second &&
        second < first && first < lines.size());
}

void Tour::ShowLog()
{
    Begin("One log holds the lines of the host, its plug-ins and the library: time, severity, thread, "
          "function, message");
    const std::vector<std::string> lines = LinesOf(m_log->File());
    Say(m_log->File().string() + ", " + std::to_string(lines.size()) + " lines, the last ones:");
    const std::size_t shown = m_preferences->Current().Get("tour", "loglines", std::size_t{8});
    for (std::size_t i = lines.size() - std::min(lines.size(), shown); i < lines.size(); ++i)
        Say("  " + lines[i]);
    End(FindMessage(lines, "desk: shutting down") < lines.size() &&
        FindMessage(lines, "mailtext: ready") < FindMessage(lines, "redact: ready") &&
        FindMessage(lines, "redact: ready") < lines.size());
}

std::optional<Document> Tour::Read(const std::filesystem::path& file) const
{
    Result<Document> document = m_host->Read(file);
    if (document)
        return *std::move(document);
    Say(document.error().Message());
    return std::nullopt;
}

bool Tour::ReadMail(const std::filesystem::path& file) const
{
    const std::optional<Document> mail = Read(file);
    if (!mail)
        return false;
    Say(file.filename().string() + ':');
    Say("  \"" + mail->title + "\" from " + mail->from + ", " + mail->encoding);
    Say("  " + mail->date + ", " + std::to_string(mail->attachments.size()) + " attached");
    Say("  " + mail->preview);
    return !mail->title.empty() && !mail->from.empty() && !mail->date.empty() && !mail->preview.empty();
}

bool Tour::HideInNote(const std::filesystem::path& file) const
{
    const std::optional<Document> note = Read(file);
    if (!note)
        return false;
    const std::vector<std::string> before = LinesOf(file);
    const std::vector<std::string> after = Lines(note->text);
    Say(file.filename().string() + ':');
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i)
        if (before[i] != after[i])
            Say("  " + after[i]);
    const std::filesystem::path copy = m_output / file.filename();
    const Result<void> written = WriteFile(copy, note->text);
    Say("  " + std::to_string(note->hidden) + " places hidden, in " + copy.string());
    return written && note->hidden > 0 && before.size() == after.size();
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

bool Tour::SayAnswer(const std::string& name, const std::vector<std::string>& arguments) const
{
    const Result<ProcessResult> desk =
        Process::Run(DeskWith(arguments), AtHomeIn(m_output / "processes").Timeout(s_patience));
    Say(name + ": " + arguments.front() + ' ' + arguments.back());
    for (const std::string& line : Lines(desk ? desk->Output() + desk->Errors() : desk.error().Message()))
        Say("  the first desk says: " + line);
    return desk && desk->ExitCode() == 0;
}

void Tour::Begin(const std::string& title)
{
    ++m_uSteps;
    PrintLine();
    PrintLine(std::to_string(m_uSteps) + ". " + title);
}

void Tour::Say(const std::string& line) const
{
    PrintLine("     " + line);
}

void Tour::End(bool holds)
{
    m_uHolding += holds ? 1 : 0;
    PrintLine(holds ? "   ok" : "   FAILED");
}

} // namespace Desk
