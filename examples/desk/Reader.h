// SPDX-License-Identifier: MIT
#ifndef DESK_READER_H
#define DESK_READER_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "Document.h"
#include "toolkit/core/Plugin.h"
#include "toolkit/core/Result.h"
#include "toolkit/files/Settings.h"

namespace Desk
{

// What a plug-in of desk offers to the host: it reads one kind of file, or hides what is private in the texts
// of all. The host calls one plug-in at a time, from any thread.
class Reader : public Toolkit::Plugin
{
public:
    // Takes over what concerns this plug-in, and returns what is wrong with it. A plug-in does its work with
    // the rest.
    virtual std::vector<Toolkit::Failure> Configure(const Toolkit::Settings& settings) = 0;

    virtual bool Takes(const std::filesystem::path& file) const = 0;
    virtual Toolkit::Result<Document> Read(const std::filesystem::path& file) const = 0;

    // Hides in a text what the user should not see, and returns how often. Most plug-ins hide nothing.
    virtual std::size_t Hide(std::string&) const { return 0; }
};

// Whoever changes this interface, or what it uses, counts the version up. A plug-in of the example is built
// with the one before, to show what becomes of it.
#ifndef DESK_READER_VERSION
#define DESK_READER_VERSION 2
#endif
TOOLKIT_PLUGIN_INTERFACE(Reader, "org.example.desk.Reader", DESK_READER_VERSION);

} // namespace Desk

#endif
