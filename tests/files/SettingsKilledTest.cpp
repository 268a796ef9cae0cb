// SPDX-License-Identifier: MIT
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/EndChild.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/Settings.h"

using Toolkit::Result;
using Toolkit::Settings;

namespace
{

const int s_iKeys = 2000;

// Both texts of the file: every key has the same number.
std::string Whole(int number)
{
    std::string text = "; a comment\n[a]\n";
    for (int key = 0; key < s_iKeys; ++key)
        text += "k" + std::to_string(key) + " = " + std::to_string(number) + "\n";
    return text;
}

void SetAll(Settings& settings, int number)
{
    for (int key = 0; key < s_iKeys; ++key)
        settings.Set("a", "k" + std::to_string(key), number).value();
}

} // namespace

// As often as TOOLKIT_KILLS says: the file is the old one or the new one, and can be loaded and saved.
TEST(SettingsKilled, ProcessThatSavesLeavesTheOldFileOrTheNew)
{
    const char* const often = std::getenv("TOOLKIT_KILLS");
    const int kills = often != nullptr ? std::atoi(often) : 20;
    const ToolkitTest::TemporaryFolder folder;
    const std::string path = folder.Path("a.ini");
    const std::string contents[] = {Whole(0), Whole(1)};
    std::mt19937 random(7);
    ToolkitTest::WriteBytes(path, contents[0]);
    int changed = 0;
    std::string before = contents[0];
    for (int kill = 0; kill < kills; ++kill)
    {
        const pid_t child = fork();
        if (child == 0)
        {
            Settings settings = Settings::Load(path).value();
            for (int number = before == contents[0] ? 1 : 0;; number = 1 - number)
            {
                SetAll(settings, number);
                if (!settings.Save())
                    ToolkitTest::EndChild(1);
            }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        ASSERT_TRUE(WIFSIGNALED(status));
        const std::string left = ToolkitTest::ReadBytes(path);
        ASSERT_TRUE(left == contents[0] || left == contents[1]) << left.size();
        changed += left != before ? 1 : 0;
        before = left;
    }
    Settings settings = Settings::Load(path).value();
    SetAll(settings, 1);
    const Result<void> saved = settings.Save();
    EXPECT_TRUE(saved) << saved.error().Message();
    EXPECT_EQ(contents[1], ToolkitTest::ReadBytes(path));
    RecordProperty("changed", changed);
}
