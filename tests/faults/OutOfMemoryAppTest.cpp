// SPDX-License-Identifier: MIT
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/faults/OutOfMemory.h"
#include "tests/support/InChild.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/OwnNetwork.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/CmdLineOption.h"
#include "toolkit/app/CmdLineParser.h"
#include "toolkit/app/DynamicLibrary.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/app/GetTickCount.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/app/IPCConnectionEvent.h"
#include "toolkit/app/IPCServer.h"
#include "toolkit/app/Network.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/encoding/UTF8.h"

using namespace Toolkit;
using ToolkitTest::Attempt;

namespace
{
const TString<wchar_t> c_strLine(L"-name \"a value that is too long for the string object\" -other stray");

// Keeps the commands that it is told.
class Recorder : public IPCConnectionEvent
{
public:
    explicit Recorder(std::vector<TString<wchar_t>>& heard) : m_heard(heard) {}

    void OnExecuteEvent(const TString<wchar_t>& command) override { m_heard.push_back(command); }

private:
    std::vector<TString<wchar_t>>& m_heard;
};

// A restart that is traced. Once a process was started there is a lock.
void TestActivation(const Attempt& attempt)
{
    ToolkitTest::Record record;
    const ToolkitTest::InstalledLogger logger(new ToolkitTest::RecordingLogger(record));
    const wchar_t* arguments[] = {L"tool", L"an-argument-that-is-too-long-for-the-string-object"};
    const bool activated =
        attempt([&] { EXPECT_TRUE(RestartManagment::ActivateRestartProcess(2, arguments)); });
    int status = 0;
    const bool started = waitpid(-1, &status, 0) > 0;
    EXPECT_TRUE(started || !activated);
    EXPECT_TRUE(RestartManagment::IsLocked() || !started);
    RestartManagment::RemoveLock();
    EXPECT_FALSE(RestartManagment::IsLocked());
}

// In a network where the host refuses.
void FailTheNetwork()
{
    const ToolkitSession session;
    ToolkitTest::FailEachAllocation({
        {"Network::TestNetwork",
         [](const Attempt& attempt) { attempt([] { EXPECT_FALSE(Network::TestNetwork(1)); }); }},
        {"Network::TestNetwork(on another thread)", [](const Attempt& attempt)
         { std::thread([&] { attempt([] { EXPECT_FALSE(Network::TestNetwork(1)); }); }).join(); }},
    });
}

} // namespace

TEST(OutOfMemory, IsSurvivedByTheCommandLine)
{
    const char* const narrow[] = {"program", "-name", "a value that is too long for the string object"};
    const wchar_t* const wide[] = {L"program", L"-name", L"a value that is too long for the string object"};
    ToolkitTest::FailEachAllocation({
        {"CmdLineParser::CmdLineParser",
         [&](const Attempt& attempt)
         {
             attempt([&] { CmdLineParser(3, const_cast<const char**>(narrow)); });
             attempt([&] { CmdLineParser(3, const_cast<const wchar_t**>(wide)); });
             attempt([&] { const CmdLineParser parser(c_strLine); });
             attempt([&] { const CmdLineParser parser(TString<char>("-name value -other")); });
         }},
        {"CmdLineParser::Tokenize",
         [](const Attempt& attempt)
         {
             std::vector<TString<wchar_t>> tokens;
             attempt([&] { CmdLineParser::Tokenize(c_strLine, tokens); });
             CmdLineParser::Tokenize(c_strLine, tokens);
             EXPECT_EQ(4U, tokens.size());
         }},
        {"CmdLineOption", [](const Attempt& attempt)
         { attempt([] { const CmdLineOption option(L"A-LONG-NAME-FOR-AN-OPTION-THAT-IS", true); }); }},
        {"CmdLineParser::AddOption",
         [](const Attempt& attempt)
         {
             CmdLineParser parser(c_strLine);
             const smart_ptr<CmdLineOption> option(new CmdLineOption(L"name", true));
             const bool added = attempt([&] { EXPECT_TRUE(parser.AddOption(option)); });
             EXPECT_EQ(!added, parser.AddOption(option));
             EXPECT_TRUE(parser.Parse());
         }},
        {"CmdLineParser::Parse",
         [](const Attempt& attempt)
         {
             CmdLineParser parser(c_strLine);
             const smart_ptr<CmdLineOption> option(new CmdLineOption(L"name", true));
             parser.AddOption(option);
             attempt([&] { EXPECT_TRUE(parser.Parse()); });
             EXPECT_TRUE(parser.Parse());
             EXPECT_EQ(L"a value that is too long for the string object", option->GetValue());
         }},
    });
}

TEST(OutOfMemory, IsSurvivedByTheApplication)
{
    const ToolkitSession session;
    const ToolkitTest::TemporaryFolder folder;
    const TString<wchar_t> path = folder.Wide("data");
    ToolkitTest::FailEachAllocation({
        {"PathManager::PathManager",
         [](const Attempt& attempt) { attempt([] { const PathManager manager; }); }},
        {"PathManager::SetApplicationDataPath",
         [&](const Attempt& attempt)
         {
             PathManager manager;
             attempt([&] { manager.SetApplicationDataPath(path); });
             manager.SetApplicationDataPath(path);
             EXPECT_EQ(path, manager.GetApplicationDataPath());
         }},
        {"PathManager::SetApplicationRessourcesPath",
         [&](const Attempt& attempt)
         {
             PathManager manager;
             attempt([&] { manager.SetApplicationRessourcesPath(path); });
             manager.SetApplicationRessourcesPath(path);
             EXPECT_EQ(path + L"/plugins", manager.GetPluginsPath());
         }},
        {"PathManager::SetMassStorageDataPath, SetCdRomPath",
         [&](const Attempt& attempt)
         {
             PathManager manager;
             attempt([&] { manager.SetMassStorageDataPath(path); });
             attempt([&] { manager.SetCdRomPath(path); });
         }},
        {"PathManager::GetDataDir, GetUserLocalDataDir, GetTempDir",
         [](const Attempt& attempt)
         {
             const smart_ptr<PathManager> manager = *PathManager::s_pInstance;
             attempt([&] { manager->GetDataDir(); });
             attempt([&] { manager->GetUserLocalDataDir(); });
             attempt([&] { EXPECT_EQ(L"/tmp", manager->GetTempDir()); });
         }},
        {"PathManager::AppendPath, SplitPath, Exists",
         [&](const Attempt& attempt)
         {
             TString<wchar_t> result(path);
             TString<wchar_t> parts[4];
             attempt([&] { PathManager::AppendPath(result, c_strLine); });
             attempt([&] { PathManager::AppendPath(result, path, c_strLine); });
             attempt([&] { PathManager::SplitPath(path, parts[0], parts[1], parts[2], parts[3]); });
             attempt([&] { PathManager::Exists(path); });
             attempt([&] { PathManager::FileExists(path); });
             attempt([&] { PathManager::DirExists(path); });
         }},
        {"SystemInfo, GetTickCount",
         [](const Attempt& attempt)
         {
             attempt([] { SystemInfo::GetOSMajorVersion(); });
             attempt([] { SystemInfo::GetOperatingSystemId(); });
             attempt([] { SystemInfo::GetPlatform(); });
             attempt([] { GetTickCount(); });
         }},
        {"SystemInfo::StartProcess", [](const Attempt& attempt)
         { attempt([] { EXPECT_LT(0, SystemInfo::StartProcess(L"/bin/true", c_strLine, true)); }); }},
        {"Version",
         [](const Attempt& attempt)
         {
             attempt(
                 []
                 { EXPECT_EQ(L"1.22222222.333333333.44", Version(L"1.22222222.333333333.44").ToString()); });
             attempt([] { EXPECT_EQ(0, Version(1, 2, 3, 4).CompareVersion(L"1.2.3.4")); });
             attempt([] { delete Version::Create(); });
         }},
        {"DynamicLibrary",
         [](const Attempt& attempt)
         {
             attempt(
                 []
                 {
                     DynamicLibrary library(L"libz.so.1");
                     library.GetSymbol(L"a symbol of a long name that is not there");
                     DynamicLibrary::Unload(library.Detach());
                 });
             attempt([] { const DynamicLibrary library(L"/no/such/library/at/all.so"); });
         }},
    });
}

// Without a path manager there is nothing that could be started.
TEST(OutOfMemory, IsSurvivedByRestart)
{
    const ToolkitTest::TemporaryFolder folder;
    const ToolkitTest::ScopedEnvironment temporary("TMPDIR", folder.Path().c_str());
    RestartManagment::s_strExecutableFilename = L"/opt/a name that is too long for the string object.bin";
    ToolkitTest::FailEachAllocation({
        {"RestartManagment::GetAppName, GetTempDir",
         [&](const Attempt& attempt)
         {
             attempt(
                 [] {
                     EXPECT_EQ(L"a name that is too long for the string object",
                               RestartManagment::GetAppName());
                 });
             attempt([&] { EXPECT_EQ(folder.Wide(), RestartManagment::GetTempDir()); });
         }},
        {"RestartManagment::GetLockFileName, IsLocked, RemoveLock",
         [](const Attempt& attempt)
         {
             ToolkitTest::WriteBytes(UTF8::ToUTF8(RestartManagment::GetLockFileName()), "");
             attempt([] { RestartManagment::GetLockFileName(); });
             attempt([] { EXPECT_TRUE(RestartManagment::IsLocked()); });
             attempt([] { RestartManagment::RemoveLock(); });
             RestartManagment::RemoveLock();
             EXPECT_FALSE(RestartManagment::IsLocked());
         }},
        {"RestartManagment::ActivateRestartProcess", TestActivation},
        {"RestartManagment::WaitingForPreviousProcessFinish, RestartProcessFinish",
         [](const Attempt& attempt)
         {
             attempt([] { EXPECT_FALSE(RestartManagment::WaitingForPreviousProcessFinish()); });
             attempt([] { EXPECT_FALSE(RestartManagment::RestartProcessFinish()); });
         }},
    });
    RestartManagment::s_strExecutableFilename.clear();
}

TEST(OutOfMemory, IsSurvivedByTheNetwork)
{
    const ToolkitTest::TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::InChild(
        [&]() -> ToolkitTest::ChildAnswer
        {
            const TString<char> host = UTF8::ToUTF8(Network::c_strProbedHost);
            if (!ToolkitTest::EnterOwnNetwork(folder.Path(), "127.0.0.1 " + host + "\n"))
                return ToolkitTest::NotAllowed("a network of its own");
            FailTheNetwork();
            return !testing::Test::HasFailure();
        }));
}

TEST(OutOfMemory, IsSurvivedBySingleInstanceAndIPC)
{
    const ToolkitTest::TemporaryFolder folder;
    const ToolkitTest::ScopedEnvironment home("HOME", folder.Path().c_str());
    const ToolkitSession session;
    const TString<wchar_t> service =
        folder.Wide("a channel of a name that is too long for the string object");
    ToolkitTest::FailEachAllocation({
        {"SingleApplicationInstance",
         [](const Attempt& attempt)
         {
             attempt([] { EXPECT_FALSE(SingleApplicationInstance().IsAlreadyRunning()); });
             EXPECT_FALSE(SingleApplicationInstance().IsAlreadyRunning());
         }},
        {"IPCServer::SendExecuteEvent",
         [&](const Attempt& attempt)
         {
             std::vector<TString<wchar_t>> heard;
             IPCServer server(service);
             server.AddListener(new Recorder(heard));
             const bool sent = attempt([&] { server.SendExecuteEvent(c_strLine); });
             EXPECT_EQ(sent ? 1U : 0U, heard.size());
             server.SendExecuteEvent(c_strLine);
             EXPECT_EQ(c_strLine, heard.back());
         }},
        {"IPCServer, IPCClient, EventPump",
         [&](const Attempt& attempt)
         {
             std::vector<TString<wchar_t>> heard;
             EventPump pump;
             {
                 IPCServer server(service);
                 server.AddListener(new Recorder(heard));
                 attempt([&] { server.Run(); });
                 ASSERT_TRUE(server.Run());
                 attempt([&] { IPCClient::Connect(service, c_strLine, 1000); });
                 attempt([&] { pump.Run(0); });
                 ASSERT_TRUE(IPCClient::Connect(service, L"last", 5000));
                 while (heard.empty() || heard.back() != L"last")
                     pump.Run(10);
             }
             attempt([&] { const IPCServer other(service); });
         }},
    });
}
