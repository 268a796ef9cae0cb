// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_SMART_PTR_H
#define TOOLKIT_CORE_SMART_PTR_H

#include <cstdint>
#include <type_traits>
#include <utility>

#include "toolkit/threading/MutexInternal.h"
#include "toolkit/threading/MutexLock.h"

namespace Toolkit
{

/// Destroys the held object with `delete`.
struct smart_ptr_policy
{
    /// Destroys `object`.
    template <class T>
    static void Destroy(T* object)
    {
        delete object;
    }
};

/// Destroys the held array with `delete[]`.
///
/// @code
/// Toolkit::smart_ptr<int, Toolkit::smart_ptr_array_policy> numbers(new int[3]{1, 2, 3});
/// int sum = 0;
/// for (int i = 0; i < 3; ++i)
///     sum += numbers.get()[i];
/// @endcode
struct smart_ptr_array_policy
{
    /// Destroys `array`.
    template <class T>
    static void Destroy(T* array)
    {
        delete[] array;
    }
};

namespace Detail
{

/// What the owners of one object share. The type of the pointer is no part of it, so that a pointer to a base
/// class shares the block of a pointer to a derived one.
struct SharedBlock
{
    std::int32_t m_iCount = 1;
    MutexInternal m_mutex{false};
};

/// True where an owner of U may become an owner of T: T is U with more qualifiers, or a base class whose
/// destructor is virtual; an array has no base class.
template <class U, class T, class Policy>
using MayOwnAs = std::conjunction<
    std::is_convertible<U*, T*>,
    std::disjunction<std::is_same<std::remove_cv_t<U>, std::remove_cv_t<T>>,
                     std::conjunction<std::negation<std::is_same<Policy, smart_ptr_array_policy>>,
                                      std::has_virtual_destructor<T>>>>;

} // namespace Detail

/// Shared ownership of an object: a pointer and a counted block on the heap; the last owner destroys the
/// object through Policy. Every smart_ptr has a block, even a null one; only one that was moved from has
/// none: it is null and can be used again. The count is guarded by a recursive mutex, so copies of one
/// smart_ptr may be made and dropped on different threads; the object itself is not protected.
///
/// @code
/// Toolkit::smart_ptr<Toolkit::ILogger> logger(new Toolkit::ConsoleLogger(Toolkit::LogSeverity::Info));
/// Toolkit::smart_ptr<Toolkit::ILogger> same = logger;
/// same->Write(L"two owners\n");
/// @endcode
template <class T, class Policy = smart_ptr_policy>
class smart_ptr
{
public:
    smart_ptr() : m_pObject(nullptr), m_pBlock(new Block) {}

    /// Takes ownership of `object`, which is destroyed if there is no memory for the block.
    smart_ptr(T* object) : m_pObject(object), m_pBlock(NewBlockFor(object)) {}

    /// Quirk: a copy taken while the object is being destroyed is not counted.
    smart_ptr(const smart_ptr& other) : m_pObject(other.m_pObject), m_pBlock(Shared(other.m_pBlock)) {}

    /// Takes over the share of `other`, which is null then.
    smart_ptr(smart_ptr&& other) noexcept
        : m_pObject(std::exchange(other.m_pObject, nullptr)), m_pBlock(std::exchange(other.m_pBlock, nullptr))
    {
    }

    /// From a pointer to a derived class, or to what is less constant: an owner of the same group.
    template <class U, class = std::enable_if_t<Detail::MayOwnAs<U, T, Policy>::value>>
    smart_ptr(const smart_ptr<U, Policy>& other)
        : m_pObject(other.m_pObject), m_pBlock(Shared(other.m_pBlock))
    {
    }
    /// Takes over the share of such a pointer, which is null then.
    template <class U, class = std::enable_if_t<Detail::MayOwnAs<U, T, Policy>::value>>
    smart_ptr(smart_ptr<U, Policy>&& other) noexcept
        : m_pObject(std::exchange(other.m_pObject, nullptr)), m_pBlock(std::exchange(other.m_pBlock, nullptr))
    {
    }

    ~smart_ptr() { GiveUp(); }

    /// The share of `other` is taken first, for `other` may live inside the object that is released. Both
    /// fields stay as they were until that object is destroyed: its destructor finds itself here.
    smart_ptr& operator=(const smart_ptr& other)
    {
        if (this != &other)
        {
            T* const object = other.m_pObject;
            Replace(object, Shared(other.m_pBlock));
        }
        return *this;
    }
    smart_ptr& operator=(smart_ptr&& other) noexcept
    {
        if (this != &other)
        {
            T* const object = std::exchange(other.m_pObject, nullptr);
            Replace(object, std::exchange(other.m_pBlock, nullptr));
        }
        return *this;
    }

    /// Gives up what is held and takes ownership of `object`.
    /// Quirk: `object` is not compared with the pointer already held; assigning that one again destroys it
    /// first.
    smart_ptr& operator=(T* object)
    {
        Replace(object, NewBlockFor(object));
        return *this;
    }

    /// Gives up this owner's share and leaves the fields as they were: the caller stores new ones or destroys
    /// the object.
    void ReleaseRef() { Release(m_pObject, m_pBlock); }

    /// Gives up what is held and becomes null.
    void Reset() { *this = static_cast<T*>(nullptr); }

    /// The members of the object; null has none.
    T* operator->() const { return m_pObject; }
    /// The object; null has none.
    T& operator*() const { return *m_pObject; }
    /// The object, or null; it still belongs to its owners.
    T* get() const { return m_pObject; }
    /// True when nothing is held.
    bool IsNull() const { return m_pObject == nullptr; }
    /// True when an object is held.
    explicit operator bool() const { return m_pObject != nullptr; }

    friend bool operator==(const smart_ptr& a, const smart_ptr& b) { return a.m_pObject == b.m_pObject; }
    friend bool operator!=(const smart_ptr& a, const smart_ptr& b) { return a.m_pObject != b.m_pObject; }
    friend bool operator==(const smart_ptr& a, const T* b) { return a.m_pObject == b; }
    friend bool operator!=(const smart_ptr& a, const T* b) { return a.m_pObject != b; }
    /// Without these a plain pointer on the left would become an owner of its own.
    friend bool operator==(const T* a, const smart_ptr& b) { return a == b.m_pObject; }
    friend bool operator!=(const T* a, const smart_ptr& b) { return a != b.m_pObject; }

private:
    template <class U, class P>
    friend class smart_ptr;

    using Block = Detail::SharedBlock;

    static Block* NewBlockFor(T* object)
    {
        try
        {
            return new Block;
        }
        catch (...)
        {
            if (object != nullptr)
                Policy::Destroy(object);
            throw;
        }
    }

    static Block* Shared(Block* block)
    {
        if (block == nullptr)
            return block;
        const MutexLock lock(block->m_mutex);
        // A count of zero means that the object is being destroyed right now: nothing can keep it alive.
        if (block->m_iCount != 0)
            ++block->m_iCount;
        return block;
    }

    static void Release(T* object, Block* block)
    {
        if (block == nullptr)
            return;
        {
            const MutexLock lock(block->m_mutex);
            if (--block->m_iCount != 0)
                return;
            if (object != nullptr)
                Policy::Destroy(object);
        }
        delete block;
    }

    // Releases what is held, and then what a destructor stored here meanwhile.
    void GiveUp()
    {
        const Block* released = nullptr;
        do
        {
            released = m_pBlock;
            ReleaseRef();
        } while (m_pBlock != released);
    }

    void Replace(T* object, Block* block)
    {
        GiveUp();
        m_pObject = object;
        m_pBlock = block;
    }

    T* m_pObject;
    Block* m_pBlock;
};

} // namespace Toolkit

#endif
