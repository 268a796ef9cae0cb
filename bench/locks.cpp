// SPDX-License-Identifier: MIT
#include <memory>
#include <mutex>

#include <wx/thread.h>

#include "bench/Bench.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/threading/Mutex.h"

#ifdef BENCH_QT
#include <QRecursiveMutex>
#include <QSharedPointer>
#endif
#ifdef BENCH_BOOST
#include <boost/shared_ptr.hpp>
#endif
#ifdef BENCH_BOOST_THREAD
#include <boost/thread/recursive_mutex.hpp>
#endif

namespace
{

// What the least that guards a count by a recursive mutex of wxWidgets takes.
struct BareBlock
{
    int m_iCount = 1;
    wxMutex m_mutex{wxMUTEX_RECURSIVE};

    bool Count(int change)
    {
        m_mutex.Lock();
        m_iCount += change;
        const bool last = m_iCount == 0;
        m_mutex.Unlock();
        return last;
    }
};

template <class Pointer>
void RegisterPointer(const std::string& whose)
{
    ToolkitBench::Operation("SharedCopy/" + whose,
                            [pointer = Pointer(new int(1))]
                            {
                                const Pointer copy(pointer);
                                benchmark::DoNotOptimize(&copy);
                            });
    ToolkitBench::Operation("SharedCreation/" + whose,
                            []
                            {
                                const Pointer pointer(new int(1));
                                benchmark::DoNotOptimize(&pointer);
                            });
}

template <class Mutex>
void RegisterMutex(const std::string& whose, void (*lock)(Mutex&), void (*unlock)(Mutex&))
{
    ToolkitBench::Operation("MutexLock/" + whose,
                            [mutex = std::make_shared<Mutex>(), lock, unlock]
                            {
                                lock(*mutex);
                                unlock(*mutex);
                            });
    ToolkitBench::Operation("MutexCreation/" + whose,
                            []
                            {
                                Mutex mutex;
                                benchmark::DoNotOptimize(&mutex);
                            });
}

} // namespace

void ToolkitBench::Register()
{
    RegisterMutex<Toolkit::Mutex>(
        "Toolkit", [](Toolkit::Mutex& mutex) { mutex.Lock(Toolkit::Mutex::s_uInfinite); },
        [](Toolkit::Mutex& mutex) { mutex.Unlock(); });
    struct Recursive : wxMutex
    {
        Recursive() : wxMutex(wxMUTEX_RECURSIVE) {}
    };
    RegisterMutex<Recursive>(
        "limit", [](Recursive& mutex) { mutex.Lock(); }, [](Recursive& mutex) { mutex.Unlock(); });
    RegisterMutex<std::recursive_mutex>(
        "std", [](std::recursive_mutex& mutex) { mutex.lock(); },
        [](std::recursive_mutex& mutex) { mutex.unlock(); });
#ifdef BENCH_QT
    RegisterMutex<QRecursiveMutex>(
        "Qt", [](QRecursiveMutex& mutex) { mutex.lock(); }, [](QRecursiveMutex& mutex) { mutex.unlock(); });
#endif
#ifdef BENCH_BOOST_THREAD
    RegisterMutex<boost::recursive_mutex>(
        "Boost", [](boost::recursive_mutex& mutex) { mutex.lock(); },
        [](boost::recursive_mutex& mutex) { mutex.unlock(); });
#endif

    RegisterPointer<Toolkit::smart_ptr<int>>("Toolkit");
    RegisterPointer<std::shared_ptr<int>>("std");
#ifdef BENCH_QT
    RegisterPointer<QSharedPointer<int>>("Qt");
#endif
#ifdef BENCH_BOOST
    RegisterPointer<boost::shared_ptr<int>>("Boost");
#endif
    Operation("SharedCopy/limit",
              [block = std::make_shared<BareBlock>()]
              {
                  block->Count(1);
                  benchmark::DoNotOptimize(block->Count(-1));
              });
    Operation("SharedCreation/limit",
              []
              {
                  const std::unique_ptr<int> object(new int(1));
                  benchmark::DoNotOptimize(object.get());
                  const std::unique_ptr<BareBlock> block(new BareBlock);
                  benchmark::DoNotOptimize(block->Count(-1));
              });
}
