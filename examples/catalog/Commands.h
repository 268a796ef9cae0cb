// SPDX-License-Identifier: MIT
#ifndef CATALOG_COMMANDS_H
#define CATALOG_COMMANDS_H

#include <string>
#include <vector>

#include <toolkit/app/Instance.h>
#include <toolkit/files/Settings.h>
#include <toolkit/threading/Event.h>

#include "Catalog.h"

namespace catalog
{

// What later starts of the program may ask the first one for.
class Commands
{
public:
    // All of them must live as long; `end` is set by the command "quit".
    Commands(Catalog& catalog, Toolkit::Settings& settings, Toolkit::Event& end);

    // The code of the answer is what the later start returns to its shell.
    Toolkit::Instance::Answer Execute(const Toolkit::Instance::Command& command);

private:
    using Words = std::vector<std::string>;

    Toolkit::Instance::Answer Read(const Toolkit::Instance::Command& command);
    Toolkit::Instance::Answer List(const Words& words) const;
    Toolkit::Instance::Answer Show(const Words& words) const;
    Toolkit::Instance::Answer Set(const Words& words);

    Catalog& m_catalog;
    Toolkit::Settings& m_settings;
    Toolkit::Event& m_end;
};

} // namespace catalog

#endif
