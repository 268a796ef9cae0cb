// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_PLUGIN_PLUGIN_H
#define TOOLKIT_TESTS_PLUGIN_PLUGIN_H

#include <string>

#include "toolkit/core/Export.h"

// What the plug-in libraries export, and what crosses their boundary. Every name is looked up at run time.

namespace ToolkitTest
{

// Thrown by one library, held by a smart pointer, and caught in another.
class TOOLKIT_API PluginException
{
public:
    explicit PluginException(std::string text) : m_strText(std::move(text)) {}
    virtual ~PluginException() = default;

    std::string m_strText;
};

enum class Thrown
{
    Nothing,
    Shared,
    Standard
};

// Gets "+a" or "-a" when the module of the plug-in "a" is initialised or released.
using Note = void (*)(const char* event);
using Action = void (*)();

// PluginAttach registers the plug-in's module, PluginDetach takes that back.
using PluginAttach = void (*)(Note note);
using PluginDetach = void (*)();
// Makes the plug-in's module throw when it is initialised.
using PluginFail = void (*)(bool fail);
using PluginThrow = void (*)(Thrown what);
// Calls an action and tells what it threw.
using PluginCatch = Thrown (*)(Action action);
using PluginEmpty = const void* (*)(bool wide);
using PluginLog = void (*)(const wchar_t* message);
// Replaces the installed sink by one of a class of the plug-in's own.
using PluginInstallSink = void (*)();

// What the library that stands for the host's own core exports.
using HostInitialize = void (*)(bool baseLibrary);
using HostRelease = void (*)(bool baseLibrary);
// Installs a Log of the library that writes a file in that folder; false when that fails.
using HostInstallLog = bool (*)(const char* folder, bool background);
using HostLog = void (*)(const char* message);
// HostShowsDate: true when a date has the text that a German user's locale gives it. HostFindsPattern: true
// when patterns and regular expressions find what they should.
using HostWorks = bool (*)();
// True when the manager exists.
using HostHasManager = bool (*)();
// True when any singleton exists.
using HostHasSingletons = bool (*)();

} // namespace ToolkitTest

#endif
