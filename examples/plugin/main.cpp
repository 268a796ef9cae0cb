// SPDX-License-Identifier: MIT
// A host that loads the plug-ins of a folder and says which were refused: plugin <folder>

#include "Greeter.h"

#include <iostream>

#include <toolkit/core/Plugins.h>

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::cerr << "usage: plugin <folder>\n";
        return 2;
    }
    Toolkit::Plugins<example::Greeter> greeters;
    for (const Toolkit::Failure& refused : greeters.LoadFolder(argv[1]))
        std::cerr << refused.Message() << '\n';
    for (const std::shared_ptr<example::Greeter>& greeter : greeters.All())
        std::cout << greeter->Info().Name() << ' ' << greeter->Info().Version() << ": "
                  << greeter->Greet("Nora") << '\n';
    return greeters.All().empty() ? 1 : 0;
}
