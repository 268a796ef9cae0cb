// SPDX-License-Identifier: MIT
#include "tests/examples/DeskSupport.h"

using ToolkitTest::DeskHome;
using ToolkitTest::ProgramResult;
using ToolkitTest::ReadBytes;
using ToolkitTest::TalkingProgram;
using ToolkitTest::WaitUntil;

namespace
{

class Desk : public DeskHome
{
protected:
    Desk() : DeskHome(DESK_PROGRAM) {}
};

} // namespace

TEST_F(Desk, HandsAFileToTheFirstAndEnds)
{
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(first->Answer(), "the mails are indexed in the background");
    EXPECT_EQ(first->Answer(), "6 mails are indexed");

    const ProgramResult second = Start("-open", Data("mails/../mails/1-garden.eml"));
    EXPECT_EQ(second.m_iExitCode, 0);
    EXPECT_EQ(second.m_strOutput, "handed to the first desk: open 1-garden.eml\n");
    EXPECT_EQ(first->Answer(),
              "opened 1-garden.eml: \"Seedlings for the community garden\", 2 places hidden");

    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "ends");
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, TakesCommandsWhileTheIndexIsUnderWay)
{
    const auto first = StartFirst({"-paused"});
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(first->Answer(), "the index is paused before the first mail");
    EXPECT_EQ(Start("-open", Data("notes/members.txt")).m_iExitCode, 0);
    EXPECT_EQ(first->Answer(), "opened members.txt: \"members.txt\", 10 places hidden");
    EXPECT_EQ(Send("resume"), 0);
    EXPECT_EQ(first->Answer(), "6 mails are indexed");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "ends");
}

TEST_F(Desk, QuitsWhileTheIndexIsUnderWay)
{
    const auto first = StartFirst({"-paused"});
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(first->Answer(), "the index is paused before the first mail");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "the index was stopped after 0 mails");
    EXPECT_EQ(first->Answer(), "ends");
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, StartsAgainInAProcessOfItsOwn)
{
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(first->Answer(), "the mails are indexed in the background");
    EXPECT_EQ(first->Answer(), "6 mails are indexed");
    EXPECT_EQ(Send("restart"), 0);
    EXPECT_EQ(first->Answer(), "ends, and starts again");
    EXPECT_EQ(first->Answer(), "restarted: the lock was there and is removed");
    EXPECT_EQ(first->End(), 0);
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(first->Answer(), "the mails are indexed in the background");
    EXPECT_EQ(first->Answer(), "6 mails are indexed");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "ends");
    // Nobody holds the output any more.
    EXPECT_EQ(first->Answer(), "");
}

TEST_F(Desk, IsFirstAfterOneThatWasKilled)
{
    const auto killed = StartFirst();
    EXPECT_EQ(killed->Answer(), "takes commands");
    killed->Kill();
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, HasNobodyToSendACommandTo)
{
    const ProgramResult alone = Start("-send", "quit");
    EXPECT_EQ(alone.m_iExitCode, 1);
    EXPECT_EQ(alone.m_strOutput, "no desk takes the command\n");
}

TEST_F(Desk, SaysThatItCannotOpenAFile)
{
    const auto first = StartFirst({"-open", "/nowhere/at-all.eml"});
    EXPECT_EQ(first->Answer(), "cannot open at-all.eml");
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, LeavesADamagedBundleOut)
{
    const std::string data = m_folder.Path("bundle");
    std::filesystem::create_directories(data + "/mails");
    ToolkitTest::WriteBytes(data + "/desk.ini", "[archive]\nfile = archive.zip\npattern = *\n");
    ToolkitTest::WriteBytes(data + "/archive.zip", "PK, but no archive");
    ToolkitTest::WriteBytes(data + "/mails/broken.eml", "Subject: \xff\xfe\n\n\x80");
    TalkingProgram first(m_strProgram, {"-data", data, "-log", m_strLog});
    EXPECT_EQ(first.Answer(), "takes commands");
    EXPECT_EQ(first.Answer(), "the mails are indexed in the background");
    EXPECT_EQ(first.Answer(), "0 mails are indexed");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first.End(), 0);
}

TEST_F(Desk, WritesToTheLogThatACommandIsNone)
{
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(Send("dance all night"), 0);
    EXPECT_TRUE(WaitUntil(
        [this] { return ReadBytes(LogPath()).find("desk: there is no such command") != std::string::npos; }));
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->End(), 0);
}
