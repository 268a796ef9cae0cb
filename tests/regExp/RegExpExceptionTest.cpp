// SPDX-License-Identifier: MIT
#include "toolkit/regExp/RegExp.Exceptions"

#include <type_traits>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "tests/regExp/RegExpExceptionPlugin.h"
#include "tests/support/RegExpSupport.h"

using namespace Toolkit;
using namespace ToolkitTest;

namespace
{

using Thrown = smart_ptr<RegExpException, smart_ptr_policy>;

// A library that is loaded as a plug-in is: its symbols are seen by nobody else.
class Plugin
{
public:
    Plugin() : m_pHandle(dlopen(TOOLKIT_TEST_REGEXP_PLUGIN, RTLD_NOW | RTLD_LOCAL)) {}
    ~Plugin()
    {
        if (m_pHandle != nullptr)
            dlclose(m_pHandle);
    }

    bool IsLoaded() const { return m_pHandle != nullptr; }

    template <class Function>
    Function* Get(const char* name) const
    {
        return reinterpret_cast<Function*>(dlsym(m_pHandle, name));
    }

private:
    void* const m_pHandle;
};

} // namespace

TEST(RegExpException, ThrowsSharedPointerWithAllFields)
{
    try
    {
        RegExpException::Throw(L"so \u20AC");
    }
    catch (const Thrown& exception)
    {
        EXPECT_EQ("so \xE2\x82\xAC", exception->GetMessage());
        EXPECT_EQ("toolkit/regExp/RegExp.Exceptions", exception->GetFile());
        EXPECT_EQ(std::string("\x07"), exception->GetLine());
        EXPECT_EQ("Throw", exception->GetFunction());
        EXPECT_STREQ("so \xE2\x82\xAC", exception->what());
        return;
    }
    FAIL() << "another type was thrown";
}

TEST(RegExpException, IsNotThrownAsItself)
{
    EXPECT_THROW(
        {
            try
            {
                RegExpException::Throw(L"x");
            }
            catch (const std::exception&)
            {
            }
        },
        Thrown);
}

TEST(RegExpException, MessageThatHasNoUtf8IsEmpty)
{
    EXPECT_EQ("", MessageOf([] { RegExpException::Throw(L"a\xD800"); }));
}

TEST(RegExpException, DestructorPromisesNotToThrow)
{
    EXPECT_TRUE((std::is_base_of_v<std::exception, RegExpException>));
    EXPECT_TRUE(std::has_virtual_destructor_v<RegExpException>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<RegExpException>);
}

TEST(RegExpException, OutlivesItsHandlerThroughACopy)
{
    Thrown kept;
    try
    {
        Pattern("(").IsMatch("x");
    }
    catch (const Thrown& exception)
    {
        kept = exception;
    }
    ASSERT_FALSE(kept.IsNull());
    EXPECT_STREQ(" : missing ) (@offset: 1) (ror ", kept->what());
}

TEST(RegExpException, IsCaughtInAPlugin)
{
    const Plugin plugin;
    ASSERT_TRUE(plugin.IsLoaded()) << dlerror();
    auto* const tryPattern = plugin.Get<TryPattern>("TryPatternInPlugin");
    ASSERT_NE(nullptr, tryPattern);
    char message[100] = "";
    EXPECT_TRUE(tryPattern("(", "x", message, sizeof message));
    EXPECT_STREQ(" : missing ) (@offset: 1) (ror ", message);
    EXPECT_FALSE(tryPattern("a", "bab", message, sizeof message));
}

TEST(RegExpException, IsCaughtWhenAPluginLetsItPass)
{
    const Plugin plugin;
    ASSERT_TRUE(plugin.IsLoaded()) << dlerror();
    auto* const letPass = plugin.Get<LetPass>("LetPassInPlugin");
    ASSERT_NE(nullptr, letPass);
    EXPECT_EQ("from the plug-in", MessageOf([&] { letPass(L"from the plug-in"); }));
}

TEST(RegExpException, IsCaughtInAPluginWhenTheHostThrows)
{
    const Plugin plugin;
    ASSERT_TRUE(plugin.IsLoaded()) << dlerror();
    auto* const callBack = plugin.Get<CallBack>("CallBackFromPlugin");
    ASSERT_NE(nullptr, callBack);
    EXPECT_TRUE(callBack([] { RegExpException::Throw(L"from the host"); }));
    EXPECT_FALSE(callBack([] {}));
}
