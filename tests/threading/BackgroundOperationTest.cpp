// SPDX-License-Identifier: MIT
#include "toolkit/threading/BackgroundOperation.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/WaitUntil.h"
#include "toolkit/app/GetTickCount.h"
#include "toolkit/threading/Threadable.h"

using Toolkit::BackgroundOperation;
using Toolkit::BackgroundOperationHandler;
using Toolkit::EventNotifier;
using Toolkit::EventObject;
using Toolkit::GetTickCount;
using Toolkit::smart_ptr;
using ToolkitTest::WaitUntil;

static_assert(std::is_base_of_v<EventNotifier<BackgroundOperationHandler>, BackgroundOperation>);
static_assert(std::is_abstract_v<BackgroundOperation> && std::is_abstract_v<BackgroundOperationHandler>);
static_assert(!std::is_copy_constructible_v<BackgroundOperation>);
static_assert(!std::is_convertible_v<unsigned int, BackgroundOperation>);

namespace
{

using Clock = std::chrono::steady_clock;
using Journal = std::vector<std::string>;

// Notes its hooks, and whether a wait would have blocked then.
class Recorded : public BackgroundOperation
{
public:
    explicit Recorded(Journal& journal, unsigned int value = 0)
        : BackgroundOperation(value), m_journal(journal)
    {
    }

    void DoOperation() override { m_journal.push_back("work"); }

    EventObject& Own() { return *GetOwnEvent(); }

protected:
    void OnOperationStarted() override { m_journal.push_back("own start"); }
    void OnOperationEnded() override { m_journal.push_back("own end"); }

private:
    Journal& m_journal;
};

class Plain : public BackgroundOperation
{
public:
    using BackgroundOperation::BackgroundOperation;
    void DoOperation() override {}
};

class Handler : public BackgroundOperationHandler
{
public:
    Handler(Journal& journal, const std::string& name) : m_journal(journal), m_strName(name) {}

    void OnOperationStarted() override { m_journal.push_back(m_strName + " start"); }
    void OnOperationEnded() override { m_journal.push_back(m_strName + " end"); }

private:
    Journal& m_journal;
    const std::string m_strName;
};

class ThrowingHandler : public BackgroundOperationHandler
{
public:
    void OnOperationStarted() override { throw std::runtime_error("started"); }
    void OnOperationEnded() override { throw std::runtime_error("ended"); }
};

// Tells whether the operation's wait would return at the moment of each announcement.
class WaitingHandler : public BackgroundOperationHandler
{
public:
    WaitingHandler(Journal& journal, const BackgroundOperation& operation)
        : m_journal(journal), m_operation(operation)
    {
    }

    void OnOperationStarted() override {}
    void OnOperationEnded() override { m_journal.push_back(m_operation.Wait() ? "done" : "not done"); }

private:
    Journal& m_journal;
    const BackgroundOperation& m_operation;
};

// A thread that waits for an operation.
class Waiter
{
public:
    explicit Waiter(const BackgroundOperation& operation)
        : m_thread(
              [this, &operation]
              {
                  m_iThread = gettid();
                  m_bStarted = true;
                  m_bAnswer = operation.Wait();
                  m_bReturned = true;
              })
    {
    }
    ~Waiter() { m_thread.join(); }

    bool HasStarted() const { return m_bStarted; }
    bool HasReturned() const { return m_bReturned; }
    bool Answer() const { return m_bAnswer; }
    // How often the thread has gone to sleep.
    long Sleeps() const
    {
        std::ifstream status("/proc/self/task/" + std::to_string(m_iThread) + "/status");
        for (std::string word; status >> word;)
            if (long count = 0; word == "voluntary_ctxt_switches:" && status >> count)
                return count;
        return 0;
    }

private:
    pid_t m_iThread = 0;
    std::atomic<bool> m_bStarted{false};
    std::atomic<bool> m_bAnswer{false};
    std::atomic<bool> m_bReturned{false};
    std::thread m_thread;
};

// Still waiting after more than one look at the event.
bool StaysBlocked(const Waiter& waiter)
{
    if (!WaitUntil([&waiter] { return waiter.HasStarted(); }))
        return false;
    const long before = waiter.Sleeps();
    return WaitUntil([&] { return waiter.HasReturned() || waiter.Sleeps() >= before + 2; }) &&
           !waiter.HasReturned();
}

void AddHandler(BackgroundOperation& operation, BackgroundOperationHandler* handler)
{
    operation.AddListener(smart_ptr<BackgroundOperationHandler>(handler));
}

// The library's operation and handler as others see them: by the places of their virtual operations.
template <class T>
void CallSlot(T& object, std::size_t slot)
{
    using Function = void (*)(T*);
    (*reinterpret_cast<Function**>(&object))[slot](&object);
}

} // namespace

TEST(BackgroundOperation, KeepsItsValue)
{
    Journal journal;
    for (const unsigned int value : {0U, 7U, 4294967295U})
        EXPECT_EQ(value, Recorded(journal, value).GetValue());
}

TEST(BackgroundOperation, ConstructionAnnouncesNothing)
{
    Journal journal;
    {
        Recorded operation(journal);
        AddHandler(operation, new Handler(journal, "a"));
    }
    EXPECT_EQ(Journal(), journal);
}

TEST(BackgroundOperation, TellsItselfFirstAndThenTheListenersInTheirOrder)
{
    Journal journal;
    Recorded operation(journal);
    AddHandler(operation, new Handler(journal, "b"));
    AddHandler(operation, new Handler(journal, "a"));
    operation.SendOperationStarted();
    operation.DoOperation();
    operation.SendOperationEnded();
    EXPECT_EQ(Journal({"own start", "b start", "a start", "work", "own end", "b end", "a end"}), journal);
}

TEST(BackgroundOperation, WithoutListenersOnlyItsOwnHooksRun)
{
    Journal journal;
    Recorded operation(journal);
    operation.SendOperationStarted();
    EXPECT_EQ(Journal({"own start"}), journal);
    operation.SendOperationEnded();
    EXPECT_EQ(Journal({"own start", "own end"}), journal);
}

TEST(BackgroundOperation, HooksDoNothingByDefault)
{
    Plain operation(1);
    operation.SendOperationStarted();
    operation.SendOperationEnded();
    EXPECT_TRUE(operation.Wait());
}

TEST(BackgroundOperation, EndIsKnownBeforeAnyoneIsTold)
{
    Journal journal;
    Plain operation(0);
    AddHandler(operation, new WaitingHandler(journal, operation));
    operation.SendOperationStarted();
    operation.SendOperationEnded();
    EXPECT_EQ(Journal({"done"}), journal);
}

TEST(BackgroundOperation, StartIsKnownBeforeAnyoneIsTold)
{
    // A hook that waits would wait for ever after the reset, so another thread does it.
    class Started : public Plain
    {
    public:
        using Plain::Plain;
        bool m_bBlocked = false;
        std::atomic<Waiter*> m_pWaiter{nullptr};

    protected:
        void OnOperationStarted() override
        {
            m_pWaiter = new Waiter(*this);
            m_bBlocked = StaysBlocked(*m_pWaiter);
        }
    };
    Started operation(0);
    operation.SendOperationEnded();
    operation.SendOperationStarted();
    EXPECT_TRUE(operation.m_bBlocked);
    operation.SendOperationEnded();
    delete operation.m_pWaiter;
}

TEST(BackgroundOperation, WaitBlocksOnAnOperationThatNeverStarted)
{
    Plain operation(0);
    const Waiter waiter(operation);
    EXPECT_TRUE(StaysBlocked(waiter));
    operation.SendOperationEnded();
    EXPECT_TRUE(WaitUntil([&waiter] { return waiter.HasReturned(); }));
    EXPECT_TRUE(waiter.Answer());
}

TEST(BackgroundOperation, WaitReturnsAfterTheEndAndBlocksAgainAfterTheNextStart)
{
    Plain operation(0);
    for (int i = 0; i < 2; ++i)
    {
        operation.SendOperationStarted();
        {
            const Waiter waiter(operation);
            EXPECT_TRUE(StaysBlocked(waiter));
            operation.SendOperationEnded();
        }
        EXPECT_TRUE(operation.Wait());
        EXPECT_TRUE(operation.Wait());
    }
}

TEST(BackgroundOperation, EveryWaitReturnsAtTheEnd)
{
    Plain operation(0);
    std::vector<std::unique_ptr<Waiter>> waiters;
    for (int i = 0; i < 8; ++i)
        waiters.push_back(std::make_unique<Waiter>(operation));
    operation.SendOperationEnded();
    for (const auto& waiter : waiters)
        EXPECT_TRUE(WaitUntil([&waiter] { return waiter->HasReturned(); }));
}

TEST(BackgroundOperation, WaitMissesAnEndThatAStartFollows)
{
    Plain operation(0);
    bool missed = false;
    // The waiter may look just then.
    for (int attempt = 0; attempt < 20 && !missed; ++attempt)
    {
        operation.SendOperationStarted();
        const Waiter waiter(operation);
        EXPECT_TRUE(StaysBlocked(waiter));
        operation.SendOperationEnded();
        operation.SendOperationStarted();
        missed = StaysBlocked(waiter);
        operation.SendOperationEnded();
    }
    EXPECT_TRUE(missed);
}

TEST(BackgroundOperation, WaitSurvivesTheOperation)
{
    auto operation = std::make_unique<Plain>(0);
    const Waiter waiter(*operation);
    EXPECT_TRUE(StaysBlocked(waiter));
    operation.reset();
    EXPECT_TRUE(WaitUntil([&waiter] { return waiter.HasReturned(); }));
    EXPECT_TRUE(waiter.Answer());
}

TEST(BackgroundOperation, ReleasesItsListenersWhenItGoes)
{
    struct Gone : Handler
    {
        Gone(Journal& journal) : Handler(journal, "x"), m_goneJournal(journal) {}
        ~Gone() override { m_goneJournal.push_back("gone"); }
        Journal& m_goneJournal;
    };
    Journal journal;
    {
        Plain operation(0);
        AddHandler(operation, new Gone(journal));
        EXPECT_EQ(Journal(), journal);
    }
    EXPECT_EQ(Journal({"gone"}), journal);
}

TEST(BackgroundOperation, ExceptionOfAListenerPassesAndTheLaterOnesAreNotCalled)
{
    Journal journal;
    Recorded operation(journal);
    AddHandler(operation, new Handler(journal, "a"));
    const smart_ptr<BackgroundOperationHandler> thrower(new ThrowingHandler);
    operation.AddListener(thrower);
    AddHandler(operation, new Handler(journal, "b"));
    EXPECT_THROW(operation.SendOperationStarted(), std::runtime_error);
    EXPECT_THROW(operation.SendOperationEnded(), std::runtime_error);
    EXPECT_EQ(Journal({"own start", "a start", "own end", "a end"}), journal);
    EXPECT_TRUE(operation.Wait());
    // Another thread gets at the list: its mutex was released.
    std::thread([&] { operation.RemoveListener(thrower); }).join();
    journal.clear();
    operation.SendOperationEnded();
    EXPECT_EQ(Journal({"own end", "a end", "b end"}), journal);
}

TEST(BackgroundOperation, ExceptionOfItsOwnHookReachesTheCallerBeforeAnyListener)
{
    class Throwing : public Plain
    {
    public:
        using Plain::Plain;

    protected:
        void OnOperationEnded() override { throw std::runtime_error("own"); }
    };
    Journal journal;
    Throwing operation(0);
    AddHandler(operation, new Handler(journal, "a"));
    EXPECT_THROW(operation.SendOperationEnded(), std::runtime_error);
    EXPECT_EQ(Journal(), journal);
    EXPECT_TRUE(operation.Wait());
}

TEST(BackgroundOperation, ListenersAreCalledOnTheAnnouncingThread)
{
    class ThreadHandler : public BackgroundOperationHandler
    {
    public:
        void OnOperationStarted() override { m_started = std::this_thread::get_id(); }
        void OnOperationEnded() override { m_ended = std::this_thread::get_id(); }
        std::thread::id m_started;
        std::thread::id m_ended;
    };
    Plain operation(0);
    ThreadHandler* const handler = new ThreadHandler;
    AddHandler(operation, handler);
    std::thread::id worker;
    std::thread(
        [&]
        {
            worker = std::this_thread::get_id();
            operation.SendOperationStarted();
        })
        .join();
    operation.SendOperationEnded();
    EXPECT_EQ(worker, handler->m_started);
    EXPECT_EQ(std::this_thread::get_id(), handler->m_ended);
}

TEST(BackgroundOperation, RunsOnAThreadOfTheHosts)
{
    class Task : public Toolkit::Threading::IRunnable
    {
    public:
        explicit Task(BackgroundOperation& operation) : m_operation(operation) {}
        void Run() override
        {
            m_operation.SendOperationStarted();
            m_operation.DoOperation();
            m_operation.SendOperationEnded();
        }

    private:
        BackgroundOperation& m_operation;
    };
    Journal journal;
    Recorded operation(journal);
    Toolkit::Threading::Threadable thread(smart_ptr<Toolkit::Threading::IRunnable>(new Task(operation)));
    ASSERT_TRUE(thread.Run());
    EXPECT_TRUE(operation.Wait());
    thread.Wait();
    EXPECT_EQ(Journal({"own start", "work", "own end"}), journal);
}

TEST(BackgroundOperation, LastOperationDateIsTheTickCountOfTheLastUpdate)
{
    Plain operation(0);
    EXPECT_EQ(0U, operation.GetLastOperationDate());
    operation.SendOperationStarted();
    operation.SendOperationEnded();
    EXPECT_EQ(0U, operation.GetLastOperationDate());
    for (int i = 0; i < 2; ++i)
    {
        const unsigned int before = GetTickCount();
        operation.UpdateLastOperationDate();
        const unsigned int after = GetTickCount();
        EXPECT_LE(operation.GetLastOperationDate() - before, after - before);
        EXPECT_TRUE(WaitUntil([after] { return GetTickCount() != after; }));
    }
}

TEST(BackgroundOperation, DateMayBeUpdatedAndReadOnAnyThread)
{
    Plain operation(0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&operation]
            {
                for (int k = 0; k < 1000; ++k)
                {
                    operation.UpdateLastOperationDate();
                    EXPECT_NE(0U, operation.GetLastOperationDate());
                }
            });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(BackgroundOperation, OwnEventIsLeftToTheSubclass)
{
    Journal journal;
    Recorded operation(journal);
    EXPECT_FALSE(operation.Own().Wait(0));
    operation.SendOperationStarted();
    operation.SendOperationEnded();
    EXPECT_FALSE(operation.Own().Wait(0));
    operation.Own().Signal();
    operation.SendOperationStarted();
    // Manual reset: the first wait does not consume the signal.
    EXPECT_TRUE(operation.Own().Wait(0));
    EXPECT_TRUE(operation.Own().Wait(0));
}

TEST(BackgroundOperation, VirtualOperationsHaveTheirPlaces)
{
    // Two places belong to the destructor.
    Journal journal;
    Recorded operation(journal);
    CallSlot<BackgroundOperation>(operation, 2);
    CallSlot<BackgroundOperation>(operation, 3);
    CallSlot<BackgroundOperation>(operation, 4);
    Handler handler(journal, "handler");
    CallSlot<BackgroundOperationHandler>(handler, 2);
    CallSlot<BackgroundOperationHandler>(handler, 3);
    EXPECT_EQ(Journal({"work", "own start", "own end", "handler start", "handler end"}), journal);
}

TEST(BackgroundOperationTiming, WaiterSeesTheEndAtItsNextLook)
{
    Plain operation(0);
    const Waiter waiter(operation);
    ASSERT_TRUE(StaysBlocked(waiter));
    const Clock::time_point end = Clock::now();
    operation.SendOperationEnded();
    EXPECT_TRUE(WaitUntil([&waiter] { return waiter.HasReturned(); }));
    EXPECT_LT(Clock::now() - end, std::chrono::seconds(2));
}
