// SPDX-License-Identifier: MIT
#include "tests/examples/DeskSupport.h"

using ToolkitTest::DeskHome;
using ToolkitTest::ProgramResult;
using ToolkitTest::ReadBytes;
using ToolkitTest::TalkingProgram;
using ToolkitTest::WriteBytes;

namespace
{

class Desk : public DeskHome
{
protected:
    Desk() : DeskHome(DESK_PROGRAM) {}

    // Reads up to a line; false when the program says everything but that.
    static bool Reaches(TalkingProgram& program, const std::string& line)
    {
        std::string said = program.Answer();
        while (said != line && !said.empty())
            said = program.Answer();
        return said == line;
    }
};

} // namespace

TEST_F(Desk, HandsAFileToTheFirstAndEnds)
{
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(first->Answer(), "the mails are indexed in the background");
    EXPECT_EQ(first->Answer(), "7 mails are indexed");

    const ProgramResult second = Start("-open", Data("mails/../mails/1-garden.eml"));
    EXPECT_EQ(second.m_iExitCode, 0);
    EXPECT_EQ(second.m_strOutput,
              "opened 1-garden.eml: \"Seedlings for the community garden\", 2 places hidden\n");
    EXPECT_EQ(first->Answer(),
              "opened 1-garden.eml: \"Seedlings for the community garden\", 2 places hidden");

    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "ends");
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, TakesCommandsWhileTheIndexIsUnderWay)
{
    const auto first = StartPaused();
    EXPECT_EQ(Start("-open", Data("notes/members.txt")).m_iExitCode, 0);
    EXPECT_EQ(first->Answer(), "opened members.txt: \"members.txt\", 10 places hidden");
    EXPECT_EQ(Send("resume"), 0);
    EXPECT_EQ(first->Answer(), "7 mails are indexed");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "ends");
}

TEST_F(Desk, QuitsWhileTheIndexIsUnderWay)
{
    const auto first = StartPaused();
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "the index was stopped after 0 mails");
    EXPECT_EQ(first->Answer(), "ends");
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, CancelsTheIndex)
{
    const auto first = StartPaused();
    EXPECT_EQ(Send("cancel"), 0);
    EXPECT_EQ(first->Answer(), "the index was stopped after 0 mails");
    EXPECT_EQ(Ask("list"), "");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "ends");
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, AnswersWithTheMails)
{
    const auto first = StartFirst();
    EXPECT_TRUE(Reaches(*first, "7 mails are indexed"));
    EXPECT_EQ(Ask("status"), "7 of 7 mails\n");
    EXPECT_THAT(
        Ask("list"),
        testing::HasSubstr("2026-03-03 10:42 | Amélie Rousseau <amelie@example.fr> | Lunch on Thursday | "
                           "Salut Samuel, le café près de la gare a rouvert. Le menu du...\n"));
    EXPECT_EQ(Send("quit"), 0);
}

TEST_F(Desk, WritesAChangedSettingBack)
{
    std::filesystem::create_directories(std::filesystem::path(SettingsPath()).parent_path());
    WriteBytes(SettingsPath(), "; mine\n[view]\npreview = 9\n");
    {
        const auto first = StartFirst({"-paused"});
        EXPECT_EQ(first->Answer(), "takes commands");
        EXPECT_EQ(Send("set view/preview 5"), 0);
        EXPECT_EQ(Send("set index/rest 1"), 0);
        // Another program writes the file, too; its line stays.
        WriteBytes(SettingsPath(), ReadBytes(SettingsPath()) + "\n[other]\nkey = value\n");
        EXPECT_EQ(Send("set view/hide no"), 0);
        EXPECT_EQ(Send("quit"), 0);
        EXPECT_EQ(first->End(), 0);
    }
    EXPECT_THAT(ReadBytes(SettingsPath()),
                testing::AllOf(testing::StartsWith("; mine\n[view]\npreview = 5\nhide = no\n"),
                               testing::HasSubstr("key = value\n"), testing::HasSubstr("rest = 1\n")));
    const auto again = StartFirst();
    EXPECT_TRUE(Reaches(*again, "7 mails are indexed"));
    EXPECT_THAT(Ask("list"), testing::HasSubstr("| Lunch on Thursday | Salut...\n"));
    EXPECT_EQ(Ask("open " + Data("mails/1-garden.eml")),
              "opened 1-garden.eml: \"Seedlings for the community garden\", 0 places hidden\n");
    EXPECT_EQ(Send("quit"), 0);
}

TEST_F(Desk, LivesWithOddSettings)
{
    std::filesystem::create_directories(std::filesystem::path(SettingsPath()).parent_path());
    WriteBytes(SettingsPath(),
               "lost = 1\n[]\nkey = 2\n[view]\n = 3\n;x\n[a]b]\nq = \"\n preview = 7 \t\nhide\n"
               "hide = perhaps\npreview = many\n[index]\nrest = -5\n");
    const auto first = StartFirst();
    EXPECT_TRUE(Reaches(*first, "7 mails are indexed"));
    EXPECT_EQ(Send("set view/preview 5"), 0);
    EXPECT_TRUE(Reaches(*first, "7 mails are indexed"));
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, EndsWithAReasonWhenTheSettingsAreNoText)
{
    std::filesystem::create_directories(std::filesystem::path(SettingsPath()).parent_path());
    WriteBytes(SettingsPath(), "[view]\nname = \xff\n");
    const auto first = StartFirst();
    EXPECT_THAT(first->Answer(), testing::HasSubstr("desk.ini"));
    EXPECT_EQ(first->End(), 1);
}

TEST_F(Desk, RefusesASettingWithoutASection)
{
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    const ProgramResult refused = Start("-send", "set preview 5");
    EXPECT_EQ(refused.m_iExitCode, 2);
    EXPECT_EQ(refused.m_strOutput, "a setting is SECTION/KEY VALUE\n");
    EXPECT_EQ(Send("quit"), 0);
}

TEST_F(Desk, HandsAnAttachmentToItsProgram)
{
    const auto first = StartPaused();
    EXPECT_EQ(Ask("attachment " + Data("mails/5-roster.eml")), "roster.txt is handed to its program\n");
    EXPECT_EQ(first->Answer(), "roster.txt");
    EXPECT_EQ(first->Answer(), "2026-06-08 Amélie Rousseau");
    const ProgramResult none = Start("-send", "attachment " + Data("mails/1-garden.eml"));
    EXPECT_EQ(none.m_iExitCode, 1);
    EXPECT_EQ(none.m_strOutput, "nothing is attached to 1-garden.eml\n");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, EndsTheProgramOfAnAttachmentWithItself)
{
    const std::string program = m_folder.Path("wait");
    WriteBytes(program, "#!/bin/sh\nexec sleep 1000\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    std::filesystem::create_directories(std::filesystem::path(SettingsPath()).parent_path());
    WriteBytes(SettingsPath(), "[programs]\n.txt = " + program + "\n");
    const auto first = StartFirst({"-paused"});
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(Send("attachment " + Data("mails/5-roster.eml")), 0);
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, TellsWhyAPluginWasRefused)
{
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_THAT(Ask("plug-ins"),
                testing::AllOf(testing::StartsWith("mailtext 2.0\nredact 2.0\nrefused: cannot load "),
                               testing::HasSubstr("outdated.so: it is made for version 1 of "
                                                  "org.example.desk.Reader, this program uses version 2")));
    EXPECT_EQ(Send("quit"), 0);
}

TEST_F(Desk, StartsAgainAsTheSameProcess)
{
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(first->Answer(), "the mails are indexed in the background");
    EXPECT_EQ(first->Answer(), "7 mails are indexed");
    EXPECT_EQ(Send("restart"), 0);
    EXPECT_EQ(first->Answer(), "ends, and starts again");
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(first->Answer(), "the mails are indexed in the background");
    EXPECT_EQ(first->Answer(), "7 mails are indexed");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "ends");
    // Nobody else holds the output.
    EXPECT_EQ(first->Answer(), "");
    EXPECT_EQ(first->End(), 0);
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
    EXPECT_EQ(first->Answer(), "cannot read /nowhere/at-all.eml: No such file or directory");
    EXPECT_EQ(first->Answer(), "takes commands");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->End(), 0);
}

TEST_F(Desk, LeavesADamagedBundleOut)
{
    const std::string data = m_folder.Path("bundle");
    std::filesystem::create_directories(data + "/mails");
    WriteBytes(data + "/desk.ini", "[archive]\nfile = archive.zip\n");
    WriteBytes(data + "/archive.zip", "PK, but no archive");
    WriteBytes(data + "/mails/broken.eml", "\xff\xfe\n\n\x80");
    TalkingProgram first(m_strProgram, {"-data", data});
    EXPECT_EQ(first.Answer(), "takes commands");
    EXPECT_EQ(first.Answer(), "the mails are indexed in the background");
    EXPECT_EQ(first.Answer(), "0 mails are indexed");
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first.End(), 0);
}

TEST_F(Desk, AnswersThatACommandIsNone)
{
    const auto first = StartFirst();
    EXPECT_EQ(first->Answer(), "takes commands");
    const ProgramResult dance = Start("-send", "dance all night");
    EXPECT_EQ(dance.m_iExitCode, 2);
    EXPECT_EQ(dance.m_strOutput, "there is no command dance\n");
    EXPECT_THAT(Log(), testing::HasSubstr(" Execute command dance all night\n"));
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->End(), 0);
}
