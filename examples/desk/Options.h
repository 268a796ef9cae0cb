// SPDX-License-Identifier: MIT
#ifndef DESK_OPTIONS_H
#define DESK_OPTIONS_H

#include <filesystem>
#include <string>
#include <vector>

namespace Desk
{

// What a start of desk was asked for. What it does not know, it leaves alone.
struct Options
{
    Options(int argc, char** argv);

    // All of them, for a restart.
    std::vector<std::string> arguments;
    // The bundle; empty without one.
    std::filesystem::path data;
    // A file to open; empty for none.
    std::filesystem::path open;
    // A command for the desk that is running; empty for none.
    std::string send;
    // What the tour's child says.
    std::string text;
    // The index waits until it is told to go on.
    bool paused = false;
    bool tour = false;
    bool child = false;
    bool classicRestart = false;
};

} // namespace Desk

#endif
