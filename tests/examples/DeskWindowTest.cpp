// SPDX-License-Identifier: MIT
#include <algorithm>
#include <csignal>
#include <stdexcept>

#include "tests/examples/DeskSupport.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using ToolkitTest::DeskHome;
using ToolkitTest::ReadBytes;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TalkingProgram;
using ToolkitTest::WaitUntil;

namespace
{

// A screen that nobody sees.
class Screen
{
public:
    Screen()
        : m_server("/bin/sh",
                   {"-c", "exec Xvfb -displayfd 1 -noreset -screen 0 1280x900x24 -nolisten tcp 2>/dev/null"})
    {
        const std::string number = m_server.Answer();
        if (number.empty())
            throw std::runtime_error("Xvfb did not start");
        m_strName = ":" + number;
    }
    // Let it remove what belongs to the screen.
    ~Screen() { kill(m_server.Id(), SIGTERM); }

    const char* Name() const { return m_strName.c_str(); }

private:
    TalkingProgram m_server;
    std::string m_strName;
};

class DeskWindow : public DeskHome
{
protected:
    DeskWindow() : DeskHome(DESK_WINDOW), m_display("DISPLAY", m_screen.Name()) {}

    // What the window shows once all of `texts` are in it, and what it shows in the end if they are not.
    static std::string WaitForState(const std::vector<std::string>& texts)
    {
        std::string state;
        WaitUntil(
            [&state, &texts]
            {
                state = Ask("dump");
                return std::all_of(texts.begin(), texts.end(),
                                   [&state](const std::string& text)
                                   { return state.find(text) != std::string::npos; });
            });
        return state;
    }

    // Ends the desk; the processes that it started end, too.
    static void Quit(TalkingProgram& desk)
    {
        EXPECT_EQ(Send("quit"), 0);
        EXPECT_EQ(desk.Answer(), "");
        EXPECT_EQ(desk.End(), 0);
    }

    const Screen m_screen;
    const ScopedEnvironment m_display;
    const ScopedEnvironment m_wayland{"WAYLAND_DISPLAY", nullptr};
    const ScopedEnvironment m_accessibility{"NO_AT_BRIDGE", "1"};
    const ScopedEnvironment m_locale{"LC_ALL", "C.UTF-8"};
};

} // namespace

TEST_F(DeskWindow, ShowsTheMailsTheTextTheLogAndTheMenu)
{
    const auto first = StartFirst();
    const std::string state =
        WaitForState({"status: 7 mails are indexed\n", " redact: ready\n", " command dump"});
    EXPECT_THAT(state,
                StartsWith("menu: Open...\n"
                           "menu: Open attachment\n"
                           "menu: Hide what is private (checked)\n"
                           "menu: Plug-ins\n"
                           "menu: Restart\n"
                           "menu: Quit\n"
                           "mail: 2026-03-02 07:15 | Nora Lindqvist | Seedlings for the community garden\n"
                           "mail: 2026-03-03 10:42 | Amélie Rousseau | Lunch on Thursday\n"
                           "mail: 2026-03-04 16:05 | Jörg Müller | Schlüsselübergabe am Freitag\n"
                           "mail: 2026-03-05 01:00 | 山田 花子 | 会議の時間変更\n"
                           "mail: 2026-03-06 17:20 | Samuel Okafor | Watering roster – who can help?\n"
                           "mail: 2025-11-03 08:12 | Stéphane Petit | Facture n° 2025-117\n"
                           "mail: 2025-12-18 18:31 | Eleni Papadopoulou | Φωτογραφίες από το φεστιβάλ\n"
                           "selected: 0\n"
                           "title: Seedlings for the community garden\n"
                           "sender: Nora Lindqvist <nora.lindqvist@example.org>, 2026-03-02 07:15\n"
                           "text: Dear Samuel,\n"));
    EXPECT_THAT(state, HasSubstr("text: Nora ([telephone], or ***@example.org)\n"));
    EXPECT_THAT(state, Not(HasSubstr("progress: ")));
    Quit(*first);
}

TEST_F(DeskWindow, ShowsTheProgressOfTheIndexAndCancelsIt)
{
    const auto first = StartFirst({"-paused"});
    EXPECT_THAT(WaitForState({"progress: 0 of 7"}),
                HasSubstr("status: the index is paused before the first mail\n"));
    EXPECT_EQ(Send("cancel"), 0);
    EXPECT_THAT(WaitForState({"status: the index was stopped after 0 mails\n"}),
                AllOf(Not(HasSubstr("progress: ")), Not(HasSubstr("mail: "))));
    Quit(*first);
}

TEST_F(DeskWindow, ChangesASettingAndWritesItBack)
{
    const auto first = StartFirst();
    WaitForState({"status: 7 mails are indexed\n", "text: Nora ([telephone], or ***@example.org)\n"});
    EXPECT_EQ(Send("set view/hide no"), 0);
    EXPECT_THAT(WaitForState({"text: Nora (+46 "}), HasSubstr("menu: Hide what is private\n"));
    EXPECT_EQ(ReadBytes(SettingsPath()), "[view]\nhide = no\n");
    Quit(*first);
}

TEST_F(DeskWindow, ShowsWhatAProgramSaysOfAnAttachment)
{
    const auto first = StartFirst();
    WaitForState({"status: 7 mails are indexed\n"});
    EXPECT_EQ(Send("attachment " + Data("mails/5-roster.eml")), 0);
    EXPECT_THAT(WaitForState({"title: roster.txt\n"}),
                HasSubstr("text: 2026-06-08 Amélie Rousseau\ntext: 2026-06-15 Jörg Müller\n"));
    Quit(*first);
}

TEST_F(DeskWindow, OpensTheFileOfASecondStart)
{
    const auto first = StartFirst();
    WaitForState({"status: 7 mails are indexed\n"});

    EXPECT_EQ(Start("-open", Data("mails/4-meeting.eml")).m_iExitCode, 0);
    const std::string mail = WaitForState({"title: 会議の時間変更\n"});
    EXPECT_THAT(mail, AllOf(HasSubstr("selected: 3\n"),
                            HasSubstr("text: 来週の会議は火曜日の午後三時からに変わりました。\n")));

    EXPECT_EQ(Start("-open", Data("notes/minutes.txt")).m_iExitCode, 0);
    const std::string note = WaitForState({"title: minutes.txt\n"});
    EXPECT_THAT(note, AllOf(HasSubstr("selected: none\n"),
                            HasSubstr("text: 1. The new water tank was paid from [account].\n")));
    Quit(*first);
}

TEST_F(DeskWindow, ShowsThePluginsAndWhyOneWasRefused)
{
    const auto first = StartFirst();
    WaitForState({"status: 7 mails are indexed\n"});
    EXPECT_EQ(Send("plug-ins"), 0);
    EXPECT_THAT(WaitForState({"title: Plug-ins\n"}),
                AllOf(HasSubstr("text: mailtext 2.0\ntext: redact 2.0\ntext: refused: cannot load "),
                      HasSubstr("it is made for version 1 of org.example.desk.Reader")));
    Quit(*first);
}

TEST_F(DeskWindow, AnswersALaterStartOfItsOwn)
{
    const auto first = StartFirst();
    WaitForState({"status: 7 mails are indexed\n"});
    const ToolkitTest::ProgramResult later =
        ToolkitTest::RunInShell(ToolkitTest::Quoted(DESK_WINDOW) + " -send status");
    EXPECT_EQ(later.m_iExitCode, 0);
    EXPECT_EQ(later.m_strOutput, "7 of 7 mails\n");
    Quit(*first);
}

TEST_F(DeskWindow, OpensAFileOfAnyNameInTheLocaleC)
{
    const ScopedEnvironment locale("LC_ALL", "C");
    const std::string path = m_folder.Path("Grüße von 花子.eml");
    std::filesystem::copy_file(Data("mails/2-cafe.eml"), path);
    const auto first = StartFirst({"-open", path});
    WaitForState({"title: Lunch on Thursday\n", "status: 7 mails are indexed\n"});
    EXPECT_EQ(Start("-open", Data("mails/1-garden.eml")).m_iExitCode, 0);
    WaitForState({"title: Seedlings for the community garden\n"});
    EXPECT_EQ(Start("-open", path).m_iExitCode, 0);
    EXPECT_THAT(WaitForState({"title: Lunch on Thursday\n"}),
                AllOf(HasSubstr("title: Lunch on Thursday\n"),
                      HasSubstr("mail: 2026-03-05 01:00 | 山田 花子 | 会議の時間変更\n")));
    Quit(*first);
}

TEST_F(DeskWindow, KeepsErrorsOfWxWidgetsInTheLog)
{
    const auto first = StartFirst();
    WaitForState({"status: 7 mails are indexed\n"});
    EXPECT_EQ(Ask("picture /nowhere/at-all.png"), "there is no picture\n");
    // A dialog would hold up the next command.
    EXPECT_THAT(WaitForState({" ! wxWidgets: "}), HasSubstr("/nowhere/at-all.png"));
    Quit(*first);
}

TEST_F(DeskWindow, StartsAgainAsTheSameProcess)
{
    const auto first = StartFirst({"-open", Data("mails/2-cafe.eml")});
    EXPECT_THAT(WaitForState({"status: 7 mails are indexed\n", "title: Lunch on Thursday\n"}),
                HasSubstr("selected: 1\n"));
    EXPECT_EQ(Send("open " + Data("mails/1-garden.eml")), 0);
    EXPECT_EQ(Send("restart"), 0);
    WaitForState({"status: 7 mails are indexed\n", "title: Lunch on Thursday\n"});
    Quit(*first);
}

TEST_F(DeskWindow, SavesAPictureOfItself)
{
    const auto first = StartFirst();
    WaitForState({"status: 7 mails are indexed\n"});
    EXPECT_EQ(Send("picture " + m_folder.Path("desk.png")), 0);
    EXPECT_THAT(ReadBytes(m_folder.Path("desk.png")), StartsWith("\x89PNG\r\n"));
    Quit(*first);
}
