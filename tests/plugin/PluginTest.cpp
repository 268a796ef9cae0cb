// SPDX-License-Identifier: MIT
#include "tests/plugin/Plugin.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "tests/plugin/Library.h"
#include "toolkit/app/DynamicLibrary.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/log/ILogger.h"

using namespace ToolkitTest;
using Toolkit::DynamicLibrary;
using Toolkit::ILogger;
using Toolkit::LibModuleManager;
using Toolkit::LogSeverity;
using Toolkit::smart_ptr;
using Toolkit::Text;
using Toolkit::ToolkitSession;
using Toolkit::TString;

// A host that is linked with the library, and two plug-ins that it opens, each with names of its own.

namespace
{

using Journal = std::vector<std::string>;

Journal s_journal;

void Record(const char* event)
{
    s_journal.push_back(event);
}

class CollectingSink : public ILogger
{
public:
    CollectingSink() : ILogger(LogSeverity::Verbose) {}

    void Write(const TString<wchar_t>& text) override { m_lines.push_back(text); }

    std::vector<TString<wchar_t>> m_lines;
};

class PluginTest : public testing::Test
{
protected:
    void SetUp() override { s_journal.clear(); }

    Library m_a{PLUGIN_A};
    Library m_b{PLUGIN_B};
    // After the libraries, so that nothing of theirs is used when they go.
    ToolkitSession m_session;
};

// What the plug-in `a` throws when asked to.
const Library* s_pThrower = nullptr;

void ThrowShared()
{
    s_pThrower->Find<ToolkitTest::PluginThrow>("PluginThrow")(Thrown::Shared);
}

void ThrowStandard()
{
    s_pThrower->Find<ToolkitTest::PluginThrow>("PluginThrow")(Thrown::Standard);
}

} // namespace

TEST_F(PluginTest, ModulesOfPluginsRunWithTheHostsManager)
{
    m_a.Find<PluginAttach>("PluginAttach")(&Record);
    m_b.Find<PluginAttach>("PluginAttach")(&Record);
    LibModuleManager::s_pInstance->Release(false);
    EXPECT_EQ((Journal{"+a", "+b", "-b", "-a"}), s_journal);
    m_a.Find<PluginDetach>("PluginDetach")();
    LibModuleManager::s_pInstance->Initialize(false);
    EXPECT_EQ((Journal{"+a", "+b", "-b", "-a", "+b"}), s_journal);
    m_b.Find<PluginDetach>("PluginDetach")();
    EXPECT_EQ("-b", s_journal.back());
}

TEST_F(PluginTest, EmptyIsTheSameObjectInHostAndPlugins)
{
    for (const Library* library : {&m_a, &m_b})
    {
        const PluginEmpty empty = library->Find<PluginEmpty>("PluginEmpty");
        EXPECT_EQ(&TString<wchar_t>::Empty(), empty(true));
        EXPECT_EQ(&TString<char>::Empty(), empty(false));
    }
}

TEST_F(PluginTest, SharedExceptionOfAPluginIsCaughtInTheHost)
{
    s_pThrower = &m_a;
    std::string text;
    try
    {
        ThrowShared();
    }
    catch (const smart_ptr<PluginException>& exception)
    {
        text = exception->m_strText;
    }
    EXPECT_EQ("from a", text);
}

TEST_F(PluginTest, StandardExceptionOfAPluginIsCaughtInTheHost)
{
    s_pThrower = &m_b;
    EXPECT_THROW(ThrowStandard(), std::out_of_range);
}

TEST_F(PluginTest, ExceptionsOfAPluginAreCaughtInTheOther)
{
    const PluginCatch inB = m_b.Find<PluginCatch>("PluginCatch");
    s_pThrower = &m_a;
    EXPECT_EQ(Thrown::Shared, inB(&ThrowShared));
    EXPECT_EQ(Thrown::Standard, inB(&ThrowStandard));
}

TEST_F(PluginTest, ExceptionOfAPluginsModulePassesThroughTheManager)
{
    m_a.Find<PluginFail>("PluginFail")(true);
    const PluginAttach attach = m_a.Find<PluginAttach>("PluginAttach");
    EXPECT_THROW(attach(&Record), smart_ptr<PluginException>);
    EXPECT_THROW(LibModuleManager::s_pInstance->Initialize(false), smart_ptr<PluginException>);
    m_a.Find<PluginDetach>("PluginDetach")();
    m_a.Find<PluginFail>("PluginFail")(false);
}

TEST_F(PluginTest, PluginLogsThroughTheHostsSink)
{
    const smart_ptr<ILogger> sink(new CollectingSink);
    ILogger::SetLogger(sink);
    m_a.Find<PluginLog>("PluginLog")(L"gr\u00fc\u00df dich");
    const std::vector<TString<wchar_t>>& lines = static_cast<const CollectingSink&>(*sink).m_lines;
    ASSERT_EQ(1U, lines.size());
    EXPECT_TRUE(lines[0].Contains(L" : PluginLog : gr\u00fc\u00df dich\n")) << lines[0].size();
}

TEST_F(PluginTest, HostMayDestroyASinkOfAPlugin)
{
    m_a.Find<PluginInstallSink>("PluginInstallSink")();
    m_b.Find<PluginLog>("PluginLog")(L"into the other plug-in's sink");
    ILogger::SetLogger(smart_ptr<ILogger>());
    EXPECT_FALSE(ILogger::s_pInstance->IsNull());
}

TEST(Plugin, IsUnloadedWhenTheHostClosesIt)
{
    const ToolkitSession session;
    for (int i = 0; i < 3; ++i)
    {
        {
            const Library plugin(PLUGIN_A);
            plugin.Find<PluginAttach>("PluginAttach")(&Record);
            plugin.Find<PluginEmpty>("PluginEmpty")(true);
            plugin.Find<PluginDetach>("PluginDetach")();
            EXPECT_TRUE(Library::IsLoaded(PLUGIN_A));
        }
        EXPECT_FALSE(Library::IsLoaded(PLUGIN_A));
    }
}

TEST(Plugin, ModulesThatNobodyTookBackAreForgottenWhenTheirLibraryIsClosed)
{
    for (const bool librariesFirst : {false, true})
    {
        s_journal.clear();
        std::vector<std::unique_ptr<DynamicLibrary>> outside;
        {
            const ToolkitSession session;
            std::vector<std::unique_ptr<DynamicLibrary>> inside;
            std::vector<std::unique_ptr<DynamicLibrary>>& libraries = librariesFirst ? outside : inside;
            for (const char* const path : {PLUGIN_A, PLUGIN_B})
            {
                libraries.push_back(std::make_unique<DynamicLibrary>(*Text::ToWide(path)));
                void* const attach = libraries.back()->GetSymbol(L"PluginAttach");
                ASSERT_NE(nullptr, attach);
                reinterpret_cast<PluginAttach>(attach)(&Record);
            }
            EXPECT_EQ((Journal{"+a", "+b"}), s_journal);
        }
        EXPECT_EQ(librariesFirst ? (Journal{"+a", "+b", "-b", "-a"}) : (Journal{"+a", "+b"}), s_journal);
    }
    EXPECT_FALSE(Library::IsLoaded(PLUGIN_A));
    EXPECT_FALSE(Library::IsLoaded(PLUGIN_B));
}
