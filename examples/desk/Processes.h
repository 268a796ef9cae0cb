// SPDX-License-Identifier: MIT
#ifndef DESK_PROCESSES_H
#define DESK_PROCESSES_H

#include <string>
#include <vector>

#include <sys/types.h>

#include "Text.h"

namespace Desk
{

// Starts of desk as processes of their own, in a home and a temporary folder of their own, and what each
// printed. What such a process starts in its turn belongs here as well. Those that are still there in the end
// are killed.
class Processes
{
public:
    // `folder` becomes the home of them all.
    Processes(const Text& executable, const Text& folder);
    ~Processes();

    Processes(const Processes&) = delete;
    Processes& operator=(const Processes&) = delete;

    // Starts one whose lines go to the file `name` of the folder; false when it cannot be started.
    bool Start(const Text& name, const std::vector<Text>& arguments);

    // Starts one and waits for its end; true when its exit code is 0.
    bool Run(const Text& name, const std::vector<Text>& arguments);

    // What was printed to the file `name` so far.
    std::vector<Text> GetLines(const Text& name) const;

    // Waits until `count` of these lines begin with `beginning`; false when that takes too long.
    bool WaitForLines(const Text& name, const Text& beginning, int count) const;

    // Waits for the end of the given number of processes; true when the exit code of each is 0.
    bool WaitForEnd(unsigned int count);

private:
    pid_t Spawn(const Text& name, const std::vector<Text>& arguments);

    const Text m_strExecutable;
    const Text m_strFolder;
    // Each process that is started here leads a group, to which belongs what it starts.
    std::vector<pid_t> m_groups;
};

} // namespace Desk

#endif
