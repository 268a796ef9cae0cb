// SPDX-License-Identifier: MIT
#ifndef DESK_TOUR_H
#define DESK_TOUR_H

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Host.h"
#include "Preferences.h"
#include "toolkit/app/Folders.h"
#include "toolkit/app/Process.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/log/RunLog.h"

namespace Desk
{

// Walks through what the toolkit does for a host, in numbered steps that are printed and checked. A desk
// needs no ToolkitSession; the tour has one, because some steps show classic classes.
class Tour
{
public:
    // `bundle` holds the settings and the files that the plug-ins read.
    Tour(const std::filesystem::path& bundle, const Toolkit::Folders& folders);
    ~Tour();

    // Plays every step; true when all of them hold.
    bool Play();

private:
    // The life of the host: TourLifecycle.cpp.
    void OpenSession();
    void FindFolders();
    void AskSystem();
    void ShutDown();
    void ShowLog();

    // What the host reads and writes: TourFiles.cpp.
    void ReadSettings();
    void LoadPlugins();
    void ReadMails();
    void ShowDates();
    void HideInNotes();
    void ReadArchive();
    void ChangeSetting();
    void SaveState();
    // Reads the file and says what is in it.
    std::optional<Document> Read(const std::filesystem::path& file) const;
    bool ReadMail(const std::filesystem::path& file) const;
    bool HideInNote(const std::filesystem::path& file) const;

    // Child processes, later starts and restarts: TourProcesses.cpp.
    void HandOverAttachment();
    void TalkToChild();
    void StartTwice();
    void RestartInPlace();
    void RestartWithLock();
    // Says the lines of the first desk up to one that begins like this; false when none does.
    bool SayUntil(const std::string& beginning);
    // Waits until the first desk has counted its mails, which it does in the background.
    bool WaitForCount() const;
    // Starts desk once more to its end.
    Toolkit::Result<Toolkit::ProcessResult> AskFirst(const std::vector<std::string>& arguments) const;
    // The same, and says what it printed.
    bool SayAnswer(const std::string& name, const std::vector<std::string>& arguments) const;

    // Prints the heading of the next step.
    void Begin(const std::string& title);
    void Say(const std::string& line) const;
    // Ends the step: `holds` is what was checked.
    void End(bool holds);

    const std::filesystem::path m_bundle;
    const Toolkit::Folders m_folders;
    // For what the steps write.
    const std::filesystem::path m_output;
    std::unique_ptr<Toolkit::ToolkitSession> m_session;
    std::shared_ptr<Toolkit::RunLog> m_log;
    std::optional<Preferences> m_preferences;
    std::unique_ptr<Host> m_host;
    std::vector<std::filesystem::path> m_mails;
    // The desk that the last steps talk to.
    std::optional<Toolkit::Process> m_first;
    unsigned int m_uSteps = 0;
    unsigned int m_uHolding = 0;
};

} // namespace Desk

#endif
