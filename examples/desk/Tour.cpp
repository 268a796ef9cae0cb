// SPDX-License-Identifier: MIT
#include "Tour.h"

#include <algorithm>

#include "Archive.h"
#include "Dates.h"
#include "State.h"
#include "Text.h"
#include "toolkit/app/GetTickCount.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/files/Directory.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/FSInputSerializer.h"
#include "toolkit/files/FSOutputSerializer.h"
#include "toolkit/files/FSStream.h"
#include "toolkit/files/StreamResult.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogStatement.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

const unsigned int s_uShownLogLines = 8;

std::vector<Text> LinesOf(const Text& path)
{
    std::vector<Text> lines;
    ReadLines(path, lines);
    return lines;
}

// The position of the first line that ends in `message`; the number of lines if none does.
std::size_t FindMessage(const std::vector<Text>& lines, const Text& message)
{
    const auto ends = [&message](const Text& line)
    { return line.size() >= message.size() && line.substr(line.size() - message.size()) == message; };
    return static_cast<std::size_t>(std::find_if(lines.begin(), lines.end(), ends) - lines.begin());
}

// The position of the first line that begins with `beginning`; the number of lines if none does.
std::size_t FindLine(const std::vector<Text>& lines, const Text& beginning)
{
    const auto begins = [&beginning](const Text& line) { return line.rfind(beginning, 0) == 0; };
    return static_cast<std::size_t>(std::find_if(lines.begin(), lines.end(), begins) - lines.begin());
}

Text PlatformName()
{
    switch (SystemInfo::GetPlatform())
    {
    case SystemInfo::PlatformUnix:
        return L"Unix";
    case SystemInfo::PlatformMac:
        return L"Mac";
    case SystemInfo::PlatformWindows:
        return L"Windows";
    default:
        return L"unknown";
    }
}

} // namespace

Tour::Tour(const Text& dataFolder, const Text& logName) : m_strDataFolder(dataFolder), m_strLogName(logName)
{
}

bool Tour::Play()
{
    Load();
    Folders();
    System();
    Settings();
    Plugins();
    Mails();
    Dates();
    Notes();
    Archive();
    ChangedSetting();
    SavedState();
    Child();
    SecondStart();
    Restart();
    ShutDown();
    Log();
    PrintLine();
    PrintLine(ToText(m_uHolding) + L"/" + ToText(m_uSteps) + L" steps");
    return m_uHolding == m_uSteps;
}

void Tour::Load()
{
    Begin(L"The host opens a ToolkitSession and installs its log");
    m_host = std::make_unique<Host>();
    m_host->OpenLog(m_strLogName);
    m_strLogPath = m_host->GetLogPath();
    Say(L"the library registered its module, wxWidgets was started, the module made its singletons:");
    Say(L"logger, system information, version, path manager, restart, single instance");
    Say(L"version of the library: " + (*Version::s_pInstance)->ToString());
    Say(L"log file: " + m_strLogPath);
    End(LibModuleManager::s_pInstance != nullptr && ILogger::s_pInstance != nullptr &&
        SystemInfo::s_pInstance != nullptr && Version::s_pInstance != nullptr &&
        PathManager::s_pInstance != nullptr && RestartManagment::s_pInstance != nullptr &&
        SingleApplicationInstance::s_pInstance != nullptr);
}

void Tour::Folders()
{
    Begin(L"The path manager knows where everything lies");
    const smart_ptr<PathManager> paths = *PathManager::s_pInstance;
    Say(L"application:      " + Join(paths->GetApplicationPath(), paths->GetApplicationName()));
    Say(L"plug-ins:         " + paths->GetPluginsPath());
    Say(L"application data: " + paths->GetApplicationDataPath());
    Say(L"documents:        " + paths->GetDocumentsPath());
    Say(L"unique instance:  " + paths->GetUniqueInstanceName());
    End(PathManager::DirExists(paths->GetApplicationDataPath()) &&
        PathManager::DirExists(paths->GetPluginsPath()) &&
        !paths->GetUniqueInstanceName().Contains(paths->GetPathSeparator()));
}

void Tour::System()
{
    Begin(L"The system around it");
    const bool littleEndian = SystemInfo::GetEndian() == SystemInfo::EndianLittle;
    Say(PlatformName() + L", version " + ToText(SystemInfo::GetOSMajorVersion()) + L"." +
        ToText(SystemInfo::GetOSMinorVersion()) + L", " +
        (littleEndian ? L"little-endian" : L"not little-endian"));
    Say(L"tick count: " + ToText(GetTickCount()) + L" ms");
    End(SystemInfo::GetPlatform() != SystemInfo::PlatformUnknown &&
        SystemInfo::GetEndian() != SystemInfo::EndianUnknown);
}

void Tour::Settings()
{
    const Text path = Join(m_strDataFolder, L"desk.ini");
    Begin(L"The host reads its settings from " + path);
    m_settings = std::make_unique<IniFile>(path);
    for (const wchar_t* const section : {L"tour", L"archive", L"mailtext", L"redact"})
    {
        std::vector<Text> keys;
        m_settings->GetKeyList(section, keys);
        for (const Text& key : keys)
            Say(L"[" + Text(section) + L"] " + key + L" = " +
                m_settings->GetValue(section, key, Text::Empty()));
    }
    End(m_settings->IsLoaded() && m_settings->HasValue(L"mailtext", L"preview"));
}

void Tour::Plugins()
{
    Begin(L"The plug-ins are loaded; each registers a module, which is initialised at once");
    m_host->LoadPlugins();
    std::vector<Text> problems;
    m_host->Configure(*m_settings, problems);
    for (const Plugin* plugin : m_host->GetPlugins())
        Say(plugin->GetName());
    for (const Text& problem : problems)
        Say(L"a setting is left out: " + problem);
    End(m_host->GetPlugins().size() == 2 && problems.size() == 1 && problems.front().Contains(L"unfinished"));
}

void Tour::Mails()
{
    const Text path = Join(m_strDataFolder, L"mails");
    Begin(L"Plug-in mailtext reads the mails in " + path);
    End(WorkOnFolder(L"mailtext", path));
}

void Tour::Dates()
{
    Begin(L"The same date in the short forms of five locales, which LC_ALL names, and relative to now");
    std::vector<Text> report;
    const bool five = ShowInFiveLocales(report);
    const bool relative = ShowRelativeToNow(report);
    for (const Text& line : report)
        Say(line);
    End(five && relative);
}

void Tour::Notes()
{
    const Text path = Join(m_strDataFolder, L"notes");
    Begin(L"Plug-in redact hides what its patterns find in " + path);
    const bool done = WorkOnFolder(L"redact", path);
    const std::vector<Text> lines = LinesOf(Join(m_host->GetOutputFolder(), L"members.txt"));
    const bool hidden = std::none_of(lines.begin(), lines.end(),
                                     [](const Text& line) { return line.Contains(L"nora.lindqvist@"); });
    End(done && hidden && FindMessage(lines, L"[telephone]") < lines.size());
}

bool Tour::WorkOnFolder(const Text& plugin, const Text& path) const
{
    std::vector<Text> names;
    Directory(path).GetFiles(Text(), names);
    std::sort(names.begin(), names.end());
    Plugin* const worker = m_host->FindPlugin(plugin);
    bool all = !names.empty() && worker != nullptr;
    for (std::size_t i = 0; worker != nullptr && i < names.size(); ++i)
        all = Work(*worker, Join(path, names[i])) && all;
    return all;
}

void Tour::Archive()
{
    const Text path = Join(m_strDataFolder, m_settings->GetValue(L"archive", L"file", Text::Empty()));
    const Text pattern = m_settings->GetValue(L"archive", L"pattern", Text::Empty());
    Begin(L"Mails are taken from the ZIP archive " + path + L", those that \"" + pattern + L"\" keeps");
    std::vector<Text> report;
    bool all = ExtractFiles(path, pattern, m_host->GetOutputFolder(), m_mails, report);
    for (const Text& line : report)
        Say(line);
    Plugin* const mailtext = m_host->FindPlugin(L"mailtext");
    for (const Text& mail : m_mails)
        all = mailtext != nullptr && Work(*mailtext, mail) && all;
    End(all && m_mails.size() == 2);
}

void Tour::ChangedSetting()
{
    Begin(L"A changed setting changes what is shown: [mailtext] preview = 12");
    const Text path = Join(m_host->GetOutputFolder(), L"changed.ini");
    FFile file;
    file.Open(path, L"wb");
    file.Write(L"[mailtext]\npreview = 12\n");
    file.Close();
    Plugin* const mailtext = m_host->FindPlugin(L"mailtext");
    std::vector<Text> before;
    std::vector<Text> after;
    if (mailtext != nullptr && !m_mails.empty())
    {
        mailtext->Work(m_mails.front(), m_host->GetOutputFolder(), before);
        std::vector<Text> problems;
        mailtext->Configure(IniFile(path), problems);
        mailtext->Work(m_mails.front(), m_host->GetOutputFolder(), after);
        mailtext->Configure(*m_settings, problems);
    }
    const bool both = before.size() == 3 && after.size() == 3;
    Say(both ? L"before: " + before.back() : Text(L"nothing was read"));
    Say(both ? L"after:  " + after.back() : Text());
    End(both && before.front() == after.front() && after.back().size() < before.back().size());
}

void Tour::SavedState()
{
    const Text path = Join(m_host->GetOutputFolder(), L"state.bin");
    Begin(L"The host saves its state through the serializer and reads it back");
    State saved;
    saved.m_uRuns = 1;
    saved.m_names = m_mails;
    const StreamResult written = FSOutputSerializer(path).Serialize(saved);
    State read;
    const StreamResult readResult = FSInputSerializer(path).Deserialize(read);
    Say(path + L", " + ToText(FSStream(path, FSStream::ModeRead).Length()) + L" bytes: " +
        ToText(read.m_uRuns) + L" run, " + ToText(read.m_names.size()) + L" mails");
    End(!IsError(written) && !IsError(readResult) && read.m_uRuns == saved.m_uRuns &&
        read.m_names == saved.m_names);
}

void Tour::Child()
{
    Begin(L"A child process: desk starts itself, hands over a text and waits");
    const smart_ptr<PathManager> paths = *PathManager::s_pInstance;
    const Text executable = Join(paths->GetApplicationPath(), paths->GetApplicationName());
    const Text answer = Join(m_host->GetOutputFolder(), L"child.txt");
    const Text greeting = L"Grüße aus dem Kindprozess";
    const Text arguments = L"-child \"" + answer + L"\" -text \"" + greeting + L"\"";
    const int process = SystemInfo::StartProcess(executable, arguments, true);
    const std::vector<Text> lines = LinesOf(answer);
    Say(L"process " + ToText(static_cast<unsigned long long>(process)) + L" wrote: " +
        (lines.empty() ? Text(L"nothing") : lines.front()));
    TOOLKIT_LOG(LogSeverity::Info) << L"desk: child process " << process << L" has ended";
    End(lines.size() == 1 && lines.front() == greeting);
}

void Tour::SecondStart()
{
    Begin(L"A second start hands its file to the first desk, which indexes the bundle in the background");
    const smart_ptr<PathManager> paths = *PathManager::s_pInstance;
    m_processes = std::make_unique<Processes>(Join(paths->GetApplicationPath(), paths->GetApplicationName()),
                                              Join(m_host->GetOutputFolder(), L"processes"));
    const Text mail = Join(Join(m_strDataFolder, L"mails"), L"1-garden.eml");
    // The index waits, so that what is printed is always in the same order.
    const bool held = m_processes->Start(L"first", {L"-data", m_strDataFolder, L"-log",
                                                    m_strLogName + L"-first", L"-paused"}) &&
                      m_processes->WaitForLines(L"first", L"the index is paused", 1);
    SayNews(L"first");
    const bool opened = held && m_processes->Run(L"second", {L"-open", mail}) &&
                        m_processes->WaitForLines(L"first", L"opened", 1);
    SayNews(L"second");
    SayNews(L"first");
    const bool indexed = opened && m_processes->Run(L"third", {L"-send", L"resume"}) &&
                         m_processes->WaitForLines(L"first", L"6 mails are indexed", 1);
    SayNews(L"third");
    SayNews(L"first");
    const std::vector<Text> lines = m_processes->GetLines(L"first");
    End(indexed && FindLine(lines, L"opened 1-garden.eml") < FindLine(lines, L"6 mails are indexed") &&
        FindLine(m_processes->GetLines(L"second"), L"handed to the first desk: open 1-garden.eml") == 0);
}

void Tour::Restart()
{
    Begin(L"The first desk restarts itself; the new one sees the lock of the restart and takes over");
    const std::size_t before = m_processes->GetLines(L"first").size();
    const bool restarted = m_processes->Run(L"fourth", {L"-send", L"restart"}) &&
                           m_processes->WaitForLines(L"first", L"the index is paused", 2);
    SayNews(L"fourth");
    SayNews(L"first");
    const bool ended =
        restarted && m_processes->Run(L"fifth", {L"-send", L"quit"}) && m_processes->WaitForEnd(2);
    SayNews(L"fifth");
    SayNews(L"first");
    const std::vector<Text> lines = m_processes->GetLines(L"first");
    m_processes.reset();
    End(ended && FindLine(lines, L"ends, and starts again") == before &&
        FindLine(lines, L"restarted: the lock was there and is removed") == before + 1 &&
        lines.back() == L"ends");
}

void Tour::ShutDown()
{
    Begin(L"Shutdown: modules are released in reverse order, then wxWidgets stops");
    m_host->ShutDown();
    const std::vector<Text> lines = LinesOf(m_strLogPath);
    const std::size_t first = FindMessage(lines, L"redact: released");
    const std::size_t second = FindMessage(lines, L"mailtext: released");
    Say(L"redact, mailtext, toolkit");
    End(LibModuleManager::s_pInstance == nullptr && ILogger::s_pInstance == nullptr && first < second &&
        second < lines.size());
}

void Tour::Log()
{
    Begin(L"One log holds the lines of the host and of its plug-ins: severity, tick, source line, function, "
          L"message");
    const std::vector<Text> lines = LinesOf(m_strLogPath);
    Say(m_strLogPath + L", " + ToText(lines.size()) + L" lines, the last ones:");
    const std::size_t shown = m_settings->GetUint32(L"tour", L"loglines", s_uShownLogLines);
    for (std::size_t i = lines.size() - std::min(lines.size(), shown); i < lines.size(); ++i)
        Say(L"  " + lines[i]);
    End(FindMessage(lines, L"desk: shutting down") < lines.size() &&
        FindMessage(lines, L"mailtext: ready") < FindMessage(lines, L"redact: ready") &&
        FindMessage(lines, L"redact: ready") < lines.size());
}

bool Tour::Work(Plugin& plugin, const Text& path) const
{
    const Text name = FileName(path);
    std::vector<Text> report;
    const bool done = plugin.Takes(name) && plugin.Work(path, m_host->GetOutputFolder(), report);
    Say(name + (done ? L":" : L": cannot be worked on"));
    for (const Text& line : report)
        Say(L"  " + line);
    return done && !report.empty();
}

void Tour::SayNews(const Text& process)
{
    const std::vector<Text> lines = m_processes->GetLines(process);
    for (std::size_t& said = m_said[process]; said < lines.size(); ++said)
        Say(process + L": " + lines[said]);
}

void Tour::Begin(const Text& title)
{
    ++m_uSteps;
    PrintLine();
    PrintLine(ToText(m_uSteps) + L". " + title);
}

void Tour::Say(const Text& line) const
{
    PrintLine(L"     " + line);
}

void Tour::End(bool holds)
{
    m_uHolding += holds ? 1 : 0;
    PrintLine(holds ? L"   ok" : L"   FAILED");
}

} // namespace Desk
