// SPDX-License-Identifier: MIT
#ifndef DESK_OPTIONS_H
#define DESK_OPTIONS_H

#include <vector>

#include "Text.h"

namespace Desk
{

// What a start of desk was asked for.
struct Options
{
    Options(int argc, char** argv);

    // All of them, the executable's path included.
    std::vector<Text> m_arguments;
    // The bundle; empty without one.
    Text m_strData;
    // The name of the log.
    Text m_strLog;
    // A file to open, as an absolute path; empty for none.
    Text m_strOpen;
    // A command for the desk that is running; empty for none.
    Text m_strSend;
    // The index waits until it is told to go on.
    bool m_bPaused = false;
    // This is the new process of a restart.
    bool m_bRestart = false;
};

} // namespace Desk

#endif
