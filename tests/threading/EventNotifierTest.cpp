// SPDX-License-Identifier: MIT
#include "toolkit/threading/EventNotifier.h"

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using Toolkit::EventNotifier;
using Toolkit::smart_ptr;

namespace
{

class Listener
{
public:
    virtual ~Listener() = default;
    virtual void OnEvent() = 0;
};

class Notifier : public EventNotifier<Listener>
{
public:
    void Send()
    {
        Notify([](Listener& listener) { listener.OnEvent(); });
    }
};

static_assert(std::has_virtual_destructor_v<EventNotifier<Listener>>);
static_assert(!std::is_copy_constructible_v<Notifier> && !std::is_copy_assignable_v<Notifier>);

// What the first call of each listener does: adds a listener (true) or removes it (false).
using Changes = std::vector<std::pair<bool, char>>;
using Script = std::map<char, Changes>;

Script RandomScript(std::mt19937& random)
{
    Script script;
    for (const char name : std::string("abcdef"))
        for (unsigned int i = random() % 4; i > 0; --i)
            script[name].emplace_back(random() % 2 == 0, static_cast<char>('a' + random() % 6));
    return script;
}

// The rule in its plain form: a copy of the list is told from front to back, without those that are removed
// meanwhile. Takes from the script what has been done.
std::string PlainSend(std::string& list, Script& script)
{
    std::string told;
    for (std::string due = list; !due.empty();)
    {
        const char name = due.front();
        due.erase(0, 1);
        told += name;
        const Changes changes = script[name];
        script[name].clear();
        for (const auto& [add, which] : changes)
        {
            if (add)
                list += which;
            else
                for (std::string* const names : {&list, &due})
                    names->erase(std::remove(names->begin(), names->end(), which), names->end());
        }
    }
    return told;
}

using Action = std::function<void()>;

// Named listeners of one notifier; the journal holds the name of each that is called, and "~" with the name
// of each that goes.
class EventNotifierTest : public testing::Test
{
protected:
    class Named : public Listener
    {
    public:
        Named(EventNotifierTest& test, const std::string& name) : m_test(test), m_strName(name) {}
        ~Named() override
        {
            m_test.m_strJournal += "~" + m_strName;
            m_test.Act("~" + m_strName);
        }
        void OnEvent() override
        {
            m_test.m_strJournal += m_strName;
            m_test.Act(m_strName);
            m_strName += "";
        }

    private:
        EventNotifierTest& m_test;
        std::string m_strName;
    };

    // Listeners "a", "b", "c"... that the test owns, too.
    EventNotifierTest() : m_pNotifier(new Notifier)
    {
        for (const char name : std::string("abcdef"))
            m_kept.emplace(name, smart_ptr<Listener>(new Named(*this, std::string(1, name))));
    }
    ~EventNotifierTest() override
    {
        // The listeners that go still look for what they have to do.
        std::map<std::string, Action>().swap(m_actions);
        m_pNotifier.Reset();
        m_kept.clear();
    }

    smart_ptr<Listener> NewListener(const std::string& name) { return new Named(*this, name); }
    void Add(const std::string& names)
    {
        for (const char name : names)
            m_pNotifier->AddListener(m_kept[name]);
    }
    void Remove(const std::string& names)
    {
        for (const char name : names)
            m_pNotifier->RemoveListener(m_kept[name]);
    }
    void Change(const Changes& changes)
    {
        for (const auto& [add, name] : changes)
            if (add)
                Add(std::string(1, name));
            else
                Remove(std::string(1, name));
    }
    // From now on the owners are the notifier and nobody else.
    void GiveUp() { m_kept.clear(); }

    // What the listener does the next time that it is called, or destroyed ("~a").
    void Once(const std::string& name, const Action& action) { m_actions[name] = action; }

    // The journal of one announcement.
    std::string Send()
    {
        m_strJournal.clear();
        m_pNotifier->Send();
        return m_strJournal;
    }

    std::string m_strJournal;
    smart_ptr<Notifier> m_pNotifier;
    std::map<char, smart_ptr<Listener>> m_kept;

private:
    void Act(const std::string& name)
    {
        const auto found = m_actions.find(name);
        if (found == m_actions.end())
            return;
        const Action action = found->second;
        m_actions.erase(found);
        action();
    }

    std::map<std::string, Action> m_actions;
};

struct WalkRow
{
    const char* listeners;
    char actor;
    const char* added;
    const char* removed;
    // Told in the announcement during which the actor acts, and in the next one.
    const char* told;
    const char* next;
};

} // namespace

TEST_F(EventNotifierTest, TellsNobodyWithoutListeners)
{
    EXPECT_EQ("", Send());
}

TEST_F(EventNotifierTest, TellsInTheOrderOfAdding)
{
    Add("bca");
    EXPECT_EQ("bca", Send());
    EXPECT_EQ("bca", Send());
}

TEST_F(EventNotifierTest, RemovesByIdentity)
{
    Add("abc");
    Remove("b");
    EXPECT_EQ("ac", Send());
    m_pNotifier->RemoveListener(smart_ptr<Listener>(m_kept['a']));
    EXPECT_EQ("c", Send());
}

TEST_F(EventNotifierTest, RemovingAStrangerChangesNothing)
{
    Add("ab");
    Remove("c");
    EXPECT_EQ("ab", Send());
    Remove("bb");
    EXPECT_EQ("a", Send());
}

TEST_F(EventNotifierTest, IgnoresNull)
{
    m_pNotifier->AddListener(smart_ptr<Listener>());
    Add("a");
    m_pNotifier->AddListener(smart_ptr<Listener>());
    m_pNotifier->RemoveListener(smart_ptr<Listener>());
    EXPECT_EQ("a", Send());
}

TEST_F(EventNotifierTest, ListenerThatIsAddedTwiceIsToldTwiceAndRemovedAtOnce)
{
    Add("aba");
    EXPECT_EQ("aba", Send());
    Remove("a");
    EXPECT_EQ("b", Send());
}

TEST_F(EventNotifierTest, AddedAgainAfterRemovalIsTheLast)
{
    Add("abc");
    Remove("a");
    Add("a");
    EXPECT_EQ("bca", Send());
}

TEST_F(EventNotifierTest, SharesItsListeners)
{
    Add("ab");
    GiveUp();
    EXPECT_EQ("ab", Send());
}

TEST_F(EventNotifierTest, ReleasesAListenerThatIsRemoved)
{
    smart_ptr<Listener> listener = NewListener("x");
    m_pNotifier->AddListener(listener);
    m_pNotifier->RemoveListener(listener);
    EXPECT_EQ("", m_strJournal);
    listener.Reset();
    EXPECT_EQ("~x", m_strJournal);
}

TEST_F(EventNotifierTest, ReleasesEveryListenerWhenItGoes)
{
    Add("ab");
    GiveUp();
    m_strJournal.clear();
    m_pNotifier.Reset();
    EXPECT_EQ("~a~b", m_strJournal);
}

TEST_F(EventNotifierTest, LeavesListenersOfOthersAliveWhenItGoes)
{
    Add("ab");
    m_pNotifier.Reset();
    EXPECT_EQ("", m_strJournal);
}

TEST_F(EventNotifierTest, ListenersChangeTheListFromInsideTheirCall)
{
    const std::vector<WalkRow> rows = {
        // Removed: itself, alone, first, in the middle, last.
        {"a", 'a', "", "a", "a", ""},
        {"abc", 'a', "", "a", "abc", "bc"},
        {"abc", 'b', "", "b", "abc", "ac"},
        {"abc", 'c', "", "c", "abc", "ab"},
        // The next one, and the last one, which is next or not.
        {"abc", 'a', "", "b", "ac", "ac"},
        {"abc", 'b', "", "c", "ab", "ab"},
        {"abc", 'a', "", "c", "ab", "ab"},
        // The previous one, and an earlier one.
        {"abc", 'b', "", "a", "abc", "bc"},
        {"abcd", 'c', "", "a", "abcd", "bcd"},
        // Several, everything, everything else.
        {"abcd", 'b', "", "ac", "abd", "bd"},
        {"abcd", 'b', "", "bc", "abd", "ad"},
        {"abcd", 'a', "", "abcd", "a", ""},
        {"abcd", 'c', "", "dcba", "abc", ""},
        {"abcd", 'd', "", "abc", "abcd", "d"},
        // Added: told from the next announcement on.
        {"a", 'a', "b", "", "a", "ab"},
        {"abc", 'c', "de", "", "abc", "abcde"},
        {"ab", 'a', "a", "", "ab", "aba"},
        // Added and removed.
        {"ab", 'b', "c", "b", "ab", "ac"},
        {"ab", 'a', "c", "b", "a", "ac"},
        {"ab", 'a', "cd", "abc", "a", "d"},
        // One that is in the list twice.
        {"aba", 'a', "", "a", "ab", "b"},
        {"babab", 'a', "", "b", "baa", "aa"},
    };
    for (const WalkRow& row : rows)
    {
        SCOPED_TRACE(std::string(row.listeners) + " " + row.actor + " +" + row.added + " -" + row.removed);
        m_pNotifier = new Notifier;
        Add(row.listeners);
        Once(std::string(1, row.actor),
             [&]
             {
                 Add(row.added);
                 Remove(row.removed);
             });
        EXPECT_EQ(row.told, Send());
        EXPECT_EQ(row.next, Send());
    }
}

TEST_F(EventNotifierTest, ListenerThatIsRemovedAndAddedAgainWaitsForTheNextTurn)
{
    Add("abc");
    Once("a",
         [&]
         {
             Remove("b");
             Add("b");
         });
    EXPECT_EQ("ac", Send());
    EXPECT_EQ("acb", Send());
}

TEST_F(EventNotifierTest, EndsWhenEveryListenerAddsAnother)
{
    const std::function<void()> addAnother = [&] { m_pNotifier->AddListener(NewListener("n")); };
    Add("ab");
    Once("a", addAnother);
    Once("b", addAnother);
    Once("n", addAnother);
    EXPECT_EQ("ab", Send());
    EXPECT_EQ("abnn", Send());
    EXPECT_EQ("abnnn", Send());
}

TEST_F(EventNotifierTest, ListenerThatLosesItsLastOwnerInItsCallLivesToTheEndOfIt)
{
    smart_ptr<Listener> listener = NewListener("x");
    m_pNotifier->AddListener(listener);
    Add("a");
    Once("x",
         [&]
         {
             m_pNotifier->RemoveListener(listener);
             listener.Reset();
             m_strJournal += ".";
         });
    EXPECT_EQ("x.~xa", Send());
    EXPECT_EQ("a", Send());
}

TEST_F(EventNotifierTest, NestedAnnouncementsTellWhoIsThereAtTheirStart)
{
    Add("abc");
    Once("b",
         [&]
         {
             Add("d");
             m_pNotifier->Send();
         });
    EXPECT_EQ("ababcdc", Send());
}

TEST_F(EventNotifierTest, RemovalInANestedAnnouncementReachesTheOuterOne)
{
    Add("abcd");
    Once("b",
         [&]
         {
             Once("a", [&] { Remove("abc"); });
             m_pNotifier->Send();
         });
    EXPECT_EQ("abadd", Send());
    EXPECT_EQ("d", Send());
}

TEST_F(EventNotifierTest, WhateverListenersChangeTheRuleSaysWhoIsTold)
{
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round)
    {
        SCOPED_TRACE(round);
        Script script = RandomScript(random);
        std::string names;
        for (unsigned int i = random() % 8; i > 0; --i)
            names += static_cast<char>('a' + random() % 6);
        m_pNotifier = new Notifier;
        Add(names);
        for (const char name : std::string("abcdef"))
            Once(std::string(1, name), [this, changes = script[name]] { Change(changes); });
        EXPECT_EQ(PlainSend(names, script), Send());
        EXPECT_EQ(PlainSend(names, script), Send());
    }
}

TEST_F(EventNotifierTest, ExceptionOfAListenerPassesAndTheLaterOnesAreNotCalled)
{
    Add("abc");
    Once("b", [] { throw std::runtime_error("listener"); });
    EXPECT_THROW(Send(), std::runtime_error);
    EXPECT_EQ("ab", m_strJournal);
    EXPECT_EQ("abc", Send());
}

TEST_F(EventNotifierTest, ExceptionReleasesTheMutex)
{
    Add("a");
    Once("a", [] { throw 1; });
    EXPECT_THROW(Send(), int);
    std::thread([&] { Add("b"); }).join();
    EXPECT_EQ("ab", Send());
}

TEST_F(EventNotifierTest, ExceptionOutOfANestedAnnouncementLeavesTheOuterOneWhole)
{
    Add("abc");
    Once("a",
         [&]
         {
             Once("b", [] { throw 1; });
             EXPECT_THROW(m_pNotifier->Send(), int);
             Remove("b");
         });
    EXPECT_EQ("aabc", Send());
}

TEST_F(EventNotifierTest, ListenerThatGoesMayRemoveAnother)
{
    smart_ptr<Listener> listener = NewListener("x");
    Add("a");
    m_pNotifier->AddListener(listener);
    Add("b");
    Once("~x", [&] { Remove("b"); });
    Once("a",
         [&]
         {
             m_pNotifier->RemoveListener(listener);
             listener.Reset();
         });
    EXPECT_EQ("a~x", Send());
    EXPECT_EQ("a", Send());
}

// ThreadSanitizer takes the last owner's release, of which nobody else can hold anything, for one of two
// orders of locks.
#if !defined(__SANITIZE_THREAD__)
TEST_F(EventNotifierTest, ListenersMayUseTheListWhileItGoes)
{
    EventNotifier<Listener>* const notifier = m_pNotifier.get();
    Add("a");
    m_pNotifier->AddListener(NewListener("x"));
    Once("~x",
         [&]
         {
             notifier->RemoveListener(m_kept['a']);
             notifier->AddListener(m_kept['b']);
         });
    m_pNotifier.Reset();
    EXPECT_EQ("~x", m_strJournal);
}
#endif

TEST_F(EventNotifierTest, AnyThreadMayAddAndRemoveDuringAnnouncements)
{
    std::vector<std::thread> threads;
    Add("a");
    for (const char name : std::string("bcde"))
        threads.emplace_back(
            [this, listener = m_kept[name]]
            {
                for (int i = 0; i < 500; ++i)
                {
                    m_pNotifier->AddListener(listener);
                    m_pNotifier->RemoveListener(listener);
                }
            });
    for (int i = 0; i < 500; ++i)
        EXPECT_EQ('a', Send().at(0));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ("a", Send());
}
