// SPDX-License-Identifier: MIT
// A host that restarts itself, as often as the variable TOOLKIT_TEST_RESTARTS says, and that hands its own
// arguments on. It does so on a command of its own server, within the pump that delivers it. Each process
// writes what it saw into a file of the folder TOOLKIT_TEST_REPORTS, when everything else is done: "old",
// then "restarted1", "restarted2" and so on.
//   RestartItself [<argument>...]

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/Toolkit.h"

using Toolkit::ILogger;
using Toolkit::RestartManagment;
using Toolkit::TString;
using Toolkit::UTF8;

namespace
{

// Adds what is logged to a text that outlives it.
class TextLogger : public ILogger
{
public:
    explicit TextLogger(TString<wchar_t>& text) : ILogger(Toolkit::LogSeverity::Info), m_text(text) {}
    void Write(const TString<wchar_t>& text) override { m_text += text; }

private:
    TString<wchar_t>& m_text;
};

std::string Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

void TakeOver(std::string& report)
{
    RestartManagment::WaitingForPreviousProcessFinish();
    report += RestartManagment::IsLocked() ? "locked\n" : "not locked\n";
    RestartManagment::RemoveLock();
    report += RestartManagment::IsLocked() ? "still locked\n" : "";
    RestartManagment::RestartProcessFinish();
}

void RestartOnceMore(int argc, const std::vector<TString<wchar_t>>& arguments, std::string& report)
{
    const int left = std::atoi(Variable("TOOLKIT_TEST_RESTARTS").c_str());
    if (left <= 0)
        return;
    setenv("TOOLKIT_TEST_RESTARTS", std::to_string(left - 1).c_str(), 1);
    const int done = std::atoi(Variable("TOOLKIT_TEST_DONE").c_str());
    setenv("TOOLKIT_TEST_DONE", std::to_string(done + 1).c_str(), 1);
    std::vector<const wchar_t*> vector;
    for (const TString<wchar_t>& argument : arguments)
        vector.push_back(argument.c_str());
    report += RestartManagment::ActivateRestartProcess(argc, vector.data()) ? "started\n" : "not started\n";
}

// A listener that restarts the host once.
class Restarter : public Toolkit::IPCConnectionEvent
{
public:
    explicit Restarter(std::function<void()> restart) : m_restart(std::move(restart)) {}
    void OnExecuteEvent(const TString<wchar_t>&) override { m_restart(); }

private:
    const std::function<void()> m_restart;
};

// False when the server does not run, or does not hear.
bool OnACommandOfItsOwn(const std::string& path, const std::function<void()>& restart)
{
    const TString<wchar_t> service = UTF8::ToUNICODE(path);
    Toolkit::EventPump pump;
    Toolkit::IPCServer server(service);
    bool heard = false;
    server.AddListener(Toolkit::smart_ptr<Toolkit::IPCConnectionEvent>(new Restarter(
        [&]
        {
            restart();
            heard = true;
            pump.Stop();
        })));
    return server.Run() && Toolkit::IPCClient::Connect(service, L"restart") && pump.Run(60000) && heard;
}

std::size_t OpenDescriptors()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

} // namespace

int main(int argc, char** argv)
{
    std::string report = "descriptors " + std::to_string(OpenDescriptors()) + "\n";
    const std::string done = Variable("TOOLKIT_TEST_DONE");
    std::vector<TString<wchar_t>> arguments;
    for (int i = 0; i < argc; ++i)
    {
        arguments.push_back(UTF8::ToUNICODE(TString<char>(argv[i])));
        report += "[" + std::string(argv[i]) + "]\n";
    }
    RestartManagment::s_strExecutableFilename = arguments[0];
    TString<wchar_t> log;
    {
        const Toolkit::ToolkitSession session;
        ILogger::SetLogger(Toolkit::smart_ptr<ILogger>(new TextLogger(log)));
        if (std::strcmp(argv[argc - 1], "-restart") == 0)
            TakeOver(report);
        const std::string service = Variable("TOOLKIT_TEST_REPORTS") + "/s" + done;
        if (!OnACommandOfItsOwn(service, [&] { RestartOnceMore(argc, arguments, report); }))
            report += "not served\n";
    }
    const std::string path = Variable("TOOLKIT_TEST_REPORTS") + (done.empty() ? "/old" : "/restarted" + done);
    std::ofstream(path + ".part") << report << UTF8::ToUTF8(log);
    std::filesystem::rename(path + ".part", path);
    return 0;
}
