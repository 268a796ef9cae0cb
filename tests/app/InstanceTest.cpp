// SPDX-License-Identifier: MIT
#include "toolkit/app/Instance.h"

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <new>
#include <queue>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/thread.h>

#include "tests/support/ForkedCopy.h"
#include "tests/support/IPCSupport.h"
#include "tests/support/InChild.h"
#include "tests/support/NoNewThreads.h"
#include "tests/support/Rounds.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/encoding/UTF8.h"

using namespace std::chrono_literals;
using Toolkit::Errc;
using Toolkit::Instance;
using Toolkit::Result;
using ToolkitTest::ChildAnswer;
using ToolkitTest::ForkedCopy;
using ToolkitTest::InChild;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TemporaryFolder;

namespace
{

const char* const c_strKey = "org.example.watch";

// What is told at once, whatever the time-out.
const char* const c_strNotTaken =
    "cannot ask org.example.watch: the first instance has ended or did not take the command";

using Arguments = std::vector<std::string>;

// A runtime folder of the test's own.
class InstanceTest : public testing::Test
{
protected:
    InstanceTest() { std::filesystem::permissions(m_folder.Path(), std::filesystem::perms::owner_all); }

    static Instance Claim(const std::string& key = c_strKey)
    {
        Result<Instance> instance = Instance::Claim(key);
        EXPECT_TRUE(instance) << instance.error().Message();
        return *std::move(instance);
    }

    // The path of the only socket.
    std::string SocketPath() const
    {
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path("toolkit")))
            if (entry.is_socket())
                return entry.path();
        return std::string();
    }

    const TemporaryFolder m_folder;
    const ScopedEnvironment m_runtime{"XDG_RUNTIME_DIR", m_folder.Path().c_str()};
};

Instance::Answer Echo(const Instance::Command& command)
{
    std::string text;
    for (const std::string& argument : command.Arguments())
        text += argument;
    return Instance::Answer(static_cast<int>(command.Arguments().size()), text);
}

// Holds handlers until it is opened.
class Gate
{
public:
    void Open()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bOpen = true;
        m_changed.notify_all();
    }
    void Pass()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        ++m_iArrived;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_bOpen; });
    }
    void AwaitArrivals(int count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this, count] { return m_iArrived >= count; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bOpen = false;
    int m_iArrived = 0;
};

Instance::Handler EchoAfter(Gate& gate)
{
    return [&gate](const Instance::Command& command)
    {
        gate.Pass();
        return Echo(command);
    };
}

// Stacks of threads among them.
std::size_t Mappings()
{
    std::ifstream file("/proc/self/maps");
    std::size_t lines = 0;
    for (std::string line; std::getline(file, line);)
        ++lines;
    return lines;
}

// A socket of that type in the place of whatever has the path.
int BoundSocket(const std::string& path, int type)
{
    std::filesystem::remove(path);
    const int socket = ::socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(0, bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    return socket;
}

// Listens in the place of the first instance.
class FakeServer
{
public:
    explicit FakeServer(const std::string& path, int backlog = 8)
        : m_strPath(path), m_iSocket(BoundSocket(path, SOCK_STREAM))
    {
        EXPECT_EQ(0, listen(m_iSocket, backlog));
    }
    ~FakeServer()
    {
        close(m_iSocket);
        std::filesystem::remove(m_strPath);
    }
    FakeServer(const FakeServer&) = delete;
    FakeServer& operator=(const FakeServer&) = delete;

    // To the next client, which is then let go; one that is told something for ever must go by itself.
    void Reply(const std::string& bytes, const std::string& forEver = std::string()) const
    {
        const int client = accept4(m_iSocket, nullptr, nullptr, SOCK_CLOEXEC);
        bool isThere = send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0;
        while (isThere && !forEver.empty())
            isThere = send(client, forEver.data(), forEver.size(), MSG_NOSIGNAL) > 0;
        close(client);
    }

private:
    const std::string m_strPath;
    const int m_iSocket;
};

// Poked: a folder without a name, and no arguments.
const std::string c_strEmptyCommand =
    std::string("\x03") + ToolkitTest::Sized("") + "\x02" + ToolkitTest::Sized(std::string(8, '\0'));

} // namespace

TEST_F(InstanceTest, FirstAnswersTheOthers)
{
    Instance first = Claim();
    EXPECT_TRUE(first.IsFirst());
    std::filesystem::path folder;
    first.Serve(
        [&folder](const Instance::Command& command)
        {
            folder = command.Folder();
            return Instance::Answer(7, command.Arguments().at(0) + "|" + command.Arguments().at(1));
        });
    const Instance second = Claim();
    EXPECT_FALSE(second.IsFirst());
    const std::filesystem::path file = "a.eml";
    const Result<Instance::Answer> answer = second.Ask({"open", file}, 60s);
    ASSERT_TRUE(answer) << answer.error().Message();
    EXPECT_EQ(7, answer->Code());
    EXPECT_EQ("open|a.eml", answer->Text());
    EXPECT_EQ(std::filesystem::current_path(), folder);
}

TEST_F(InstanceTest, KeysAreApart)
{
    const Instance a = Claim("a");
    const Instance b = Claim("b");
    const Instance longer = Claim(std::string(100000, 'k') + "a");
    const Instance slash = Claim(std::string("../a\0/", 6));
    EXPECT_TRUE(a.IsFirst() && b.IsFirst() && longer.IsFirst() && slash.IsFirst());
    EXPECT_FALSE(Claim(std::string(100000, 'k') + "a").IsFirst());
    EXPECT_TRUE(Claim(std::string(100000, 'k') + "b").IsFirst());
    EXPECT_EQ(std::errc::invalid_argument, Instance::Claim("").error().Code());
}

TEST_F(InstanceTest, NextOneIsFirstWhenTheFirstHasEnded)
{
    auto first = std::make_unique<Instance>(Claim());
    const Instance second = Claim();
    first.reset();
    const Result<Instance::Answer> answer = second.Ask({"x"});
    ASSERT_FALSE(answer);
    EXPECT_EQ(Errc::NotAnswered, answer.error().Code());
    EXPECT_EQ("cannot ask org.example.watch: the first instance has ended", answer.error().Message());
    EXPECT_TRUE(Claim().IsFirst());
    EXPECT_EQ("", SocketPath());
}

TEST_F(InstanceTest, CarriesEveryByteOfAnyLength)
{
    Instance first = Claim();
    first.Serve(Echo);
    const Instance second = Claim();
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const std::size_t size : {0U, 1U, 255U, 65536U, 1048576U, 1048577U, 16777216U})
    {
        std::string text;
        while (text.size() < size)
            text.append(all, 0, size - text.size());
        const Result<Instance::Answer> answer = second.Ask({text, "", "end"}, 60s);
        ASSERT_TRUE(answer) << answer.error().Message();
        EXPECT_EQ(3, answer->Code());
        EXPECT_TRUE(text + "end" == answer->Text()) << size;
    }
    const Result<Instance::Answer> nothing = second.Ask({}, 60s);
    ASSERT_TRUE(nothing);
    EXPECT_EQ(0, nothing->Code());
    EXPECT_EQ("", nothing->Text());
}

TEST_F(InstanceTest, AskingWaitsUntilTheFirstServes)
{
    Instance first = Claim();
    const Instance second = Claim();
    std::future<Result<Instance::Answer>> asked =
        std::async(std::launch::async, [&second] { return second.Ask({"early"}); });
    EXPECT_EQ(Errc::NotAnswered, second.Ask({"impatient"}, 20ms).error().Code());
    EXPECT_EQ(Errc::NotAnswered, second.Ask({"negative"}, -1s).error().Code());
    first.Serve(Echo);
    const Result<Instance::Answer> answer = asked.get();
    ASSERT_TRUE(answer) << answer.error().Message();
    EXPECT_EQ("early", answer->Text());
}

TEST_F(InstanceTest, HandlersExceptionIsAnAnswer)
{
    Instance first = Claim();
    first.Serve(
        [](const Instance::Command& command) -> Instance::Answer
        {
            if (command.Arguments().empty())
                throw 1;
            throw std::runtime_error("no such file");
        });
    const Result<Instance::Answer> answer = first.Ask({"x"}, 60s);
    ASSERT_TRUE(answer);
    EXPECT_EQ(1, answer->Code());
    EXPECT_EQ("no such file", answer->Text());
    EXPECT_EQ("unknown exception", first.Ask({}, 60s)->Text());
}

TEST_F(InstanceTest, ExecutesOneAfterTheOther)
{
    Instance first = Claim();
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    first.Serve(
        [&](const Instance::Command& command)
        {
            most = std::max(most.load(), ++inside);
            std::this_thread::yield();
            --inside;
            return Echo(command);
        });
    std::vector<std::thread> askers;
    std::atomic<int> right{0};
    for (int i = 0; i < 8; ++i)
        askers.emplace_back(
            [&, i]
            {
                for (int j = 0; j < 50; ++j)
                {
                    const std::string text = std::to_string(i) + "/" + std::to_string(j);
                    const Result<Instance::Answer> answer = first.Ask({text}, 60s);
                    right += answer && answer->Text() == text ? 1 : 0;
                }
            });
    for (std::thread& asker : askers)
        asker.join();
    EXPECT_EQ(400, right);
    EXPECT_EQ(1, most);
}

TEST_F(InstanceTest, ExecutesAtOnceInParallel)
{
    Instance first = Claim();
    Gate gate;
    first.Serve(EchoAfter(gate), Instance::Parallel);
    std::vector<std::future<bool>> asked;
    for (int i = 0; i < 4; ++i)
        asked.push_back(
            std::async(std::launch::async, [&first] { return first.Ask({"x"}, 60s).has_value(); }));
    gate.AwaitArrivals(4);
    gate.Open();
    for (std::future<bool>& each : asked)
        EXPECT_TRUE(each.get());
}

TEST_F(InstanceTest, ExecutesOnTheThreadOfAnExecutor)
{
    std::mutex mutex;
    std::queue<std::function<void()>> calls;
    Instance first = Claim();
    std::thread::id where;
    first.Serve(
        [&where](const Instance::Command& command)
        {
            where = std::this_thread::get_id();
            return Echo(command);
        },
        [&](std::function<void()> call)
        {
            const std::lock_guard<std::mutex> lock(mutex);
            calls.push(std::move(call));
        });
    for (int i = 0; i < 3; ++i)
    {
        std::future<bool> asked =
            std::async(std::launch::async, [&first] { return first.Ask({"x"}, 60s).has_value(); });
        std::function<void()> call;
        ASSERT_TRUE(ToolkitTest::WaitUntil(
            [&]
            {
                const std::lock_guard<std::mutex> lock(mutex);
                if (calls.empty())
                    return false;
                call = std::move(calls.front());
                calls.pop();
                return true;
            }));
        call();
        EXPECT_TRUE(asked.get());
        EXPECT_EQ(std::this_thread::get_id(), where);
    }
}

TEST_F(InstanceTest, ExecutesInTheLoopOfWxWidgets)
{
    const ToolkitTest::ScopedEnvironment home("HOME", m_folder.Path().c_str());
    const Toolkit::ToolkitSession session;
    Instance first = Claim();
    int executed = 0;
    first.Serve(
        [&executed](const Instance::Command& command)
        {
            executed += wxThread::IsMain() ? 1 : 100;
            return Echo(command);
        },
        [](std::function<void()> call) { wxAppConsole::GetInstance()->CallAfter(call); });
    std::atomic<int> answered{0};
    std::thread asker(
        [&]
        {
            for (const char* const text : {"a", "b", "c"})
                if (const Result<Instance::Answer> answer = first.Ask({text}, 60s);
                    answer && answer->Text() == text)
                    ++answered;
        });
    EXPECT_TRUE(ToolkitTest::PumpUntil([&answered] { return answered == 3; }));
    asker.join();
    EXPECT_EQ(3, executed);
}

// Each asker is a process of its own; most texts are short, and some are as long as is ever needed.
TEST_F(InstanceTest, EachOfManyAskersGetsItsOwnAnswer)
{
    const char* const many = std::getenv("TOOLKIT_ASKS");
    const unsigned long asks = many != nullptr ? std::strtoul(many, nullptr, 10) : 2000;
    const unsigned long processes = 8;
    const auto ask = [this, asks]() -> ChildAnswer
    {
        if (!ToolkitTest::WaitUntil(
                [this]
                { return std::filesystem::exists(m_folder.Path("toolkit")) && !SocketPath().empty(); }))
            return "nobody listens";
        const Instance second = Claim();
        for (unsigned long i = 0; i < asks / processes; ++i)
        {
            const std::size_t size = i % 5000 == 4999 ? 16777216 : i % 200 == 199 ? 300000 : i % 300;
            const std::string text(size, static_cast<char>(i));
            const std::string own = std::to_string(getpid()) + "/" + std::to_string(i);
            const Result<Instance::Answer> answer = second.Ask({text, own}, 300s);
            if (!answer)
                return answer.error().Message();
            if (answer->Code() != 2 || answer->Text() != text + own)
                return "another's answer to " + own;
        }
        return true;
    };
    std::deque<ForkedCopy> askers;
    for (unsigned long i = 0; i < processes; ++i)
        askers.emplace_back(ask);
    Instance first = Claim();
    EXPECT_TRUE(first.IsFirst());
    first.Serve(Echo);
    for (ForkedCopy& asker : askers)
        EXPECT_EQ("", asker.Wait());
}

TEST_F(InstanceTest, FrozenFirstCostsTheTimeAlone)
{
    ForkedCopy host(
        []() -> ChildAnswer
        {
            Instance first = Claim();
            first.Serve(Echo);
            for (;;)
                pause();
        });
    ASSERT_TRUE(ToolkitTest::WaitUntil(
        [this] { return std::filesystem::exists(m_folder.Path("toolkit")) && !SocketPath().empty(); }));
    const Instance second = Claim();
    EXPECT_TRUE(second.Ask({"x"}, 60s));
    kill(host.Id(), SIGSTOP);
    // The signal is sent before it is felt.
    ASSERT_EQ(host.Id(), waitpid(host.Id(), nullptr, WUNTRACED));
    for (const std::size_t size : {std::size_t{1}, std::size_t{1} << 20})
    {
        const Result<Instance::Answer> answer = second.Ask({std::string(size, 'x')}, 20ms);
        EXPECT_TRUE(!answer && answer.error().Code() == Errc::NotAnswered);
    }
    kill(host.Id(), SIGCONT);
    EXPECT_TRUE(second.Ask({"x"}, 60s));
}

TEST_F(InstanceTest, EndWaitsForTheRunningHandlerAndFailsTheRest)
{
    auto first = std::make_unique<Instance>(Claim());
    const Instance second = Claim();
    Gate gate;
    std::atomic<int> executed{0};
    first->Serve(
        [&](const Instance::Command& command)
        {
            ++executed;
            gate.Pass();
            return Echo(command);
        });
    const auto ask = [&second] { return second.Ask({"x"}); };
    std::future<Result<Instance::Answer>> running = std::async(std::launch::async, ask);
    gate.AwaitArrivals(1);
    std::vector<std::future<Result<Instance::Answer>>> rest;
    for (int i = 0; i < 3; ++i)
        rest.push_back(std::async(std::launch::async, ask));
    // One that was answered by nobody so far has been taken.
    EXPECT_EQ(Errc::NotAnswered, second.Ask({"x"}, 50ms).error().Code());
    std::thread end([&first] { first.reset(); });
    for (auto& each : rest)
        EXPECT_EQ(Errc::NotAnswered, each.get().error().Code());
    // It has no place any more for one that asks only now, while the handler still runs.
    EXPECT_EQ(c_strNotTaken, second.Ask({"x"}, 60s).error().Message());
    gate.Open();
    const Result<Instance::Answer> answer = running.get();
    end.join();
    ASSERT_TRUE(answer) << answer.error().Message();
    EXPECT_EQ("x", answer->Text());
    EXPECT_EQ(1, executed);
}

// As a command "quit" does.
TEST_F(InstanceTest, AnswerOfTheHandlerThatHasTheHostEndIsSent)
{
    for (int round = 0; round < 100; ++round)
    {
        auto first = std::make_unique<Instance>(Claim());
        std::promise<void> quit;
        first->Serve(
            [&quit](const Instance::Command& command)
            {
                quit.set_value();
                return Echo(command);
            },
            round % 2 == 0 ? Instance::Mode() : Instance::Parallel);
        const Instance second = Claim();
        std::future<Result<Instance::Answer>> asked =
            std::async(std::launch::async, [&second] { return second.Ask({"quit"}, 60s); });
        quit.get_future().wait();
        first.reset();
        const Result<Instance::Answer> answer = asked.get();
        ASSERT_TRUE(answer) << answer.error().Message();
        EXPECT_EQ("quit", answer->Text());
    }
}

TEST_F(InstanceTest, EndWaitsUntilAnAnswerThatIsUnderwayHasBeenRead)
{
    auto first = std::make_unique<Instance>(Claim());
    static constexpr std::size_t size = 1024 * 1024;
    first->Serve([](const Instance::Command&) { return Instance::Answer(0, std::string(size, 'x')); });
    ToolkitTest::RawClient client(SocketPath());
    ASSERT_TRUE(client.Send(ToolkitTest::ConnectBytes("t") + c_strEmptyCommand));
    std::string bytes;
    // More than the acceptance of the connection, and less than all, as nobody reads on.
    ASSERT_TRUE(ToolkitTest::WaitUntil([&] { return (bytes += client.Receive()).size() > 1; }));
    std::thread end([&first] { first.reset(); });
    EXPECT_TRUE(ToolkitTest::WaitUntil(
        [&]
        {
            for (std::string more; !(more = client.Receive()).empty();)
                bytes += more;
            return bytes.size() > size || client.IsClosed();
        }));
    EXPECT_LT(size, bytes.size());
    end.join();
}

TEST_F(InstanceTest, CallOfAnExecutorThatComesTooLateDoesNothing)
{
    std::promise<std::function<void()>> posted;
    auto first = std::make_unique<Instance>(Claim());
    bool executed = false;
    first->Serve(
        [&executed](const Instance::Command& command)
        {
            executed = true;
            return Echo(command);
        },
        [&posted](std::function<void()> call) { posted.set_value(std::move(call)); });
    std::future<Errc> asked =
        std::async(std::launch::async,
                   [second = Claim()]
                   {
                       const Result<Instance::Answer> answer = second.Ask({"x"});
                       return answer ? Errc::Refused : static_cast<Errc>(answer.error().Code().value());
                   });
    const std::function<void()> call = posted.get_future().get();
    first.reset();
    EXPECT_EQ(Errc::NotAnswered, asked.get());
    call();
    EXPECT_FALSE(executed);
}

TEST_F(InstanceTest, ExecutorThatThrowsFailsAllAskers)
{
    Instance first = Claim();
    int calls = 0;
    first.Serve(Echo,
                [&calls](std::function<void()>)
                {
                    ++calls;
                    throw std::runtime_error("no loop");
                });
    const Instance second = Claim();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(c_strNotTaken, second.Ask({"x"}, 60s).error().Message());
    EXPECT_EQ(1, calls);
}

TEST_F(InstanceTest, FirstWithoutThreadsFailsAllAskersAndStaysTheFirst)
{
    Instance first = Claim();
    const Instance second = Claim();
    {
        const ToolkitTest::NoNewThreads none;
        first.Serve(Echo);
    }
    EXPECT_EQ("cannot ask org.example.watch: the first instance has ended",
              second.Ask({"x"}, 60s).error().Message());
    EXPECT_EQ("cannot ask org.example.watch: this instance cannot serve",
              first.Ask({"x"}, 60s).error().Message());
    EXPECT_FALSE(Claim().IsFirst());
}

TEST_F(InstanceTest, ExecutesInParallelWithoutThreads)
{
    Instance first = Claim();
    std::atomic<int> calls{0};
    first.Serve(
        [&calls](const Instance::Command& command)
        {
            ++calls;
            return Echo(command);
        },
        Instance::Parallel);
    const Instance second = Claim();
    const ToolkitTest::NoNewThreads none;
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(second.Ask({"x"}, 60s));
    EXPECT_EQ(3, calls);
}

TEST_F(InstanceTest, KeepsNoThreadOfACommandThatIsDone)
{
    Instance first = Claim();
    first.Serve(Echo, Instance::Parallel);
    const auto askMuch = [&first]
    {
        std::vector<std::future<void>> askers;
        for (int i = 0; i < 8; ++i)
            askers.push_back(std::async(std::launch::async,
                                        [&first]
                                        {
                                            for (int j = 0; j < 50; ++j)
                                                EXPECT_TRUE(first.Ask({"x"}, 60s));
                                        }));
        for (std::future<void>& asker : askers)
            asker.get();
    };
    askMuch();
    const std::size_t before = Mappings();
    askMuch();
    EXPECT_GT(before + 60, Mappings());
}

TEST_F(InstanceTest, HandlerThatEndsItsThreadFailsItsAskerAlone)
{
    for (const Instance::Mode mode : {Instance::Mode(), Instance::Parallel})
    {
        Instance first = Claim();
        first.Serve(
            [](const Instance::Command& command)
            {
                if (command.Arguments().empty())
                    pthread_exit(nullptr);
                return Echo(command);
            },
            mode);
        const Instance second = Claim();
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_EQ(c_strNotTaken, second.Ask({}, 60s).error().Message());
            EXPECT_TRUE(second.Ask({"x"}, 60s));
        }
    }
}

// They wait for longer than a client may be silent that waits for nothing.
TEST_F(InstanceTest, AnswersMoreAskersThanItHasDescriptors)
{
    const int askers = 20;
    int ready[2] = {};
    ASSERT_EQ(0, pipe(ready));
    ForkedCopy host(
        [&ready]() -> ChildAnswer
        {
            Instance first = Claim();
            first.Serve(
                [](const Instance::Command& command)
                {
                    std::this_thread::sleep_for(50ms);
                    return Echo(command);
                });
            // A sanitizer takes a descriptor for its first look at a type.
            EXPECT_TRUE(first.Ask({"x"}, 60s));
            const int lowest = fcntl(0, F_DUPFD_CLOEXEC, 0);
            const rlimit limit = {static_cast<rlim_t>(lowest) + 8, static_cast<rlim_t>(lowest) + 8};
            setrlimit(RLIMIT_NOFILE, &limit);
            static_cast<void>(write(ready[1], "x", 1));
            for (;;)
                pause();
        });
    char byte = 0;
    ASSERT_EQ(1, read(ready[0], &byte, 1));
    close(ready[0]);
    close(ready[1]);
    const Instance second = Claim();
    std::vector<std::future<Result<Instance::Answer>>> asked;
    for (int i = 0; i < askers; ++i)
        asked.push_back(std::async(std::launch::async, [&second] { return second.Ask({"x"}, 60s); }));
    for (auto& each : asked)
    {
        const Result<Instance::Answer> answer = each.get();
        EXPECT_TRUE(answer) << answer.error().Message();
    }
}

// One that sends a command without an end is dropped for it, and nobody else is.
TEST_F(InstanceTest, AnswersAskersThatWaitWhenTheMemoryIsUsedUp)
{
    Instance first = Claim();
    Gate gate;
    first.Serve(EchoAfter(gate));
    const Instance second = Claim();
    // Without a time-out: a sanitizer may take a minute for what the other one sends.
    std::future<bool> waits = std::async(std::launch::async, [&second]
                                         { return second.Ask({std::string(100000, 'x')}).has_value(); });
    gate.AwaitArrivals(1);
    ToolkitTest::RawClient client(SocketPath());
    ASSERT_TRUE(client.Send(ToolkitTest::ConnectBytes("t")));
    const std::string piece = std::string("\x03") + ToolkitTest::Sized("") + "\x01" +
                              ToolkitTest::Sized(std::string(8 * 1024 * 1024, 'x'));
    bool isTaken = true;
    for (int i = 0; i < 64 && isTaken; ++i)
        isTaken = client.SendAll(piece);
    EXPECT_FALSE(isTaken);
    gate.Open();
    EXPECT_TRUE(waits.get());
}

TEST_F(InstanceTest, ItsThreadsTakeNoSignalsOfTheHost)
{
    EXPECT_TRUE(InChild(
        []() -> ChildAnswer
        {
            static std::atomic<int> s_iTaken;
            signal(SIGUSR1, [](int) { ++s_iTaken; });
            Instance first = Claim();
            sigset_t inHandler;
            first.Serve(
                [&inHandler](const Instance::Command& command)
                {
                    pthread_sigmask(SIG_SETMASK, nullptr, &inHandler);
                    return Echo(command);
                });
            if (!first.Ask({"x"}, 60s) || sigismember(&inHandler, SIGUSR1) != 0)
                return "the handler is without the host's signals";
            sigset_t one;
            sigemptyset(&one);
            sigaddset(&one, SIGUSR1);
            pthread_sigmask(SIG_BLOCK, &one, nullptr);
            kill(getpid(), SIGUSR1);
            const timespec none = {};
            bool left = false;
            ToolkitTest::WaitUntil(
                [&] { return (left = sigtimedwait(&one, nullptr, &none) == SIGUSR1) || s_iTaken > 0; });
            return left;
        }));
}

TEST_F(InstanceTest, AssignmentEndsTheOneBefore)
{
    Instance one = Claim("a");
    one.Serve(Echo);
    Instance other = Claim("b");
    one = std::move(other);
    EXPECT_TRUE(one.IsFirst());
    EXPECT_TRUE(Claim("a").IsFirst());
    EXPECT_FALSE(Claim("b").IsFirst());
}

TEST_F(InstanceTest, OneThatWasMovedFromIsNotTheFirst)
{
    Instance one = Claim();
    Instance taken = std::move(one);
    EXPECT_TRUE(taken.IsFirst());
    // NOLINTBEGIN(bugprone-use-after-move): the header says what it does.
    EXPECT_FALSE(one.IsFirst());
    one.Serve(Echo);
    EXPECT_EQ(Errc::Refused, one.Ask({"a"}).error().Code());
    EXPECT_EQ("cannot ask the instance: it was moved elsewhere", one.Ask({"a"}, 1s).error().Message());
    // NOLINTEND(bugprone-use-after-move)
    one = std::move(taken);
    Instance& same = one;
    one = std::move(same);
    EXPECT_TRUE(one.IsFirst());
    one.Serve(Echo);
    EXPECT_EQ("a", one.Ask({"a"})->Text());
}

TEST_F(InstanceTest, KilledFirstFailsItsAskersAndFreesTheWay)
{
    ForkedCopy host(
        []() -> ChildAnswer
        {
            Instance first = Claim();
            first.Serve(
                [](const Instance::Command&) -> Instance::Answer
                {
                    // A copy that lives on holds nothing of it.
                    if (fork() == 0)
                    {
                        alarm(60);
                        pause();
                    }
                    kill(getpid(), SIGKILL);
                    return Instance::Answer();
                });
            pause();
            return true;
        });
    ASSERT_TRUE(ToolkitTest::WaitUntil(
        [this] { return std::filesystem::exists(m_folder.Path("toolkit")) && !SocketPath().empty(); }));
    const Instance second = Claim();
    EXPECT_FALSE(second.IsFirst());
    EXPECT_EQ(Errc::NotAnswered, second.Ask({"x"}).error().Code());
    host.Kill();
    Instance next = Claim();
    EXPECT_TRUE(next.IsFirst());
    next.Serve(Echo);
    EXPECT_TRUE(second.Ask({"x"}, 60s));
}

TEST_F(InstanceTest, TwentyStartsAtOnceGiveOneFirst)
{
    struct Counts
    {
        std::atomic<int> m_iStarted{0};
        std::atomic<int> m_iClaimed{0};
        std::atomic<int> m_iFirsts{0};
    };
    ToolkitTest::Rounds rounds("starts that claim", "TOOLKIT_TEST_CLAIMS", 100);
    while (rounds.GoOn())
    {
        auto* const counts =
            new (mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
                Counts;
        const int processes = 20;
        {
            std::vector<std::unique_ptr<ForkedCopy>> starts;
            for (int i = 0; i < processes; ++i)
                starts.push_back(std::make_unique<ForkedCopy>(
                    [counts]() -> ChildAnswer
                    {
                        ++counts->m_iStarted;
                        while (counts->m_iStarted < processes)
                            usleep(100);
                        const Result<Instance> instance = Instance::Claim(c_strKey);
                        if (!instance)
                            return instance.error().Message();
                        counts->m_iFirsts += instance->IsFirst() ? 1 : 0;
                        ++counts->m_iClaimed;
                        while (counts->m_iClaimed < processes)
                            usleep(1000);
                        return true;
                    }));
            for (const auto& start : starts)
                EXPECT_EQ("", start->Wait());
        }
        EXPECT_EQ(1, counts->m_iFirsts);
        munmap(counts, sizeof(Counts));
        rounds.Did(processes);
    }
}

TEST_F(InstanceTest, UnderstandsACommandOfAClassicClient)
{
    Instance first = Claim();
    std::promise<Arguments> heard;
    first.Serve(
        [&heard](const Instance::Command& command)
        {
            heard.set_value(command.Arguments());
            return Instance::Answer();
        });
    EXPECT_TRUE(Toolkit::IPCClient::Connect(Toolkit::UTF8::ToUNICODE(Toolkit::TString<char>(SocketPath())),
                                            L"open gr\u00f6\u00dfe"));
    EXPECT_EQ(Arguments{"open gr\xC3\xB6\xC3\x9F"
                        "e"},
              heard.get_future().get());
}

TEST_F(InstanceTest, ClassicClientReachesItByItsKey)
{
    Instance first = Claim();
    std::promise<Instance::Command> heard;
    first.Serve(
        [&heard](const Instance::Command& command)
        {
            heard.set_value(command);
            return Instance::Answer();
        });
    EXPECT_FALSE(Toolkit::IPCClient::Connect(L"org.example.other", L"open"));
    ASSERT_TRUE(Toolkit::IPCClient::Connect(L"org.example.watch", L"open gr\u00f6\u00dfe"));
    const Instance::Command command = heard.get_future().get();
    EXPECT_EQ(Arguments{"open gr\xC3\xB6\xC3\x9F"
                        "e"},
              command.Arguments());
    EXPECT_EQ("", command.Folder());
}

TEST_F(InstanceTest, ClassicClientReachesNobodyWhereThereIsNoFolderOfInstances)
{
    EXPECT_FALSE(Toolkit::IPCClient::Connect(L"org.example.watch", L"open"));
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path("toolkit")));
}

TEST_F(InstanceTest, ClassicServerOfItsKeyIsAskedAsTheFirst)
{
    const ToolkitTest::ScopedEnvironment home("HOME", m_folder.Path().c_str());
    const Toolkit::ToolkitSession session;
    const std::string key = m_folder.Path("watch.ipc");
    auto server = std::make_unique<ToolkitTest::RecordingServer>(m_folder.Wide("watch.ipc"));
    ASSERT_TRUE(server->Run());
    const Instance second = Claim(key);
    EXPECT_FALSE(second.IsFirst());
    EXPECT_FALSE(Claim(key).IsFirst());
    // On the main thread, too, which delivers the commands only later.
    const Result<Instance::Answer> own = second.Ask({"open gr\xC3\xB6\xC3\x9F"
                                                     "e"},
                                                    60s);
    ASSERT_TRUE(own) << own.error().Message();
    EXPECT_EQ(0, own->Code());
    EXPECT_EQ("", own->Text());
    std::future<bool> asked = std::async(std::launch::async,
                                         [&second] {
                                             return second.Ask({"open", "a b", "", "c\"d"}, 60s).has_value();
                                         });
    EXPECT_TRUE(ToolkitTest::PumpUntil([&server] { return server->Received().size() == 2; }));
    EXPECT_TRUE(asked.get());
    EXPECT_EQ((ToolkitTest::Commands{L"open gr\u00f6\u00dfe", L"open \"a b\" \"\" c\"d"}),
              server->Received());
    for (const Arguments& arguments :
         {Arguments{"\xff"}, Arguments{std::string("a\0b", 3)}, Arguments{"a \" b", "c"}})
        EXPECT_EQ("cannot ask " + key + ": these arguments are no text for its server",
                  second.Ask(arguments, 60s).error().Message());
    server.reset();
    EXPECT_EQ("cannot ask " + key + ": the first instance has ended",
              second.Ask({"x"}, 60s).error().Message());
    EXPECT_TRUE(Claim(key).IsFirst());
}

TEST_F(InstanceTest, ClassicServerThatFreezesCostsTheTimeAlone)
{
    const std::string key = m_folder.Path("watch.ipc");
    ForkedCopy host(
        [this]() -> ChildAnswer
        {
            const ToolkitTest::ScopedEnvironment home("HOME", m_folder.Path().c_str());
            const Toolkit::ToolkitSession session;
            ToolkitTest::RecordingServer server(m_folder.Wide("watch.ipc"));
            if (!server.Run())
                return "it does not listen";
            for (;;)
                pause();
        });
    ASSERT_TRUE(ToolkitTest::WaitUntil([&key] { return std::filesystem::exists(key); }));
    ASSERT_TRUE(ToolkitTest::WaitUntil([&key] { return !Claim(key).IsFirst(); }));
    EXPECT_EQ("cannot ask " + key + ": no answer in time", Claim(key).Ask({"x"}, 20ms).error().Message());
    host.Kill();
    EXPECT_TRUE(Claim(key).IsFirst());
}

TEST_F(InstanceTest, WhatIsNoClassicServerOfItsUserIsNoFirst)
{
    const std::string path = m_folder.Path("watch.ipc");
    ToolkitTest::LeaveStaleSocket(path);
    EXPECT_TRUE(Claim(path).IsFirst());
    std::filesystem::remove(path);
    std::ofstream(path) << "a file";
    EXPECT_TRUE(Claim(path).IsFirst());
    EXPECT_TRUE(Claim(path + std::string(1, '\0')).IsFirst());
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
    const int datagrams = BoundSocket(path, SOCK_DGRAM);
    EXPECT_TRUE(Claim(path).IsFirst());
    close(datagrams);
}

TEST_F(InstanceTest, ClassicServerThatTakesNobodyMoreIsTheFirst)
{
    const std::string path = m_folder.Path("watch.ipc");
    const FakeServer server(path, 0);
    const ToolkitTest::RawClient client(path);
    const Instance second = Claim(path);
    EXPECT_FALSE(second.IsFirst());
    EXPECT_EQ("cannot ask " + path + ": no answer in time", second.Ask({"open"}, 50ms).error().Message());
}

TEST_F(InstanceTest, ListenerAtAPortIsNoFirst)
{
    const ToolkitTest::ScopedEnvironment home("HOME", m_folder.Path().c_str());
    const Toolkit::ToolkitSession session;
    const std::wstring port = ToolkitTest::FreePort();
    ToolkitTest::RecordingServer server(port);
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(Claim(Toolkit::UTF8::ToUTF8(port)).IsFirst());
}

TEST_F(InstanceTest, HostileClientHarmsNobody)
{
    Instance first = Claim();
    first.Serve(Echo);
    const std::string path = SocketPath();
    using ToolkitTest::ConnectBytes;
    const std::string poke = std::string("\x03") + ToolkitTest::Sized("") + "\x02";
    const std::string hostile[] = {"",
                                   "garbage",
                                   ConnectBytes("t").substr(0, 3),
                                   poke,
                                   ConnectBytes("t") + "\x03",
                                   ConnectBytes("t") + poke + ToolkitTest::Sized("short"),
                                   ConnectBytes("t") + poke +
                                       ToolkitTest::Sized(std::string(8, '\xff') + "xx"),
                                   ConnectBytes("t") + poke + std::string(4, '\xff')};
    std::vector<ToolkitTest::RawClient> clients;
    for (const std::string& bytes : hostile)
    {
        clients.emplace_back(path);
        EXPECT_TRUE(clients.back().Send(bytes));
        const Result<Instance::Answer> answer = first.Ask({"x"}, 60s);
        EXPECT_TRUE(answer) << answer.error().Message();
    }
}

TEST_F(InstanceTest, SilentServerCostsTheTimeAlone)
{
    const Instance first = Claim();
    const FakeServer server(SocketPath());
    EXPECT_EQ("cannot ask org.example.watch: no answer in time", Claim().Ask({"x"}, 30ms).error().Message());
}

TEST_F(InstanceTest, DyingAndHostileServersCostNoTime)
{
    const Instance first = Claim();
    const FakeServer server(SocketPath());
    const Instance second = Claim();
    const auto answer = [](const std::string& bytes)
    { return "\x0a\x06" + ToolkitTest::Sized("") + "\x02" + ToolkitTest::Sized(bytes); };
    const std::string code(8, '\0');
    const std::string replies[] = {"",
                                   "\x09",
                                   "\x0a",
                                   "\x0a\xff",
                                   "\x0a\x0a" + ToolkitTest::Sized("x"),
                                   std::string("\x0a\x06\0\0\0\0\x02\xff\xff\xff\xff", 11),
                                   answer(""),
                                   answer("short"),
                                   answer(code),
                                   answer(code + std::string(8, '\x7f')),
                                   answer(code + std::string(8, '\xff') + "text"),
                                   answer(code + std::string(8, '\0') + "more than was said")};
    for (const std::string& reply : replies)
    {
        std::thread replying([&] { server.Reply(reply); });
        EXPECT_EQ(c_strNotTaken, second.Ask({"x"}, 60s).error().Message());
        replying.join();
    }
}

TEST_F(InstanceTest, ServerThatTalksWithoutEndCostsTheTimeAlone)
{
    const Instance first = Claim();
    const FakeServer server(SocketPath());
    std::string pieces = "\x0a";
    for (int i = 0; i < 1000; ++i)
        pieces += "\x06" + ToolkitTest::Sized("") + "\x01" + ToolkitTest::Sized("");
    std::thread talking([&] { server.Reply(pieces, pieces.substr(1)); });
    EXPECT_EQ("cannot ask org.example.watch: no answer in time", Claim().Ask({"x"}, 50ms).error().Message());
    talking.join();
}

TEST_F(InstanceTest, RuntimeFolderIsMadeForItsUserAlone)
{
    const ScopedEnvironment none("XDG_RUNTIME_DIR", nullptr);
    const ScopedEnvironment home("HOME", m_folder.Path().c_str());
    const ScopedEnvironment cache("XDG_CACHE_HOME", m_folder.Path("a/b").c_str());
    EXPECT_TRUE(Claim().IsFirst());
}

TEST_F(InstanceTest, RuntimeFolderMayBeTooLongForASocket)
{
    const std::string folder = m_folder.Path(std::string(150, 'f') + "/\xff" + std::string(100, 'g'));
    std::filesystem::create_directories(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder.c_str());
    Instance first = Claim();
    EXPECT_TRUE(first.IsFirst());
    first.Serve(Echo);
    const Instance second = Claim();
    EXPECT_FALSE(second.IsFirst());
    EXPECT_TRUE(second.Ask({"x"}, 60s));
}

TEST_F(InstanceTest, FolderThatIsAnothersOrALinkIsNotUsed)
{
    const std::string folder = m_folder.Path("toolkit");
    std::filesystem::create_directory(m_folder.Path("other"));
    std::filesystem::create_directory_symlink(m_folder.Path("other"), folder);
    const Result<Instance> linked = Instance::Claim(c_strKey);
    ASSERT_FALSE(linked);
    EXPECT_NE(std::string::npos, linked.error().Message().find("cannot open the folder " + folder));
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("other")));
    std::filesystem::remove(folder);
    std::filesystem::create_directory(folder);
    if (!ToolkitTest::GiveToAnotherUser(folder))
        return;
    EXPECT_EQ(std::errc::operation_not_permitted, Instance::Claim(c_strKey).error().Code());
}

TEST_F(InstanceTest, ForkedCopyHasNoPartInIt)
{
    Instance first = Claim();
    first.Serve(Echo);
    EXPECT_TRUE(InChild(
        [copy = std::make_shared<Instance>(std::move(first))]() mutable -> ChildAnswer
        {
            copy.reset();
            return !Claim().IsFirst();
        }));
}
