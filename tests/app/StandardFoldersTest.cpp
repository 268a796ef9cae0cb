// SPDX-License-Identifier: MIT
#include "toolkit/internal/folders/StandardFolders.h"

#include <gtest/gtest.h>
#include <wx/init.h>
#include <wx/stdpaths.h>

#include "tests/support/ScopedLocale.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/internal/wx/WxText.h"

using Toolkit::FromWx;
namespace StandardFolders = Toolkit::StandardFolders;
using ToolkitTest::CapturedOutput;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::ScopedLocale;

TEST(StandardFolders, TakesTheKernelsMarkFromADeletedExecutable)
{
    const struct
    {
        const char* link;
        bool isRealName;
        const char* path;
    } rows[] = {
        {"/bin/tool", true, "/bin/tool"},
        {"/bin/tool", false, "/bin/tool"},
        {"/bin/tool (deleted)", false, "/bin/tool"},
        {"/bin/tool (deleted)", true, "/bin/tool (deleted)"},
        {"/bin/tool (deleted) (deleted)", false, "/bin/tool (deleted)"},
        {"/bin/tool(deleted)", false, "/bin/tool(deleted)"},
        {"", false, ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(StandardFolders::Unmark(row.link, row.isRealName), row.path) << row.link;
}

TEST(StandardFolders, FindsTheInstallationAroundTheLastBinFolder)
{
    const struct
    {
        const wchar_t* executable;
        const wchar_t* prefix;
    } rows[] = {
        {L"/usr/bin/tool", L"/usr"},   {L"/opt/bin/x/bin/tool", L"/opt/bin/x"},
        {L"/opt/bin/x/tool", L"/opt"}, {L"/bin/tool", L"/usr/local"},
        {L"/opt/tool", L"/usr/local"}, {L"/opt/sbin/tool", L"/usr/local"},
        {L"", L"/usr/local"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(StandardFolders::InstallPrefix(row.executable), row.prefix);
}

TEST(StandardFolders, FindsAHomeWhereTheEnvironmentNamesNone)
{
    CapturedOutput errors(2);
    const ScopedEnvironment outer("HOME", nullptr);
    const auto local = StandardFolders::UserLocalData();
    const auto documents = StandardFolders::Documents();
    for (const char* const home : {static_cast<const char*>(nullptr), "", "\xFF"})
    {
        const ScopedEnvironment environment("HOME", home);
        EXPECT_EQ(StandardFolders::UserLocalData(), local);
        EXPECT_EQ(StandardFolders::Documents(), documents);
        const wxInitializer started;
        EXPECT_EQ(StandardFolders::UserLocalData(), local);
        EXPECT_EQ(StandardFolders::Documents(), documents);
    }
    unsetenv("HOME");
    const ScopedLocale readsAnyPath("C.UTF-8");
    const wxInitializer started;
    EXPECT_EQ(local, FromWx(wxStandardPaths::Get().GetUserLocalDataDir()));
    EXPECT_EQ(documents, FromWx(wxStandardPaths::Get().GetDocumentsDir()));
    EXPECT_EQ(errors.Stop(), "");
}
