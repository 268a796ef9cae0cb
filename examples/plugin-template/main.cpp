// SPDX-License-Identifier: MIT
// An application with plug-ins: plugins <folder of plug-ins> <file to import>

#include <iostream>

#include <toolkit/core/Plugins.h>

#include "Importer.h"

namespace
{

class Console : public desk::Desk
{
public:
    void Say(const std::string& text) override { std::cout << text << '\n'; }
};

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
    {
        std::cerr << "usage: plugins <folder of plug-ins> <file to import>\n";
        return 2;
    }

    // Every plug-in that takes one gets the console; it must outlive them.
    Console console;
    Toolkit::Plugins<desk::Importer> importers(console);
    for (const Toolkit::Failure& failure : importers.LoadFolder(arguments[1]))
        std::cerr << failure.Message() << '\n';

    for (const std::shared_ptr<desk::Importer>& importer : importers.All())
        if (const std::string text = importer->Import(arguments[2]); !text.empty())
            std::cout << importer->Info().Name() << " found: " << text;

    // One by one, or all together at the end of the set.
    if (const Toolkit::Result<void> gone = importers.Unload("mails"); !gone)
        std::cerr << gone.error().Message() << '\n';
}
