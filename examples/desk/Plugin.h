// SPDX-License-Identifier: MIT
#ifndef DESK_PLUGIN_H
#define DESK_PLUGIN_H

#include <vector>

#include "Document.h"
#include "Text.h"
#include "toolkit/core/LibModule.h"
#include "toolkit/files/IniFile.h"

namespace Desk
{

// What a plug-in library offers to the host: a module, which the toolkit brings up and down, that works on
// files. The library owns it; the host calls it from one thread at a time.
class TOOLKIT_API Plugin : public Toolkit::LibModule
{
public:
    virtual Text GetName() const = 0;

    // Takes over the settings of the plug-in's own section; what is wrong with one is appended to `problems`.
    virtual void Configure(const Toolkit::IniFile& settings, std::vector<Text>& problems) = 0;

    // True for a file that this plug-in wants to work on.
    virtual bool Takes(const Text& fileName) const = 0;

    // Works on the file at `path`; what it writes goes into `folder`. Lines for the user are appended to
    // `report`. False when the file cannot be worked on.
    virtual bool Work(const Text& path, const Text& folder, std::vector<Text>& report) = 0;

    // Reads the file at `path` for showing. False when this plug-in does not take it or cannot read it.
    virtual bool Read(const Text& path, Document& document) = 0;

    // Hides in a text what the user should not see, and answers how often. Most plug-ins hide nothing.
    virtual std::size_t Hide(Text&) const { return 0; }
};

// The entry point of every plug-in library: registers its module with the toolkit and answers it.
extern "C" TOOLKIT_API Plugin* DeskPluginLoad();

} // namespace Desk

#endif
