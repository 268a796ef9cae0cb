// SPDX-License-Identifier: MIT
#ifndef DESK_TOUR_H
#define DESK_TOUR_H

#include <map>

#include "Host.h"
#include "Processes.h"
#include "toolkit/files/IniFile.h"

namespace Desk
{

// Walks through what the toolkit does for a host, in numbered steps that are printed and checked.
class Tour
{
public:
    // `dataFolder` holds the settings and the files that the plug-ins work on.
    Tour(const Text& dataFolder, const Text& logName);

    // Plays every step; true when all of them hold.
    bool Play();

private:
    void Load();
    void Folders();
    void System();
    void Settings();
    void Plugins();
    void Mails();
    void Dates();
    void Notes();
    void Archive();
    void ChangedSetting();
    void SavedState();
    void Child();
    void SecondStart();
    void Restart();
    void ShutDown();
    void Log();

    // Lets the plug-in work on the file and says what it reports; false when it does not take the file,
    // cannot work on it or has nothing to say.
    bool Work(Plugin& plugin, const Text& path) const;

    // The same for every file in the folder `path`; false when there is none.
    bool WorkOnFolder(const Text& plugin, const Text& path) const;

    // What the process printed since the last time.
    void SayNews(const Text& process);

    // Prints the heading of the next step.
    void Begin(const Text& title);
    void Say(const Text& line) const;
    // Ends the step: `holds` is what was checked.
    void End(bool holds);

    const Text m_strDataFolder;
    const Text m_strLogName;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<Toolkit::IniFile> m_settings;
    std::unique_ptr<Processes> m_processes;
    std::map<Text, std::size_t> m_said;
    std::vector<Text> m_mails;
    Text m_strLogPath;
    unsigned int m_uSteps = 0;
    unsigned int m_uHolding = 0;
};

} // namespace Desk

#endif
