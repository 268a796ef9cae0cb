// SPDX-License-Identifier: MIT
#include "toolkit/core/smart_ptr.h"

#include <memory>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using Toolkit::smart_ptr;
using Toolkit::smart_ptr_array_policy;
using Toolkit::smart_ptr_policy;

namespace
{

// Counts the objects that were destroyed.
class Counted
{
public:
    explicit Counted(int& destroyed) : m_pDestroyed(&destroyed) {}
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    virtual ~Counted() { ++*m_pDestroyed; }

    int m_iValue = 7;

private:
    int* const m_pDestroyed;
};

class Derived : public Counted
{
public:
    Derived(int& destroyed, int& derived) : Counted(destroyed), m_pDerived(&derived) {}
    ~Derived() override { ++*m_pDerived; }

private:
    int* const m_pDerived;
};

using Pointer = smart_ptr<Counted, smart_ptr_policy>;

int s_iElementsDestroyed = 0;
struct Element
{
    ~Element() { ++s_iElementsDestroyed; }
};

// Holds a member of the same group while it goes, and takes copies then.
struct Ring
{
    explicit Ring(int& destroyed) : m_pDestroyed(&destroyed) {}
    ~Ring()
    {
        ++*m_pDestroyed;
        if (m_pOwner == nullptr)
            return;
        const smart_ptr<Ring> first(*m_pOwner);
        const smart_ptr<Ring> second(first);
        m_bSame = first.get() == this && second.get() == this;
        *m_pSeen = m_bSame;
    }

    int* const m_pDestroyed;
    const smart_ptr<Ring>* m_pOwner = nullptr;
    bool* m_pSeen = nullptr;
    bool m_bSame = false;
};

struct Node
{
    explicit Node(int& destroyed) : m_pDestroyed(&destroyed) {}
    ~Node() { ++*m_pDestroyed; }

    smart_ptr<Node> m_next;
    int* const m_pDestroyed;
};

// Assigns its owner anew while it goes.
struct Reassigning
{
    ~Reassigning()
    {
        if (m_pOwner != nullptr)
            *m_pOwner = smart_ptr<Reassigning>();
    }
    smart_ptr<Reassigning>* m_pOwner = nullptr;
};

// Says what its owner holds while it goes.
struct Watching
{
    ~Watching() { *m_pSeen = m_pOwner->get(); }
    smart_ptr<Watching>* m_pOwner = nullptr;
    Watching** m_pSeen = nullptr;
};

// Holds a pointer that is assigned to its owner.
struct Outer
{
    ~Outer() { *m_pSeen = m_pOwner->get(); }
    smart_ptr<Outer> m_inner;
    smart_ptr<Outer>* m_pOwner = nullptr;
    Outer** m_pSeen = nullptr;
};

// Assigns a new object to its owner, once, while it is destroyed.
struct Replacing
{
    Replacing(int& alive, smart_ptr<Replacing>* owner) : m_pAlive(&alive), m_pOwner(owner) { ++*m_pAlive; }
    ~Replacing()
    {
        --*m_pAlive;
        if (m_pOwner != nullptr)
            *m_pOwner = new Replacing(*m_pAlive, nullptr);
    }
    int* const m_pAlive;
    smart_ptr<Replacing>* const m_pOwner;
};

struct First
{
    virtual ~First() = default;
    int m_iFirst = 1;
};
struct Second
{
    virtual ~Second() = default;
    int m_iSecond = 2;
};
struct Both : First, Second
{
};
struct NoVirtualDestructor
{
};
struct Unsafe : NoVirtualDestructor
{
};

Pointer MakeImplicitly(int& destroyed)
{
    return new Counted(destroyed);
}

} // namespace

TEST(smart_ptr, TakesTwoWords)
{
    EXPECT_EQ(2 * sizeof(void*), sizeof(Pointer));
    EXPECT_EQ(2 * sizeof(void*), sizeof(smart_ptr<int, smart_ptr_array_policy>));
    EXPECT_TRUE((std::is_same_v<smart_ptr<int>, smart_ptr<int, smart_ptr_policy>>));
}

TEST(smart_ptr, IsNullByDefault)
{
    const Pointer pointer;
    EXPECT_TRUE(pointer.IsNull());
    EXPECT_FALSE(pointer);
    EXPECT_EQ(nullptr, pointer.get());
    EXPECT_TRUE(pointer == nullptr);
}

TEST(smart_ptr, CopiesANullPointer)
{
    const Pointer null;
    Pointer copy(null);
    copy = null;
    EXPECT_TRUE(copy.IsNull());
    EXPECT_TRUE(copy == null);
}

TEST(smart_ptr, GivesAccessToTheObjectThroughAConstPointer)
{
    int destroyed = 0;
    Counted* const object = new Counted(destroyed);
    const Pointer pointer(object);
    pointer->m_iValue = 8;
    EXPECT_EQ(8, (*pointer).m_iValue);
    EXPECT_EQ(object, pointer.get());
    EXPECT_FALSE(pointer.IsNull());
    EXPECT_TRUE(static_cast<bool>(pointer));
    EXPECT_FALSE((std::is_convertible_v<Pointer, bool>));
}

TEST(smart_ptr, ConvertsFromAPlainPointer)
{
    int destroyed = 0;
    EXPECT_TRUE((std::is_convertible_v<Counted*, Pointer>));
    EXPECT_FALSE(MakeImplicitly(destroyed).IsNull());
    EXPECT_EQ(1, destroyed);
}

TEST(smart_ptr, ComparesByHeldPointer)
{
    int destroyed = 0;
    const Pointer a(new Counted(destroyed));
    const Pointer b(new Counted(destroyed));
    const Pointer c(a);
    EXPECT_TRUE(a == c);
    EXPECT_FALSE(a != c);
    EXPECT_TRUE(a != b);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a == a.get());
    EXPECT_TRUE(a != b.get());
    EXPECT_TRUE(Pointer() == nullptr);
    EXPECT_TRUE(nullptr == Pointer());
}

TEST(smart_ptr, PlainPointerOnTheLeftIsComparedAndNotOwned)
{
    int destroyed = 0;
    {
        const Pointer a(new Counted(destroyed));
        const Pointer b(new Counted(destroyed));
        EXPECT_TRUE(a.get() == a);
        EXPECT_FALSE(a.get() != a);
        EXPECT_TRUE(a.get() != b);
        EXPECT_FALSE(a.get() == b);
        EXPECT_EQ(0, destroyed);
    }
    EXPECT_EQ(2, destroyed);
}

TEST(smart_ptr, LastCopyDestroysTheObjectOnce)
{
    int destroyed = 0;
    {
        const Pointer last(new Counted(destroyed));
        {
            const Pointer copy(last);
            const Pointer another(copy);
        }
        EXPECT_EQ(0, destroyed);
        EXPECT_EQ(7, last->m_iValue);
    }
    EXPECT_EQ(1, destroyed);
}

TEST(smart_ptr, ObjectOutlivesTheFirstOwner)
{
    int destroyed = 0;
    auto first = std::make_unique<Pointer>(new Counted(destroyed));
    const Pointer second(*first);
    first.reset();
    EXPECT_EQ(0, destroyed);
    EXPECT_EQ(7, second->m_iValue);
}

TEST(smart_ptr, DestroysThroughTheVirtualDestructor)
{
    int destroyed = 0;
    int derived = 0;
    {
        const Pointer pointer(new Derived(destroyed, derived));
    }
    EXPECT_EQ(1, destroyed);
    EXPECT_EQ(1, derived);
}

TEST(smart_ptr, ArrayPolicyDestroysEveryElement)
{
    s_iElementsDestroyed = 0;
    {
        const smart_ptr<Element, smart_ptr_array_policy> elements(new Element[5]);
        const smart_ptr<Element, smart_ptr_array_policy> copy(elements);
    }
    EXPECT_EQ(5, s_iElementsDestroyed);
    const smart_ptr<char, smart_ptr_array_policy> bytes(new char[16]());
    EXPECT_EQ('\0', bytes.get()[15]);
}

TEST(smart_ptr, AssignmentReleasesTheOldObjectAndSharesTheNew)
{
    int first = 0;
    int second = 0;
    Pointer a(new Counted(first));
    {
        const Pointer b(new Counted(second));
        a = b;
        EXPECT_EQ(1, first);
        EXPECT_TRUE(a == b);
    }
    EXPECT_EQ(0, second);
    a.Reset();
    EXPECT_EQ(1, second);
}

TEST(smart_ptr, AssignmentToItselfChangesNothing)
{
    int destroyed = 0;
    Pointer pointer(new Counted(destroyed));
    const Pointer& same = pointer;
    pointer = same;
    EXPECT_EQ(0, destroyed);
    EXPECT_EQ(7, pointer->m_iValue);
    pointer.Reset();
    EXPECT_EQ(1, destroyed);
}

TEST(smart_ptr, AssignmentWithinAGroupKeepsTheObject)
{
    int destroyed = 0;
    Pointer a(new Counted(destroyed));
    Pointer b(a);
    a = b;
    b = a;
    EXPECT_EQ(0, destroyed);
    a.Reset();
    EXPECT_EQ(0, destroyed);
    b.Reset();
    EXPECT_EQ(1, destroyed);
}

TEST(smart_ptr, AssignsFromInsideTheObjectThatIsReleased)
{
    int destroyed = 0;
    smart_ptr<Node> head(new Node(destroyed));
    head->m_next = new Node(destroyed);
    head->m_next->m_next = new Node(destroyed);
    Node* const second = head->m_next.get();
    head = head->m_next;
    EXPECT_EQ(1, destroyed);
    EXPECT_EQ(second, head.get());
    head = head->m_next;
    EXPECT_EQ(2, destroyed);
    head = head->m_next;
    EXPECT_EQ(3, destroyed);
    EXPECT_TRUE(head.IsNull());
}

TEST(smart_ptr, PointerAssignmentReleasesAndStartsANewGroup)
{
    int first = 0;
    int second = 0;
    Pointer a(new Counted(first));
    const Pointer b(a);
    a = new Counted(second);
    EXPECT_EQ(0, first);
    EXPECT_EQ(7, b->m_iValue);
    a = new Counted(second);
    EXPECT_EQ(1, second);
    a = static_cast<Counted*>(nullptr);
    EXPECT_EQ(2, second);
    EXPECT_TRUE(a.IsNull());
}

TEST(smart_ptr, PointerAssignmentDestroysTheOldObjectWhileItIsStillHeld)
{
    Watching* seen = nullptr;
    smart_ptr<Watching> pointer;
    Watching* const object = new Watching;
    object->m_pOwner = &pointer;
    object->m_pSeen = &seen;
    pointer = object;
    pointer.Reset();
    EXPECT_EQ(object, seen);
    EXPECT_TRUE(pointer.IsNull());
}

namespace
{

// Counts instead of destroying, so that a dangling pointer can be held safely.
struct CountingPolicy
{
    static int s_iCalls;
    static int* s_pLast;
    static void Destroy(int* object)
    {
        ++s_iCalls;
        s_pLast = object;
    }
};
int CountingPolicy::s_iCalls = 0;
int* CountingPolicy::s_pLast = nullptr;

} // namespace

TEST(smart_ptr, PointerAssignmentOfTheHeldPointerDestroysItFirst)
{
    int object = 0;
    CountingPolicy::s_iCalls = 0;
    {
        smart_ptr<int, CountingPolicy> pointer(&object);
        pointer = &object;
        EXPECT_EQ(1, CountingPolicy::s_iCalls);
        EXPECT_EQ(&object, CountingPolicy::s_pLast);
        EXPECT_EQ(&object, pointer.get());
    }
    EXPECT_EQ(2, CountingPolicy::s_iCalls);
}

TEST(smart_ptr, NullIsNotHandedToThePolicy)
{
    CountingPolicy::s_iCalls = 0;
    {
        const smart_ptr<int, CountingPolicy> null;
        smart_ptr<int, CountingPolicy> other(static_cast<int*>(nullptr));
        other.Reset();
    }
    EXPECT_EQ(0, CountingPolicy::s_iCalls);
}

TEST(smart_ptr, ResetLeavesAUsableNullPointer)
{
    int destroyed = 0;
    Pointer pointer(new Counted(destroyed));
    const Pointer other(pointer);
    pointer.Reset();
    EXPECT_TRUE(pointer.IsNull());
    EXPECT_EQ(0, destroyed);
    pointer.Reset();
    pointer = other;
    EXPECT_EQ(7, pointer->m_iValue);
}

TEST(smart_ptr, ReleaseRefGivesUpOneShareAndLeavesTheFields)
{
    int destroyed = 0;
    alignas(Pointer) unsigned char memory[sizeof(Pointer)];
    Counted* const object = new Counted(destroyed);
    Pointer* const pointer = new (memory) Pointer(object);
    {
        const Pointer other(*pointer);
        pointer->ReleaseRef();
        EXPECT_EQ(object, pointer->get());
        EXPECT_EQ(0, destroyed);
    }
    EXPECT_EQ(1, destroyed);
}

TEST(smart_ptr, SharesADyingObjectWithoutCountingIt)
{
    int destroyed = 0;
    bool seen = false;
    {
        const smart_ptr<Ring> pointer(new Ring(destroyed));
        pointer->m_pOwner = &pointer;
        pointer->m_pSeen = &seen;
    }
    EXPECT_TRUE(seen);
    EXPECT_EQ(1, destroyed);
}

TEST(smart_ptr, ObjectMayReassignItsOwnerWhileItGoes)
{
    smart_ptr<Reassigning> pointer(new Reassigning);
    pointer->m_pOwner = &pointer;
    pointer = smart_ptr<Reassigning>();
    EXPECT_TRUE(pointer.IsNull());
}

TEST(smart_ptr, CopyAssignmentDestroysTheOldObjectWhileItIsStillHeld)
{
    Watching* seen = nullptr;
    const smart_ptr<Watching> null;
    smart_ptr<Watching> pointer(new Watching);
    Watching* const object = pointer.get();
    object->m_pOwner = &pointer;
    object->m_pSeen = &seen;
    pointer = null;
    EXPECT_EQ(object, seen);
    EXPECT_TRUE(pointer.IsNull());
}

TEST(smart_ptr, MoveAssignmentDestroysTheOldObjectWhileItIsStillHeld)
{
    Watching* seen = nullptr;
    smart_ptr<Watching> pointer(new Watching);
    Watching* const object = pointer.get();
    object->m_pOwner = &pointer;
    object->m_pSeen = &seen;
    pointer = smart_ptr<Watching>();
    EXPECT_EQ(object, seen);
    EXPECT_TRUE(pointer.IsNull());
}

TEST(smart_ptr, AssignsFromInsideAnObjectThatLooksAtItsOwner)
{
    for (const bool moves : {false, true})
    {
        Outer* seen = nullptr;
        smart_ptr<Outer> pointer(new Outer);
        Outer* const outer = pointer.get();
        outer->m_pOwner = &pointer;
        outer->m_pSeen = &seen;
        outer->m_inner = new Outer;
        Outer* const inner = outer->m_inner.get();
        inner->m_pOwner = &pointer;
        inner->m_pSeen = &seen;
        if (moves)
            pointer = std::move(outer->m_inner);
        else
            pointer = outer->m_inner;
        EXPECT_EQ(outer, seen);
        EXPECT_EQ(inner, pointer.get());
    }
}

// What the destructor stored is released: nothing is left, and what was assigned holds.
TEST(smart_ptr, WhatTheDestructorAssignedIsReplacedToo)
{
    int alive = 0;
    int other = 0;
    const smart_ptr<Replacing> kept(new Replacing(other, nullptr));
    smart_ptr<Replacing> pointer;
    pointer = new Replacing(alive, &pointer);
    pointer = kept;
    EXPECT_EQ(0, alive);
    EXPECT_TRUE(pointer == kept);
    pointer = new Replacing(alive, &pointer);
    pointer = smart_ptr<Replacing>(kept);
    EXPECT_EQ(0, alive);
    EXPECT_TRUE(pointer == kept);
    pointer = new Replacing(alive, &pointer);
    pointer = new Replacing(alive, nullptr);
    EXPECT_EQ(1, alive);
    pointer = new Replacing(alive, &pointer);
    pointer.Reset();
    EXPECT_EQ(0, alive);
    EXPECT_TRUE(pointer.IsNull());
    {
        smart_ptr<Replacing> last;
        last = new Replacing(alive, &last);
    }
    EXPECT_EQ(0, alive);
    EXPECT_EQ(1, other);
}

TEST(smart_ptr, MoveTakesTheShareAndLeavesANullPointer)
{
    int destroyed = 0;
    Pointer first(new Counted(destroyed));
    Counted* const object = first.get();
    Pointer second(std::move(first));
    EXPECT_TRUE(first.IsNull());
    EXPECT_EQ(object, second.get());
    Pointer third;
    third = std::move(second);
    EXPECT_TRUE(second.IsNull());
    EXPECT_EQ(object, third.get());
    EXPECT_EQ(0, destroyed);
    third.Reset();
    EXPECT_EQ(1, destroyed);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<Pointer>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<Pointer>);
}

TEST(smart_ptr, MovedFromPointerIsUsable)
{
    int destroyed = 0;
    Pointer pointer(new Counted(destroyed));
    const Pointer owner(std::move(pointer));
    const Pointer copy(pointer);
    EXPECT_TRUE(copy.IsNull());
    EXPECT_TRUE(pointer == copy);
    pointer.ReleaseRef();
    pointer.Reset();
    EXPECT_TRUE(pointer.IsNull());
    pointer = Pointer(std::move(pointer));
    Pointer assigned(owner);
    assigned = copy;
    EXPECT_TRUE(assigned.IsNull());
    pointer = owner;
    EXPECT_TRUE(pointer == owner);
    pointer = new Counted(destroyed);
    pointer.Reset();
    EXPECT_EQ(1, destroyed);
}

TEST(smart_ptr, MoveToItselfChangesNothing)
{
    int destroyed = 0;
    Pointer pointer(new Counted(destroyed));
    Pointer& same = pointer;
    pointer = std::move(same);
    EXPECT_EQ(0, destroyed);
    EXPECT_EQ(7, pointer->m_iValue);
}

TEST(smart_ptr, BaseAndDerivedShareOneGroup)
{
    int destroyed = 0;
    int derived = 0;
    smart_ptr<Derived> first(new Derived(destroyed, derived));
    Pointer base(first);
    EXPECT_TRUE(base == first);
    first.Reset();
    EXPECT_EQ(0, destroyed);
    smart_ptr<const Counted> constant = base;
    base = new Counted(destroyed);
    EXPECT_EQ(0, derived);
    constant.Reset();
    EXPECT_EQ(1, derived);
    base = smart_ptr<Derived>(new Derived(destroyed, derived));
    EXPECT_EQ(2, destroyed);
    smart_ptr<Derived> last(new Derived(destroyed, derived));
    base = std::move(last);
    EXPECT_TRUE(last.IsNull());
    EXPECT_EQ(2, derived);
    base.Reset();
    EXPECT_EQ(3, derived);
}

TEST(smart_ptr, SecondBaseIsReachedAtItsOwnAddress)
{
    const smart_ptr<Both> both(new Both);
    const smart_ptr<Second> second(both);
    EXPECT_EQ(2, second->m_iSecond);
    EXPECT_EQ(static_cast<Second*>(both.get()), second.get());
}

TEST(smart_ptr, ConvertsOnlyWhereTheObjectCanBeDestroyed)
{
    EXPECT_TRUE((std::is_convertible_v<smart_ptr<Derived>, smart_ptr<Counted>>));
    EXPECT_TRUE((std::is_convertible_v<smart_ptr<int>, smart_ptr<const int>>));
    EXPECT_FALSE((std::is_convertible_v<smart_ptr<const int>, smart_ptr<int>>));
    EXPECT_FALSE((std::is_convertible_v<smart_ptr<Counted>, smart_ptr<Derived>>));
    EXPECT_FALSE((std::is_convertible_v<smart_ptr<Unsafe>, smart_ptr<NoVirtualDestructor>>));
    EXPECT_FALSE((std::is_convertible_v<smart_ptr<Derived, smart_ptr_array_policy>,
                                        smart_ptr<Counted, smart_ptr_array_policy>>));
    EXPECT_FALSE((std::is_convertible_v<smart_ptr<int>, smart_ptr<int, smart_ptr_array_policy>>));
}

TEST(smart_ptr, DestroysAChain)
{
    int destroyed = 0;
    {
        smart_ptr<Node> head(new Node(destroyed));
        for (int i = 0; i < 29; ++i)
        {
            smart_ptr<Node> longer(new Node(destroyed));
            longer->m_next = head;
            head = longer;
        }
    }
    EXPECT_EQ(30, destroyed);
}

TEST(smart_ptr, IsCopiedAndDroppedOnManyThreads)
{
    int destroyed = 0;
    {
        auto shared = std::make_unique<Pointer>(new Counted(destroyed));
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back(
                [copy = *shared]
                {
                    for (int round = 0; round < 5000; ++round)
                    {
                        Pointer one(copy);
                        Pointer other;
                        other = one;
                        one.Reset();
                    }
                });
        shared.reset();
        for (std::thread& thread : threads)
            thread.join();
    }
    EXPECT_EQ(1, destroyed);
}
