#include "Tour.h"

#include <algorithm>

#include "Text.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

const std::size_t s_uShownLogLines = 8;

std::vector<Text> ReadLines(const Text& path)
{
    std::vector<Text> lines;
    TextFile file;
    if (file.Open(path))
        for (Text line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
            lines.push_back(line);
    return lines;
}

// The position of the first line that ends in `message`; the number of lines if none does.
std::size_t FindMessage(const std::vector<Text>& lines, const Text& message)
{
    const auto ends = [&message](const Text& line)
    { return line.size() >= message.size() && line.substr(line.size() - message.size()) == message; };
    return static_cast<std::size_t>(std::find_if(lines.begin(), lines.end(), ends) - lines.begin());
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
    Plugins();
    for (const Plugin* plugin : m_host->GetPlugins())
        Work(*plugin, plugin->GetName() == L"mailtext" ? L"mails" : L"notes");
    Child();
    ShutDown();
    Log();
    PrintLine();
    PrintLine(ToText(m_uHolding) + L"/" + ToText(m_uSteps) + L" steps");
    return m_uHolding == m_uSteps;
}

void Tour::Load()
{
    Begin(L"The host opens a ToolkitSession and installs its log");
    m_host = std::make_unique<Host>(m_strLogName);
    m_strLogPath = m_host->GetLogPath();
    Say(L"the library registered its module, the base library was started, the module made its singletons:");
    Say(L"logger, system information, path manager");
    Say(L"log file: " + m_strLogPath);
    End(LibModuleManager::s_pInstance != nullptr && ILogger::s_pInstance != nullptr &&
        SystemInfo::s_pInstance != nullptr && PathManager::s_pInstance != nullptr);
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

void Tour::Plugins()
{
    Begin(L"The plug-ins are loaded; each registers a module, which is initialised at once");
    m_host->LoadPlugins();
    for (const Plugin* plugin : m_host->GetPlugins())
        Say(plugin->GetName());
    End(m_host->GetPlugins().size() == 2);
}

void Tour::Work(const Plugin& plugin, const Text& folder)
{
    const Text path = Join(m_strDataFolder, folder);
    Begin(L"Plug-in " + plugin.GetName() + L" works on " + path);
    std::vector<Text> names;
    Directory(path).GetFiles(Text(), names);
    std::sort(names.begin(), names.end());
    bool all = !names.empty();
    for (const Text& name : names)
    {
        std::vector<Text> report;
        const auto worker = std::find_if(m_host->GetPlugins().begin(), m_host->GetPlugins().end(),
                                         [&name](const Plugin* candidate) { return candidate->Takes(name); });
        const bool done = worker != m_host->GetPlugins().end() && *worker == &plugin &&
                          (*worker)->Work(Join(path, name), m_host->GetOutputFolder(), report);
        Say(name + (done ? L":" : L": cannot be worked on"));
        for (const Text& line : report)
            Say(L"  " + line);
        all = all && done && !report.empty();
    }
    End(all);
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
    const std::vector<Text> lines = ReadLines(answer);
    Say(L"process " + ToText(static_cast<unsigned long long>(process)) + L" wrote: " +
        (lines.empty() ? Text(L"nothing") : lines.front()));
    TOOLKIT_LOG(LogSeverity::Info) << L"desk: child process " << process << L" has ended";
    End(lines.size() == 1 && lines.front() == greeting);
}

void Tour::ShutDown()
{
    Begin(L"Shutdown: modules are released in reverse order, then the base library stops");
    m_host->ShutDown();
    const std::vector<Text> lines = ReadLines(m_strLogPath);
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
    const std::vector<Text> lines = ReadLines(m_strLogPath);
    Say(m_strLogPath + L", " + ToText(lines.size()) + L" lines, the last ones:");
    for (std::size_t i = lines.size() - std::min(lines.size(), s_uShownLogLines); i < lines.size(); ++i)
        Say(L"  " + lines[i]);
    End(FindMessage(lines, L"desk: shutting down") < lines.size() &&
        FindMessage(lines, L"mailtext: ready") < FindMessage(lines, L"redact: ready") &&
        FindMessage(lines, L"redact: ready") < lines.size());
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
