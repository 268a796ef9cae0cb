// SPDX-License-Identifier: MIT
#include "toolkit/app/DynamicLibrary.h"

#include <clocale>
#include <filesystem>
#include <string>
#include <type_traits>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::DynamicLibrary;
using Toolkit::TString;
using Toolkit::UTF8;
using ToolkitTest::CapturedOutput;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

static_assert(!std::is_copy_constructible_v<DynamicLibrary>);
static_assert(!std::is_convertible_v<TString<wchar_t>, DynamicLibrary>);

namespace
{

using Wide = TString<wchar_t>;

// A real library of the test's own, loaded by nobody else: its file is a copy.
class Library
{
public:
    explicit Library(const std::string& name = "answer.so") : m_strName(name)
    {
        std::filesystem::copy_file(TOOLKIT_ANSWER, m_folder.Path(name));
    }

    Wide Path() const { return m_folder.Wide(m_strName); }
    bool IsLoaded() const
    {
        void* const handle = dlopen(m_folder.Path(m_strName).c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr)
            dlclose(handle);
        return handle != nullptr;
    }

private:
    const TemporaryFolder m_folder;
    const std::string m_strName;
};

// What the library's function answers; -1 without it.
int Call(const DynamicLibrary& library, const Wide& function)
{
    using Function = int (*)();
    void* const symbol = library.GetSymbol(function);
    return symbol != nullptr ? reinterpret_cast<Function>(symbol)() : -1;
}

int CallAnswer(const DynamicLibrary& library)
{
    return Call(library, L"ToolkitTestAnswer");
}

} // namespace

TEST(DynamicLibrary, LoadsALibraryAndFindsItsSymbols)
{
    const Library file;
    const DynamicLibrary library(file.Path());
    EXPECT_EQ(library.GetPath(), file.Path());
    EXPECT_EQ(CallAnswer(library), 42);
    ASSERT_NE(library.GetSymbol(L"ToolkitTestNumber"), nullptr);
    EXPECT_EQ(*static_cast<int*>(library.GetSymbol(L"ToolkitTestNumber")), 7);
}

TEST(DynamicLibrary, FindsNoSymbolOfAWrongName)
{
    const Library file;
    const DynamicLibrary library(file.Path());
    CapturedOutput errors(2);
    for (const Wide& name : {Wide(L"Missing"), Wide(L""), Wide(L"\u00E4"), Wide(L"toolkittestanswer"),
                             Wide(std::wstring(L"ToolkitTestAnswer\0x", 19)),
                             Wide(std::wstring(1, static_cast<wchar_t>(0xD800)))})
        EXPECT_EQ(library.GetSymbol(name), nullptr);
    EXPECT_EQ(errors.Stop(), "");
}

TEST(DynamicLibrary, FindsNothingWhileNothingIsLoaded)
{
    CapturedOutput errors(2);
    DynamicLibrary library;
    EXPECT_EQ(library.GetPath(), L"");
    EXPECT_EQ(library.GetSymbol(L"malloc"), nullptr);
    EXPECT_EQ(library.Detach(), nullptr);
    EXPECT_EQ(errors.Stop(), "");
}

TEST(DynamicLibrary, LoadsNothingQuietlyFromABadPath)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text.so"), "no library");
    WriteBytes(folder.Path("empty.so"), "");
    std::filesystem::create_directory(folder.Path("folder.so"));
    ASSERT_EQ(mkfifo(folder.Path("fifo.so").c_str(), 0600), 0);
    const Wide bad[] = {L"",
                        folder.Wide("missing.so"),
                        folder.Wide("missing"),
                        folder.Wide("text.so"),
                        folder.Wide("empty.so"),
                        folder.Wide("folder.so"),
                        folder.Wide("fifo.so"),
                        folder.Wide("fifo"),
                        folder.Wide(),
                        L"/",
                        std::wstring(1, static_cast<wchar_t>(0xD800)),
                        std::wstring(1, L'\0')};
    CapturedOutput errors(2);
    for (const Wide& path : bad)
    {
        DynamicLibrary library(path);
        EXPECT_EQ(library.GetPath(), path);
        EXPECT_EQ(library.GetSymbol(L"malloc"), nullptr);
        EXPECT_EQ(library.Detach(), nullptr);
    }
    EXPECT_EQ(errors.Stop(), "");
}

TEST(DynamicLibrary, LoadsNothingFromAPathThatGoesOnBehindAZero)
{
    const Library file;
    EXPECT_EQ(CallAnswer(DynamicLibrary(file.Path() + Wide(std::wstring(L"\0x", 2)))), -1);
    EXPECT_FALSE(file.IsLoaded());
}

TEST(DynamicLibrary, LoadsNothingThatIsCutShort)
{
    const TemporaryFolder folder;
    const std::string whole = ToolkitTest::ReadBytes(TOOLKIT_ANSWER);
    for (const std::size_t length : {std::size_t{1}, std::size_t{100}, whole.size() / 8})
    {
        WriteBytes(folder.Path("part.so"), whole.substr(0, length));
        EXPECT_EQ(-1, CallAnswer(DynamicLibrary(folder.Wide("part.so")))) << length;
    }
}

TEST(DynamicLibrary, LoadsOnceMoreWhatIsLoadedAndHasLostItsFile)
{
    const TemporaryFolder folder;
    std::filesystem::copy_file(TOOLKIT_ANSWER, folder.Path("answer.so"));
    const DynamicLibrary first(folder.Wide("answer.so"));
    std::filesystem::remove(folder.Path("answer.so"));
    EXPECT_EQ(42, CallAnswer(first));
    EXPECT_EQ(42, CallAnswer(DynamicLibrary(folder.Wide("answer.so"))));
}

TEST(DynamicLibrary, LoadsANonAsciiPathInTheCLocale)
{
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    const Library file("pl\xC3\xBCgin \xD0\x96.so");
    EXPECT_EQ(CallAnswer(DynamicLibrary(file.Path())), 42);
}

TEST(DynamicLibrary, AddsTheExtensionToANameWithoutOne)
{
    const struct
    {
        const char* file;
        const wchar_t* given;
        int answer;
    } rows[] = {
        {"answer.so", L"answer", 42},   {"answer.so", L"answer.so", 42}, {"answer.so.1", L"answer.so.1", 42},
        {"answer..so", L"answer.", 42}, {".answer.so", L".answer", 42},  {"answer", L"answer", -1},
    };
    for (const auto& row : rows)
    {
        const Library file(row.file);
        Wide path = file.Path();
        path.replace(path.rfind(L'/') + 1, Wide::npos, row.given);
        EXPECT_EQ(CallAnswer(DynamicLibrary(path)), row.answer) << row.file;
    }
}

TEST(DynamicLibrary, SearchesForANameWithoutAFolder)
{
    EXPECT_NE(DynamicLibrary(L"libc.so.6").GetSymbol(L"malloc"), nullptr);
}

TEST(DynamicLibrary, LoadsNothingThatCannotBeResolvedAtOnce)
{
    void* const lazy = dlopen(TOOLKIT_NEEDS_ANSWER, RTLD_LAZY);
    ASSERT_NE(lazy, nullptr) << dlerror();
    dlclose(lazy);
    const DynamicLibrary library(UTF8::ToUNICODE(TString<char>(TOOLKIT_NEEDS_ANSWER)));
    EXPECT_EQ(library.GetSymbol(L"ToolkitTestAsks"), nullptr);
}

TEST(DynamicLibrary, OffersItsSymbolsToLibrariesLoadedLater)
{
    const Library file;
    const DynamicLibrary answering(file.Path());
    const DynamicLibrary asking(UTF8::ToUNICODE(TString<char>(TOOLKIT_NEEDS_ANSWER)));
    EXPECT_EQ(Call(asking, L"ToolkitTestAsks"), 43);
}

TEST(DynamicLibrary, UnloadsTheLibraryWhenItGoes)
{
    const Library file;
    int unloads = 0;
    {
        const DynamicLibrary library(file.Path());
        *static_cast<int**>(library.GetSymbol(L"ToolkitTestUnloads")) = &unloads;
        EXPECT_TRUE(file.IsLoaded());
        EXPECT_EQ(unloads, 0);
    }
    EXPECT_EQ(unloads, 1);
    EXPECT_FALSE(file.IsLoaded());
}

TEST(DynamicLibrary, LeavesADetachedLibraryToTheCaller)
{
    const Library file;
    void* handle = nullptr;
    {
        DynamicLibrary library(file.Path());
        handle = library.Detach();
        EXPECT_EQ(library.GetSymbol(L"ToolkitTestAnswer"), nullptr);
        EXPECT_EQ(library.Detach(), nullptr);
    }
    ASSERT_NE(handle, nullptr);
    EXPECT_TRUE(file.IsLoaded());
    EXPECT_NE(dlsym(handle, "ToolkitTestAnswer"), nullptr);
    DynamicLibrary::Unload(handle);
    EXPECT_FALSE(file.IsLoaded());
}

TEST(DynamicLibrary, IgnoresTheUnloadingOfNothing)
{
    CapturedOutput errors(2);
    DynamicLibrary::Unload(nullptr);
    EXPECT_EQ(errors.Stop(), "");
}
