// SPDX-License-Identifier: MIT
#include "tests/support/LogFile.h"

#include <algorithm>
#include <atomic>
#include <filesystem>

#include <unistd.h>

#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/encoding/UTF8.h"

namespace ToolkitTest
{

namespace
{

std::string UniqueName()
{
    static std::atomic<int> s_iCount{0};
    return "toolkit-test-" + std::to_string(getpid()) + "x" + std::to_string(++s_iCount);
}

} // namespace

LogFile::LogFile() : m_strName(UniqueName()) {}

LogFile::~LogFile()
{
    std::error_code ignored;
    std::filesystem::remove_all(Path(), ignored);
    for (const std::string& path : FallbackPaths())
        std::filesystem::remove(path, ignored);
}

Toolkit::TString<wchar_t> LogFile::WideName() const
{
    return Toolkit::UTF8::ToUNICODE(m_strName);
}

std::string LogFile::Path() const
{
    return "/tmp/" + m_strName + ".vxlog";
}

std::string LogFile::Bytes() const
{
    return ReadBytes(Path());
}

testing::AssertionResult LogFile::BecomesWrittenUpTo(const std::string& bytes, std::size_t offset) const
{
    const std::string place = "pos:\t" + std::to_string(offset) + "\n";
    std::string written;
    std::string descriptor;
    const auto isThere = [&]
    {
        written = Bytes();
        descriptor = ReadBytes("/proc/self/fdinfo/" + std::to_string(DescriptorOf(Path())));
        return written == bytes && descriptor.compare(0, place.size(), place) == 0;
    };
    return WaitUntil(isThere) ? testing::AssertionSuccess()
                              : testing::AssertionFailure() << written << '\n'
                                                            << descriptor;
}

std::vector<std::string> LogFile::FallbackPaths() const
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator("/tmp"))
    {
        const std::string name = entry.path().filename();
        const std::string start = m_strName + "-";
        const std::string end = ".vxlog";
        if (name.size() <= start.size() + end.size() || name.compare(0, start.size(), start) != 0 ||
            name.compare(name.size() - end.size(), end.size(), end) != 0)
            continue;
        const std::string ticks = name.substr(start.size(), name.size() - start.size() - end.size());
        if (std::all_of(ticks.begin(), ticks.end(), [](char digit) { return digit >= '0' && digit <= '9'; }))
            paths.push_back(entry.path());
    }
    return paths;
}

std::string LogFile::FallbackBytes() const
{
    const std::vector<std::string> paths = FallbackPaths();
    EXPECT_EQ(1U, paths.size());
    return paths.size() == 1 ? ReadBytes(paths[0]) : "";
}

} // namespace ToolkitTest
