// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_SMART_PTR_H
#define TOOLKIT_CORE_SMART_PTR_H

#include <cstdint>

#include "toolkit/threading/MutexInternal.h"
#include "toolkit/threading/MutexLock.h"

namespace Toolkit
{

// Destroys the held object with `delete`.
struct smart_ptr_policy
{
    template <class T>
    static void Destroy(T* object)
    {
        delete object;
    }
};

// Destroys the held array with `delete[]`.
struct smart_ptr_array_policy
{
    template <class T>
    static void Destroy(T* array)
    {
        delete[] array;
    }
};

// Shared ownership of an object: a pointer and a counted block on the heap; the last owner destroys the
// object through Policy. Every smart_ptr has a block, a null one too. The count is guarded by a recursive
// mutex, so copies of one smart_ptr may be made and dropped on different threads; the object itself is not
// protected.
template <class T, class Policy = smart_ptr_policy>
class smart_ptr
{
public:
    smart_ptr() : m_pObject(nullptr), m_pBlock(new Block) {}

    // Takes ownership of `object`, which is destroyed if there is no memory for the block.
    smart_ptr(T* object) : m_pObject(object), m_pBlock(NewBlockFor(object)) {}

    // Quirk: a copy taken while the object is being destroyed is not counted.
    smart_ptr(const smart_ptr& other) { Share(other); }

    ~smart_ptr() { ReleaseRef(); }

    smart_ptr& operator=(const smart_ptr& other)
    {
        if (this != &other)
        {
            // Shared before the old object goes: `other` may live inside it.
            T* const object = m_pObject;
            Block* const block = m_pBlock;
            Share(other);
            Release(object, block);
        }
        return *this;
    }

    // Gives up what is held and takes ownership of `object`.
    // Quirk: `object` is not compared with the pointer already held; assigning that one again destroys it
    // first.
    smart_ptr& operator=(T* object)
    {
        Block* const block = NewBlockFor(object);
        ReleaseRef();
        m_pObject = object;
        m_pBlock = block;
        return *this;
    }

    // Gives up this owner's share and leaves the fields as they were: the caller stores new ones or goes
    // away.
    void ReleaseRef() { Release(m_pObject, m_pBlock); }

    // Gives up what is held and becomes null.
    void Reset() { *this = static_cast<T*>(nullptr); }

    T* operator->() const { return m_pObject; }
    T& operator*() const { return *m_pObject; }
    T* get() const { return m_pObject; }
    bool IsNull() const { return m_pObject == nullptr; }
    explicit operator bool() const { return m_pObject != nullptr; }

    friend bool operator==(const smart_ptr& a, const smart_ptr& b) { return a.m_pObject == b.m_pObject; }
    friend bool operator!=(const smart_ptr& a, const smart_ptr& b) { return a.m_pObject != b.m_pObject; }
    friend bool operator==(const smart_ptr& a, const T* b) { return a.m_pObject == b; }
    friend bool operator!=(const smart_ptr& a, const T* b) { return a.m_pObject != b; }
    // Without these a plain pointer on the left would become an owner of its own.
    friend bool operator==(const T* a, const smart_ptr& b) { return a == b.m_pObject; }
    friend bool operator!=(const T* a, const smart_ptr& b) { return a != b.m_pObject; }

private:
    struct Block
    {
        std::int32_t m_iCount = 1;
        MutexInternal m_mutex{false};
    };

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

    static void Release(T* object, Block* block)
    {
        {
            const MutexLock lock(block->m_mutex);
            if (--block->m_iCount != 0)
                return;
            if (object != nullptr)
                Policy::Destroy(object);
        }
        delete block;
    }

    void Share(const smart_ptr& other)
    {
        m_pObject = other.m_pObject;
        m_pBlock = other.m_pBlock;
        const MutexLock lock(m_pBlock->m_mutex);
        // A count of zero means that the object is being destroyed right now: nothing can keep it alive.
        if (m_pBlock->m_iCount != 0)
            ++m_pBlock->m_iCount;
    }

    T* m_pObject;
    Block* m_pBlock;
};

} // namespace Toolkit

#endif
