// SPDX-License-Identifier: MIT
// desk: an application that stands on the toolkit. The first start runs until it is told to quit; a later one
// has the first one execute its command, and prints the answer.
//   desk [-data FOLDER] [-open FILE] [-paused]     runs over the bundle in FOLDER
//   desk -send COMMAND                             hands over a command (see Application.h)
//   desk -tour -data FOLDER                        plays the tour over the bundle in FOLDER
//   desk -child -text TEXT                         what the tour starts as a child process
//   desk -classic-restart                          what the tour starts to see a classic restart

#include <clocale>
#include <iostream>

#include "Console.h"
#include "classic/Restart.h"
#include "tour/Tour.h"

namespace
{

// Says the text and what it reads, so that the tour sees both ways.
int Say(const std::string& text)
{
    std::cout << text << '\n' << std::cin.rdbuf();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    // The texts for AM and PM are the C library's.
    std::setlocale(LC_TIME, "");

    const Desk::Options options(argc, argv);
    if (options.child)
        return Say(options.text);
    if (options.classicRestart)
        return Desk::RestartOnce(argc, argv);
    const Toolkit::Result<Toolkit::Folders> folders = Toolkit::Folders::Of("desk");
    if (!folders)
    {
        std::cerr << folders.error().Message() << '\n';
        return 1;
    }
    if (!options.tour)
        return Desk::Console().Run(options, *folders);
    if (!options.data.empty())
        return Desk::Tour(options.data, *folders).Play() ? 0 : 1;
    std::cerr << "usage: desk -tour -data FOLDER\n";
    return 2;
}
