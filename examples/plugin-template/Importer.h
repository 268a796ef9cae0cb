// SPDX-License-Identifier: MIT
#ifndef DESK_IMPORTER_H
#define DESK_IMPORTER_H

#include <filesystem>
#include <string>

#include <toolkit/core/Plugin.h>

// What the application and its plug-ins agree on. Whoever changes anything in this header counts the version
// up.

namespace desk
{

// What the application does for its plug-ins.
class Desk
{
public:
    virtual void Say(const std::string& text) = 0;

protected:
    ~Desk() = default;
};

// A plug-in that reads files of some kind.
struct Importer : Toolkit::Plugin
{
    // The text of the file; empty where it is of another kind.
    virtual std::string Import(const std::filesystem::path& file) = 0;
};
TOOLKIT_PLUGIN_INTERFACE(Importer, "org.example.desk.Importer", 1);

} // namespace desk

#endif
