// SPDX-License-Identifier: MIT
#include "toolkit/core/ToolkitModule.h"

#include <new>

#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/log/ILogger.h"

namespace Toolkit
{

namespace
{

template <class T>
T* New()
{
    return new T;
}

template <class T, class Made = T*>
void Create(Made (*make)() = &New<T>)
{
    if (T::s_pInstance == nullptr)
        T::s_pInstance = new smart_ptr<T>(make());
}

template <class T>
void Destroy()
{
    // Not made null first, which would take memory.
    delete T::s_pInstance;
    T::s_pInstance = nullptr;
}

} // namespace

ToolkitModule::ToolkitModule() = default;

ToolkitModule::~ToolkitModule() = default;

// The order of creation: what logs comes after the logger, what asks for folders after the path manager. A
// new singleton gets one line here and one in `Release`, where the order is another.
void ToolkitModule::Initialize()
{
    Create<ILogger>(&ILogger::Create);
    ILogger::SetBridge();
    Create<SystemInfo>();
    Create<Version>(&Version::Create);
    Create<PathManager>();
    Create<RestartManagment>();
    Create<SingleApplicationInstance>();
}

// The order of destruction, which hosts rely on. The logger goes last, after the host's sink was replaced
// first.
void ToolkitModule::Release()
{
    try
    {
        ILogger::SetLogger(smart_ptr<ILogger>());
    }
    catch (const std::bad_alloc&)
    {
        // The host's sink then stays until the logger goes: nothing keeps the teardown from its end.
    }
    Destroy<SingleApplicationInstance>();
    Destroy<PathManager>();
    Destroy<Version>();
    Destroy<SystemInfo>();
    Destroy<RestartManagment>();
    Destroy<ILogger>();
}

} // namespace Toolkit
