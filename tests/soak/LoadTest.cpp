// SPDX-License-Identifier: MIT
#include <cerrno>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/soak/Loads.h"
#include "tests/support/ForkedCopy.h"
#include "tests/support/LogFile.h"
#include "tests/support/Rounds.h"
#include "toolkit/app/IPCServer.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/threading/Threadable.h"

using namespace Toolkit;
using namespace ToolkitTest;

// The same load over and over, for as long as tests/soak/run wants it: support/Rounds.h says how. The
// variable that a test names tells how much it does in all.

namespace
{

const unsigned int s_uPatience = 60000;
const unsigned int s_uClientProcesses = 6;
const unsigned int s_uClientThreads = 2;
const unsigned int s_uClients = s_uClientProcesses + s_uClientThreads;
const unsigned int s_uThreads = 4;

void LogLines(unsigned int lines)
{
    for (unsigned int line = 0; line < lines; ++line)
        TOOLKIT_LOG(LogSeverity::Info) << L"line " << line;
}

class Task : public Threading::IRunnable
{
public:
    explicit Task(std::function<void()> work) : m_work(std::move(work)) {}
    void Run() override { m_work(); }

private:
    const std::function<void()> m_work;
};

// Work on threads of the library. On threads of others that come and go, wxWidgets would leave a
// record of each behind.
class Workers
{
public:
    ~Workers() { Finish(); }

    void Start(std::function<void()> work)
    {
        const smart_ptr<Threading::IRunnable> task(new Task(std::move(work)));
        m_threads.push_back(std::make_unique<Threading::Threadable>(task));
        EXPECT_TRUE(m_threads.back()->Run());
    }

    void Finish() { m_threads.clear(); }

private:
    std::vector<std::unique_ptr<Threading::Threadable>> m_threads;
};

// Does `work` on threads at once, a part of `all` on each.
void Share(unsigned long all, const std::function<void(unsigned long)>& work)
{
    Workers workers;
    for (unsigned int thread = 0; thread < s_uThreads; ++thread)
        workers.Start([&] { work((all + s_uThreads - 1) / s_uThreads); });
}

// How often a test does what, as for Rounds.
struct Wanted
{
    const char* m_pWhat;
    const char* m_pVariable;
    unsigned long m_uEveryDay;
};

// Does as much as is wanted, but not more than `most` in a round.
void DoInRounds(const Wanted& wanted, unsigned long most, const std::function<void(unsigned long)>& work)
{
    Rounds rounds(wanted.m_pWhat, wanted.m_pVariable, wanted.m_uEveryDay);
    while (rounds.GoOn())
    {
        const unsigned long size = rounds.Size(most);
        work(size);
        rounds.Did(size);
    }
}

// A server, and the pump that delivers what its clients send.
class Served
{
public:
    explicit Served(const std::wstring& service) : m_pCommands(new CommandsLoad(m_pump)), m_server(service)
    {
        m_server.AddListener(smart_ptr<IPCConnectionEvent>(m_pCommands));
        EXPECT_TRUE(m_server.Run());
    }

    CommandsLoad& GetCommands() { return *m_pCommands; }

    void DeliverAll()
    {
        EXPECT_TRUE(m_pump.Run(s_uPatience));
        EXPECT_EQ(0U, m_pCommands->Missing());
    }

    // Anything that arrives now is too much.
    void DeliverTheRest() { EXPECT_TRUE(m_pump.Run(0)); }

private:
    EventPump m_pump;
    // The server's.
    CommandsLoad* const m_pCommands;
    IPCServer m_server;
};

} // namespace

TEST(Load, EightThreadsLoseNoPieceAndKeepTheirOrder)
{
    const ToolkitSession session;
    // All that is wanted through one logger.
    DoInRounds({"pieces", "TOOLKIT_TEST_PIECES", 100000}, 4294967295UL, LogPieces);
}

TEST(Load, StartedProcessesLeaveNoZombieAndNoDescriptor)
{
    const ToolkitSession session;
    DoInRounds({"starts", "TOOLKIT_TEST_STARTS", 200}, 100,
               [](unsigned long starts)
               {
                   StartProcesses(starts);
                   EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
                   EXPECT_EQ(ECHILD, errno);
               });
}

// From processes and threads at once, each with a connection of its own for every command.
TEST(Load, EveryCommandOfManyClientsArrivesOnceByteForByte)
{
    const TemporaryFolder folder;
    const std::wstring service = folder.Wide("s");
    const ToolkitSession session;
    Served served(service);
    Rounds rounds("commands", "TOOLKIT_TEST_COMMANDS", 2000);
    while (rounds.GoOn())
    {
        const unsigned long each = rounds.Size(4000) / s_uClients + 1;
        CommandsLoad& commands = served.GetCommands();
        commands.Expect(s_uClients, each);
        std::vector<std::unique_ptr<ForkedCopy>> processes;
        for (unsigned int client = 0; client < s_uClientProcesses; ++client)
            processes.push_back(
                std::make_unique<ForkedCopy>([&, client] { return commands.Send(service, client); }));
        Workers workers;
        for (unsigned int client = s_uClientProcesses; client < s_uClients; ++client)
            workers.Start([&, client] { EXPECT_EQ("", commands.Send(service, client)); });
        served.DeliverAll();
        for (const auto& process : processes)
            EXPECT_EQ("", process->Wait());
        workers.Finish();
        served.DeliverTheRest();
        rounds.Did(each * s_uClients);
    }
}

TEST(Load, BackgroundOperationsTellTheirListenersTheirStartAndEnd)
{
    const ToolkitSession session;
    DoInRounds({"operations", "TOOLKIT_TEST_OPERATIONS", 100}, 50, RunOperations);
}

TEST(Load, RegularExpressionsAnswerTheSameOnManyThreads)
{
    const ToolkitSession session;
    DoInRounds({"matches", "TOOLKIT_TEST_MATCHES", 8000}, 20000,
               [](unsigned long matches) { Share(matches, MatchExpressions); });
}

TEST(Load, FilesOfAllKindsReadBackWhatWasWritten)
{
    const FilesLoad files;
    const ToolkitSession session;
    DoInRounds({"files", "TOOLKIT_TEST_FILES", 400}, 4000,
               [&files](unsigned long count)
               { Share(count, [&files](unsigned long part) { files.Do(part); }); });
}

TEST(Load, DatesFollowChangingZonesAndLocales)
{
    DoInRounds({"dates", "TOOLKIT_TEST_DATES", 2000}, 10000, ShowDates);
}

// What a host does in its best time: commands, a log to a file that wraps,
// and whatever needs no environment of its own.
TEST(Load, OneProcessDoesAllOfItAtOnce)
{
    const TemporaryFolder folder;
    const std::wstring service = folder.Wide("s");
    const FilesLoad files;
    const LogFile log;
    const ToolkitSession session;
    ILogger::SetLogger(smart_ptr<ILogger>(new FileLogger(LogSeverity::Info, log.WideName(), 1000000)));
    Served served(service);
    Rounds rounds("together", "TOOLKIT_TEST_TOGETHER", 2);
    while (rounds.GoOn())
    {
        CommandsLoad& commands = served.GetCommands();
        commands.Expect(s_uClientThreads, 200);
        Workers workers;
        for (unsigned int client = 0; client < s_uClientThreads; ++client)
            workers.Start([&, client] { EXPECT_EQ("", commands.Send(service, client)); });
        for (unsigned int i = 0; i < 2; ++i)
        {
            workers.Start([] { LogPieces(8000); });
            workers.Start([] { LogLines(1000); });
            workers.Start([] { StartProcesses(20); });
            workers.Start([] { RunOperations(16); });
            workers.Start([] { MatchExpressions(1000); });
            workers.Start([&files] { files.Do(100); });
        }
        served.DeliverAll();
        workers.Finish();
        served.DeliverTheRest();
        rounds.Did(1);
    }
}
