// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "tests/support/InstalledLogger.h"
#include "tests/support/RecordingSink.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/RunLog.h"

using Toolkit::ILogger;
using Toolkit::IniFile;
using Toolkit::LogSeverity;
using Toolkit::SetSeverity;
using Toolkit::TString;

namespace
{

thread_local int t_iAllocations = 0;

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size)
{
    ++t_iAllocations;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace
{

// How often `work` asks for memory on this thread.
template <class Work>
int AllocationsOf(Work work)
{
    const int before = t_iAllocations;
    work();
    return t_iAllocations - before;
}

} // namespace

TEST(Allocation, IsCounted)
{
    EXPECT_EQ(1, AllocationsOf([] { ::operator delete(::operator new(4)); }));
}

TEST(Allocation, DroppedLineTakesNone)
{
    ToolkitTest::Record record;
    const ToolkitTest::InstalledLogger installed(
        new ToolkitTest::RecordingLogger(record, LogSeverity::Error));
    const TString<wchar_t> wide(L"a text that is too long to be kept in place");
    const TString<char> narrow("a text that is too long to be kept in place");
    EXPECT_EQ(0, AllocationsOf([&] { TOOLKIT_LOG(LogSeverity::Info) << wide << narrow << 42 << 1.5; }));
    EXPECT_EQ(0, AllocationsOf(
                     [&]
                     {
                         **ILogger::s_pInstance << SetSeverity(LogSeverity::Info) << 2U << L" " << 123456U
                                                << L" : " << 42 << L" : " << "Function" << L" : " << wide
                                                << narrow << 1.5 << L"\n";
                     }));
    EXPECT_EQ(L"", record.Text());
}

TEST(Allocation, LineOfARunLogTakesNone)
{
    const ToolkitTest::TemporaryFolder folder;
    const auto log =
        Toolkit::RunLog::Open(Toolkit::RunLogOptions("line").Folder(folder.Path()).MaxSize(0)).value();
    const ToolkitTest::InstalledSinks installed({log});
    const auto work = [] { TOOLKIT_LOG(LogSeverity::Info) << "a text of the usual length, or so, " << 42; };
    // A second may begin meanwhile, whose time is laid out anew.
    int fewest = AllocationsOf(work);
    for (int i = 0; i < 3; ++i)
        fewest = std::min(fewest, AllocationsOf(work));
    EXPECT_EQ(0, fewest);
}

TEST(Allocation, LookUpInSettingsTakesNone)
{
    const ToolkitTest::TemporaryFolder folder;
    ToolkitTest::WriteBytes(folder.Path("settings.ini"),
                            "[a section with a long name]\na key with a long name=a value with a long text\n"
                            "[numbers]\nnumber=42\n");
    const IniFile file(folder.Wide("settings.ini"));
    const TString<wchar_t> section(L"a section with a long name");
    const TString<wchar_t> key(L"a key with a long name");
    const TString<wchar_t> missing(L"a key that is not there at all");
    const TString<wchar_t> numbers(L"numbers");
    const TString<wchar_t> number(L"number");
    const TString<wchar_t> fallback;
    EXPECT_EQ(0, AllocationsOf(
                     [&]
                     {
                         EXPECT_TRUE(file.HasSection(section));
                         EXPECT_TRUE(file.HasValue(section, key));
                         EXPECT_EQ(L"a value with a long text", file.GetValue(section, key, fallback));
                         EXPECT_EQ(&fallback, &file.GetValue(section, missing, fallback));
                         EXPECT_EQ(&fallback, &file.GetValue(missing, key, fallback));
                         EXPECT_EQ(42, file.GetInt32(numbers, number, 7));
                         EXPECT_EQ(42U, file.GetUint32(numbers, number, 7));
                         EXPECT_EQ(7, file.GetInt32(numbers, missing, 7));
                         EXPECT_TRUE(file.GetBool(section, missing, true));
                     }));
}
