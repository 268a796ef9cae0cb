// SPDX-License-Identifier: MIT
#include <iostream>
#include <stdexcept>

#include "tests/plugins/Greeter.h"
#include "toolkit/core/Plugins.h"
#include "toolkit/core/ToolkitSession.h"

// CompilerHost <folder>: uses the plug-ins of the folder, noting_*.so and counting_*.so, in all the ways
// there are, and prints what happens.

using namespace ToolkitTest;
using Toolkit::Plugins;

int ToolkitTest::Counter::Count() const
{
    return 41;
}

namespace
{

void PrintNotes(Notes& notes)
{
    for (const std::string& event : notes.events)
        std::cout << event << ' ';
    std::cout << '\n';
    notes.events.clear();
}

template <class Set>
void PrintFailures(Set& set, const std::string& folder)
{
    for (const Toolkit::Failure& failure : set.LoadFolder(folder))
        std::cout << failure.Message().substr(folder.size() + std::string("cannot load /").size()) << '\n';
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::cerr << "usage: CompilerHost <folder>\n";
        return 2;
    }
    const std::string folder = arguments[1];
    const Toolkit::ToolkitSession session;
    Notes notes;
    {
        Plugins<Greeter> greeters(notes);
        PrintFailures(greeters, folder);
        for (const auto& greeter : greeters.All())
            std::cout << greeter->Info().Name() << ": " << greeter->Greet("you") << '\n';
    }
    PrintNotes(notes);
    {
        Plugins<Counter> counters;
        PrintFailures(counters, folder);
        for (const auto& counter : counters.All())
            std::cout << "dynamic " << (dynamic_cast<const Counter*>(counter.get()) != nullptr) << ", counts "
                      << counter->Count() << '\n';
    }
    notes.refusal = "no more of it";
    Plugins<Greeter> refused(notes);
    PrintFailures(refused, folder);
    PrintNotes(notes);
}
