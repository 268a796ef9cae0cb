// SPDX-License-Identifier: MIT
#include "tour/Tour.h"

#include "Text.h"
#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;

Tour::Tour(const std::filesystem::path& bundle, const Toolkit::Folders& folders)
    : m_bundle(bundle), m_folders(folders), m_output(folders.Cache() / "tour")
{
}

Tour::~Tour()
{
    Log::Install({});
}

bool Tour::Play()
{
    OpenSession();
    FindFolders();
    AskSystem();
    ReadSettings();
    LoadPlugins();
    ReadMails();
    ShowDates();
    HideInNotes();
    ReadArchive();
    ChangeSetting();
    SaveState();
    HandOverAttachment();
    TalkToChild();
    StartTwice();
    RestartInPlace();
    RestartWithLock();
    ShutDown();
    ShowLog();
    PrintLine();
    PrintLine(std::to_string(m_uHolding) + '/' + std::to_string(m_uSteps) + " steps");
    return m_uHolding == m_uSteps;
}

void Tour::Begin(const std::string& title)
{
    ++m_uSteps;
    PrintLine();
    PrintLine(std::to_string(m_uSteps) + ". " + title);
}

void Tour::Say(const std::string& line) const
{
    PrintLine("     " + line);
}

void Tour::End(bool holds)
{
    m_uHolding += holds ? 1 : 0;
    PrintLine(holds ? "   ok" : "   FAILED");
}

} // namespace Desk
