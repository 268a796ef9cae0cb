// SPDX-License-Identifier: MIT
#include "Application.h"

#include "toolkit/app/GetTickCount.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/app/IPCConnectionEvent.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogStatement.h"
#include "toolkit/threading/BackgroundOperationHandler.h"
#include "toolkit/threading/Thread.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

// How long a start waits for a desk that begins or ends just now.
const unsigned int s_uPatience = 20 * 1000;
const unsigned int s_uTryInterval = 50;

const wchar_t* const c_strNoCommand = L"show";

// The channel lies in the user's own folder, beside what else desk keeps there.
Text Channel()
{
    return Join((*PathManager::s_pInstance)->GetApplicationDataPath(), L"desk.ipc");
}

// What this start would have the desk that runs do.
Text CommandOf(const Options& options)
{
    if (!options.m_strSend.empty())
        return options.m_strSend;
    return options.m_strOpen.empty() ? Text(c_strNoCommand) : Text(L"open " + options.m_strOpen);
}

class CommandListener : public IPCConnectionEvent
{
public:
    explicit CommandListener(Application& application) : m_application(application) {}

    void OnExecuteEvent(const Text& command) override { m_application.Execute(command); }

private:
    Application& m_application;
};

class IndexListener : public BackgroundOperationHandler
{
public:
    IndexListener(const Index& index, View& view) : m_index(index), m_view(view) {}

    void OnOperationStarted() override
    {
        m_view.Tell(m_index.IsPaused() ? L"the index is paused before the first mail"
                                       : L"the mails are indexed in the background");
    }

    void OnOperationEnded() override
    {
        const Text count = ToText(m_index.GetDocuments().size());
        m_view.ShowIndex();
        m_view.Tell(m_index.IsComplete() ? count + L" mails are indexed"
                                         : L"the index was stopped after " + count + L" mails");
    }

private:
    const Index& m_index;
    View& m_view;
};

} // namespace

Application::Application(const Options& options, View& view) : m_options(options), m_view(view) {}

Application::~Application()
{
    End();
}

Application::Start Application::Begin()
{
    const Start start = FindFirst(CommandOf(m_options));
    if (start != Start::First)
        return start;
    if (!m_options.m_strSend.empty())
        return Start::Failed;
    m_bBegun = true;
    m_host.OpenLog(m_options.m_strLog);
    RestartManagment::s_strExecutableFilename = (*PathManager::s_pInstance)->GetApplicationName();
    if (m_options.m_bRestart)
        TakeOver();
    m_host.LoadPlugins();
    const Text data = m_options.m_strData.empty() ? Text() : Absolute(m_options.m_strData);
    const IniFile settings(Join(data, L"desk.ini"));
    std::vector<Text> problems;
    m_host.Configure(settings, problems);
    m_index = std::make_unique<Index>(m_host, data, settings, m_options.m_bPaused);
    if (!m_options.m_strOpen.empty())
        Open(m_options.m_strOpen);
    Listen();
    StartIndex();
    return start;
}

Application::Start Application::FindFirst(const Text& command)
{
    const unsigned long long start = GetTickCount();
    smart_ptr<SingleApplicationInstance>& instance = *SingleApplicationInstance::s_pInstance;
    while (instance->IsAlreadyRunning())
    {
        // The new process of a restart comes while the old one ends; anybody else may come while the first
        // one begins.
        if (!m_options.m_bRestart && IPCClient::Connect(Channel(), command))
            return Start::HandedOver;
        if (GetTickCount() - start > s_uPatience)
            return Start::Failed;
        Thread::Sleep(s_uTryInterval);
        // Who was first when the object was made says nothing of now.
        instance = new SingleApplicationInstance;
    }
    return Start::First;
}

void Application::TakeOver()
{
    RestartManagment::WaitingForPreviousProcessFinish();
    const bool locked = RestartManagment::IsLocked();
    RestartManagment::RemoveLock();
    m_view.Tell(!locked                         ? L"started as a restart, but there is no lock"
                : !RestartManagment::IsLocked() ? L"restarted: the lock was there and is removed"
                                                : L"restarted: the lock cannot be removed");
    RestartManagment::RestartProcessFinish();
}

void Application::Listen()
{
    m_server = std::make_unique<IPCServer>(Channel());
    m_server->AddListener(new CommandListener(*this));
    m_view.Tell(m_server->Run() ? L"takes commands" : L"takes no commands");
}

void Application::StartIndex()
{
    m_index->AddListener(new IndexListener(*m_index, m_view));
    m_thread = std::make_unique<IndexThread>(*m_index);
    m_thread->Run();
}

void Application::Execute(const Text& command)
{
    TOOLKIT_LOG(LogSeverity::Info) << L"desk: command " << command;
    const std::size_t space = command.find(L' ');
    const Text verb = command.substr(0, space);
    const Text argument = space == command.npos ? Text() : Text(command.substr(space + 1));
    if (verb == L"open")
        Open(argument);
    else if (verb == L"plug-ins")
        ShowPlugins();
    else if (verb == L"dump")
        Dump(argument);
    else if (verb == L"picture")
        m_view.Tell(m_view.SavePicture(argument) ? L"the picture is saved" : L"there is no picture");
    else if (verb == L"pause")
        m_index->Pause();
    else if (verb == L"resume")
        m_index->Resume();
    else if (verb == L"restart" || verb == L"quit")
    {
        m_bRestart = verb == L"restart";
        m_view.Leave();
    }
    else if (verb == c_strNoCommand)
        m_view.Tell(L"started once more");
    else
        TOOLKIT_LOG(LogSeverity::Warning) << L"desk: there is no such command";
}

void Application::Open(const Text& path)
{
    Document document;
    if (m_host.Read(path, document))
        m_view.Show(document);
    else
        m_view.Tell(L"cannot open " + FileName(path));
}

void Application::ShowPlugins() const
{
    Text names;
    for (const Plugin* plugin : m_host.GetPlugins())
        names += plugin->GetName() + L"\n";
    m_view.Show({(*PathManager::s_pInstance)->GetPluginsPath(), L"Plug-ins", Text(), Text(), names, 0});
}

void Application::Dump(const Text& path) const
{
    std::vector<Text> lines;
    m_view.Describe(lines);
    lines.push_back(L"end");
    FFile file;
    if (!file.Open(path, L"wb"))
        return;
    for (const Text& line : lines)
        file.Write(line + L"\n");
}

void Application::End()
{
    if (m_bEnded)
        return;
    m_bEnded = true;
    m_server.reset();
    m_thread.reset();
    m_index.reset();
    if (m_bBegun)
        m_view.Tell(m_bRestart ? L"ends, and starts again" : L"ends");
    if (m_bRestart)
        StartAgain();
    m_host.ShutDown();
}

void Application::StartAgain()
{
    std::vector<const wchar_t*> arguments;
    for (const Text& argument : m_options.m_arguments)
        arguments.push_back(argument.c_str());
    RestartManagment::ActivateRestartProcess(static_cast<int>(arguments.size()), arguments.data());
}

std::vector<Document> Application::GetDocuments() const
{
    return m_index == nullptr ? std::vector<Document>() : m_index->GetDocuments();
}

} // namespace Desk
