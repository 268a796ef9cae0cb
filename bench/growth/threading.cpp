// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include <list>
#include <memory>

#include "toolkit/core/LibModule.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/threading/BackgroundOperation.h"
#include "toolkit/threading/BackgroundOperationHandler.h"
#include "toolkit/threading/EventNotifier.h"
#include "toolkit/threading/Mutex.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

struct Listener
{
    virtual ~Listener() = default;
    virtual void Tell() { benchmark::DoNotOptimize(this); }
};

class Notifier : public EventNotifier<Listener>
{
public:
    void Tell()
    {
        Notify([](Listener& listener) { listener.Tell(); });
    }
};

std::shared_ptr<Notifier> NotifierOf(std::size_t listeners)
{
    const auto notifier = std::make_shared<Notifier>();
    for (std::size_t i = 0; i < listeners; ++i)
        notifier->AddListener(smart_ptr<Listener>(new Listener));
    return notifier;
}

void AddNotifier()
{
    Add("ListenersTell", s_vecFew,
        [](std::size_t size) { return [notifier = NotifierOf(size)] { notifier->Tell(); }; });
    Add("ListenersAdd", s_vecFew,
        [](std::size_t size)
        {
            return [size, listener = smart_ptr<Listener>(new Listener)]
            {
                Notifier notifier;
                for (std::size_t i = 0; i < size; ++i)
                    notifier.AddListener(listener);
            };
        });
    Add("ListenerRemove", s_vecFew,
        [](std::size_t size)
        {
            return [notifier = NotifierOf(size), listener = smart_ptr<Listener>(new Listener)]
            {
                notifier->AddListener(listener);
                notifier->RemoveListener(listener);
            };
        });
}

class Operation : public BackgroundOperation
{
public:
    Operation() : BackgroundOperation(0) {}
    void DoOperation() override {}
};

class Handler : public BackgroundOperationHandler
{
public:
    void OnOperationStarted() override { benchmark::DoNotOptimize(this); }
    void OnOperationEnded() override { benchmark::DoNotOptimize(this); }
};

void AddBackgroundOperation()
{
    Add("BackgroundOperation", s_vecFew,
        [](std::size_t size)
        {
            const auto operation = std::make_shared<Operation>();
            for (std::size_t i = 0; i < size; ++i)
                operation->AddListener(smart_ptr<BackgroundOperationHandler>(new Handler));
            return [operation]
            {
                operation->SendOperationStarted();
                operation->SendOperationEnded();
                benchmark::DoNotOptimize(operation->Wait());
            };
        });
}

class Module : public LibModule
{
public:
    void Initialize() override { benchmark::DoNotOptimize(this); }
    void Release() override { benchmark::DoNotOptimize(this); }
};

// Modules and a manager that knows them.
struct Registered
{
    explicit Registered(std::size_t count) : m_modules(count)
    {
        for (Module& module : m_modules)
            m_manager.Register(&module);
    }

    std::list<Module> m_modules;
    LibModuleManager m_manager;
};

void AddModules()
{
    Add("ModuleRegister", s_vecFew,
        [](std::size_t size)
        {
            return [registered = std::make_shared<Registered>(size), module = std::make_shared<Module>()]
            {
                registered->m_manager.Register(module.get());
                registered->m_manager.Unregister(module.get());
            };
        });
    Add("ModulesInitialize", s_vecFew,
        [](std::size_t size)
        {
            return [registered = std::make_shared<Registered>(size)]
            {
                registered->m_manager.Initialize(false);
                registered->m_manager.Release(false);
            };
        });
}

} // namespace

void AddThreading()
{
    AddNotifier();
    AddBackgroundOperation();
    AddModules();
    Add("SmartPtrOwners", s_vecMany,
        [](std::size_t size)
        {
            return [owners = std::vector<smart_ptr<int>>(size, smart_ptr<int>(new int(1)))]
            {
                const smart_ptr<int> copy(owners.front());
                benchmark::DoNotOptimize(&copy);
            };
        });
    Add("MutexDepth", s_vecMany,
        [](std::size_t size)
        {
            const auto mutex = std::make_shared<Mutex>();
            for (std::size_t i = 0; i < size; ++i)
                mutex->Lock(Mutex::s_uInfinite);
            return [mutex]
            {
                mutex->Lock(Mutex::s_uInfinite);
                mutex->Unlock();
            };
        });
}

} // namespace ToolkitGrowth
