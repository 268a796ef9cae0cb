// SPDX-License-Identifier: MIT
#include "tests/plugin/Plugin.h"

#include <stdexcept>

#include "toolkit/core/LibModule.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/LogLine.h"

// Built several times, each with a PLUGIN_NAME of its own.

using namespace ToolkitTest;
using Toolkit::ILogger;
using Toolkit::LibModule;
using Toolkit::LibModuleManager;
using Toolkit::LogSeverity;
using Toolkit::smart_ptr;
using Toolkit::TString;

namespace
{

class PluginModule : public LibModule
{
public:
    void Initialize() override
    {
        m_note("+" PLUGIN_NAME);
        if (m_bFail)
            throw smart_ptr<PluginException>(new PluginException("module " PLUGIN_NAME));
    }
    void Release() override { m_note("-" PLUGIN_NAME); }

    Note m_note = nullptr;
    bool m_bFail = false;
};

// Drops what it is given; its code lies in this library.
class PluginSink : public ILogger
{
public:
    PluginSink() : ILogger(LogSeverity::Verbose) {}

    void Write(const TString<wchar_t>&) override {}
};

PluginModule s_module;

} // namespace

extern "C"
{
    TOOLKIT_API void PluginAttach(Note note)
    {
        s_module.m_note = note;
        LibModuleManager::s_pInstance->Register(&s_module);
    }

    TOOLKIT_API void PluginDetach()
    {
        LibModuleManager::s_pInstance->Unregister(&s_module);
    }

    TOOLKIT_API void PluginFail(bool fail)
    {
        s_module.m_bFail = fail;
    }

    TOOLKIT_API void PluginThrow(Thrown what)
    {
        if (what == Thrown::Shared)
            throw smart_ptr<PluginException>(new PluginException("from " PLUGIN_NAME));
        if (what == Thrown::Standard)
            throw std::out_of_range("from " PLUGIN_NAME);
    }

    TOOLKIT_API Thrown PluginCatch(Action action)
    {
        try
        {
            action();
        }
        catch (const smart_ptr<PluginException>& exception)
        {
            return exception->m_strText.empty() ? Thrown::Nothing : Thrown::Shared;
        }
        catch (const std::logic_error&)
        {
            return Thrown::Standard;
        }
        return Thrown::Nothing;
    }

    TOOLKIT_API const void* PluginEmpty(bool wide)
    {
        if (wide)
            return &TString<wchar_t>::Empty();
        return &TString<char>::Empty();
    }

    TOOLKIT_API void PluginLog(const wchar_t* message)
    {
        TOOLKIT_LOG(LogSeverity::Info) << message;
    }

    TOOLKIT_API void PluginInstallSink()
    {
        ILogger::SetLogger(smart_ptr<ILogger>(new PluginSink));
    }
}
