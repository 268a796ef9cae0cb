#ifndef DESK_TOUR_H
#define DESK_TOUR_H

#include "Host.h"

namespace Desk
{

// Walks through what the toolkit does for a host, in numbered steps that are printed and checked.
class Tour
{
public:
    // `dataFolder` holds the files that the plug-ins work on.
    Tour(const Text& dataFolder, const Text& logName);

    // Plays every step; true when all of them hold.
    bool Play();

private:
    void Load();
    void Folders();
    void System();
    void Plugins();
    void Work(const Plugin& plugin, const Text& folder);
    void Child();
    void ShutDown();
    void Log();

    // Prints the heading of the next step.
    void Begin(const Text& title);
    void Say(const Text& line) const;
    // Ends the step: `holds` is what was checked.
    void End(bool holds);

    const Text m_strDataFolder;
    const Text m_strLogName;
    std::unique_ptr<Host> m_host;
    Text m_strLogPath;
    unsigned int m_uSteps = 0;
    unsigned int m_uHolding = 0;
};

} // namespace Desk

#endif
