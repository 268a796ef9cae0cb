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
    std::string WaitForState(const std::vector<std::string>& texts) const
    {
        const std::string path = m_folder.Path("state");
        std::string state;
        WaitUntil(
            [this, &path, &state, &texts]
            {
                std::filesystem::remove(path);
                return Send("dump " + path) == 0 &&
                       WaitUntil(
                           [&path, &state]
                           {
                               state = ReadBytes(path);
                               return state.find("\nend\n") != std::string::npos;
                           }) &&
                       std::all_of(texts.begin(), texts.end(),
                                   [&state](const std::string& text)
                                   { return state.find(text) != std::string::npos; });
            });
        return state;
    }

    // Ends the desk; the processes that it started end, too.
    void Quit(TalkingProgram& desk) const
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
    const ScopedEnvironment m_zone{"TZ", "UTC"};
};

} // namespace

TEST_F(DeskWindow, ShowsTheMailsTheTextTheLogAndTheMenu)
{
    const auto first = StartFirst();
    // The log's file is behind the log.
    const std::string state = WaitForState(
        {"status: 6 mails are indexed\n", "Initialize : redact: ready\n", "Execute : desk: command dump "});
    EXPECT_THAT(state, StartsWith("menu: Open...\n"
                                  "menu: Plug-ins\n"
                                  "menu: Restart\n"
                                  "menu: Quit\n"
                                  "mail: 03/02/26 | Nora Lindqvist | Seedlings for the community garden\n"
                                  "mail: 03/03/26 | Amélie Rousseau | Lunch on Thursday\n"
                                  "mail: 03/04/26 | Jörg Müller | Schlüsselübergabe am Freitag\n"
                                  "mail: 03/05/26 | 山田 花子 | 会議の時間変更\n"
                                  "mail: 11/03/25 | Stéphane Petit | Facture n° 2025-117\n"
                                  "mail: 12/18/25 | Eleni Papadopoulou | Φωτογραφίες από το φεστιβάλ\n"
                                  "selected: 0\n"
                                  "title: Seedlings for the community garden\n"
                                  "sender: Nora Lindqvist <nora.lindqvist@example.org>, 03/02/26\n"
                                  "text: Dear Samuel,\n"));
    EXPECT_THAT(state, HasSubstr("text: Nora ([telephone], or ***@example.org)\n"));
    EXPECT_THAT(state, HasSubstr("log: 2 "));
    EXPECT_THAT(state,
                AllOf(HasSubstr("Initialize : redact: ready\n"), HasSubstr("Execute : desk: command dump ")));
    Quit(*first);
}

TEST_F(DeskWindow, OpensTheFileOfASecondStart)
{
    const auto first = StartFirst();
    WaitForState({"status: 6 mails are indexed\n"});

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

TEST_F(DeskWindow, ShowsThePlugins)
{
    const auto first = StartFirst();
    WaitForState({"status: 6 mails are indexed\n"});
    EXPECT_EQ(Send("plug-ins"), 0);
    EXPECT_THAT(WaitForState({"title: Plug-ins\n"}), HasSubstr("text: mailtext\ntext: redact\n"));
    Quit(*first);
}

TEST_F(DeskWindow, OpensAFileOfAnyNameInTheLocaleC)
{
    const ScopedEnvironment locale("LC_ALL", "C");
    const std::string path = m_folder.Path("Grüße von 花子.eml");
    std::filesystem::copy_file(Data("mails/2-cafe.eml"), path);
    const auto first = StartFirst({"-open", path});
    WaitForState({"title: Lunch on Thursday\n", "status: 6 mails are indexed\n"});
    EXPECT_EQ(Start("-open", Data("mails/1-garden.eml")).m_iExitCode, 0);
    WaitForState({"title: Seedlings for the community garden\n"});
    EXPECT_EQ(Start("-open", path).m_iExitCode, 0);
    EXPECT_THAT(WaitForState({"title: Lunch on Thursday\n"}),
                AllOf(HasSubstr("title: Lunch on Thursday\n"),
                      HasSubstr("mail: 03/05/26 | 山田 花子 | 会議の時間変更\n")));
    Quit(*first);
}

TEST_F(DeskWindow, KeepsErrorsOfWxWidgetsInTheLog)
{
    const auto first = StartFirst();
    WaitForState({"status: 6 mails are indexed\n"});
    EXPECT_EQ(Send("picture /nowhere/at-all.png"), 0);
    // A dialog would hold up the next command.
    const std::string state = WaitForState({"status: there is no picture\n", " : wx : "});
    EXPECT_THAT(state, HasSubstr("/nowhere/at-all.png"));
    Quit(*first);
}

TEST_F(DeskWindow, StartsAgainInAProcessOfItsOwn)
{
    const auto first = StartFirst({"-open", Data("mails/2-cafe.eml")});
    const std::string before = WaitForState({"status: 6 mails are indexed\n", "title: Lunch on Thursday\n"});
    EXPECT_THAT(before, AllOf(HasSubstr("selected: 1\n"), Not(HasSubstr("RemoveLock"))));
    EXPECT_EQ(Send("restart"), 0);
    EXPECT_EQ(first->End(), 0);
    WaitForState(
        {"status: 6 mails are indexed\n", "title: Lunch on Thursday\n", "RemoveLock : Remove lock file: "});
    EXPECT_EQ(Send("quit"), 0);
    EXPECT_EQ(first->Answer(), "");
}

TEST_F(DeskWindow, SavesAPictureOfItself)
{
    const auto first = StartFirst();
    WaitForState({"status: 6 mails are indexed\n"});
    EXPECT_EQ(Send("picture " + m_folder.Path("desk.png")), 0);
    WaitForState({"status: the picture is saved\n"});
    EXPECT_THAT(ReadBytes(m_folder.Path("desk.png")), StartsWith("\x89PNG\r\n"));
    Quit(*first);
}
