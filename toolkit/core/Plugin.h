// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_PLUGIN_H
#define TOOLKIT_CORE_PLUGIN_H

#include <filesystem>
#include <string>
#include <type_traits>

#include "toolkit/core/Export.h"
#include "toolkit/core/PluginEntry.h"

namespace Toolkit
{

/// What is known of a loaded plug-in: a value that is cheap to copy and may outlive the plug-in. Several
/// threads may read one at once.
///
/// @code
/// const Toolkit::PluginInfo info = mails->Info();
/// std::cout << info.Name() << ' ' << info.Version();
/// std::cout << " from " << info.File() << '\n';
/// @endcode
class TOOLKIT_API PluginInfo
{
public:
    /// One that knows nothing: both texts and the path are empty.
    PluginInfo() noexcept;
    PluginInfo(const PluginInfo& other) noexcept;
    PluginInfo& operator=(const PluginInfo& other) noexcept;
    ~PluginInfo();

    /// As the plug-in calls itself, and as `Plugins::Find` finds it.
    const std::string& Name() const noexcept;
    /// As the plug-in calls it; the library does not compare it with anything.
    const std::string& Version() const noexcept;
    /// The library that it was loaded from, as an absolute path; links are not followed.
    const std::filesystem::path& File() const noexcept;

private:
    friend class PluginsBase;
    struct Content;

    PluginInfo(const char* name, const char* version, const std::filesystem::path& file);

    Content* m_pContent = nullptr;
};

/// What the interface of an application's plug-ins derives from, not virtually. TOOLKIT_PLUGIN_INTERFACE
/// stands right after the interface, in its namespace, and gives it the name and the version that the program
/// and its plug-ins must agree on: whoever changes the interface or the context counts the version up. A
/// plug-in's library names its one class with TOOLKIT_PLUGIN, outside of all namespaces. `Plugins` makes the
/// object, with the program's context if the constructor takes a reference or a pointer to one, and destroys
/// it before its code is unloaded. An interface with functions that the program alone defines is marked
/// TOOLKIT_API, and the program exports them (ENABLE_EXPORTS in CMake). The constructor of a static object in
/// a plug-in must not throw: the system's loader would stay locked.
///
/// @code
/// struct Importer : Toolkit::Plugin { virtual std::string Import(const std::filesystem::path&) = 0; };
/// TOOLKIT_PLUGIN_INTERFACE(Importer, "org.example.desk.Importer", 3);
///
/// TOOLKIT_PLUGIN(desk::MailImporter, desk::Importer, "mails", "1.2.0");
/// @endcode
class TOOLKIT_API Plugin
{
public:
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    virtual ~Plugin();

    /// What is known of this plug-in, from its constructor on. An object that the program makes itself has an
    /// empty one; one that a plug-in's constructor makes has that plug-in's.
    const PluginInfo& Info() const noexcept;

protected:
    Plugin() noexcept;

private:
    friend class PluginsBase;

    // What the constructors on this thread take for their information from now on; returns what it was.
    static const PluginInfo* Exchange(const PluginInfo* info) noexcept;

    const PluginInfo m_info;
};

} // namespace Toolkit

/// Gives the interface its name and its version. @ingroup plugins
#define TOOLKIT_PLUGIN_INTERFACE(Interface, name, version)                                                   \
    constexpr ::Toolkit::PluginInterface ToolkitPluginInterface(                                             \
        ::Toolkit::PluginInterfaceTag<Interface>) noexcept                                                   \
    {                                                                                                        \
        return {name, version};                                                                              \
    }                                                                                                        \
    static_assert(::std::is_base_of_v<::Toolkit::Plugin, Interface>,                                         \
                  "an interface of plug-ins is derived from Toolkit::Plugin")

/// Names the class of a plug-in's library, the interface that it implements, and the plug-in's own name and
/// version. @ingroup plugins
#define TOOLKIT_PLUGIN(Class, Interface, name, version)                                                      \
    extern "C"                                                                                               \
    {                                                                                                        \
        TOOLKIT_API extern const ::Toolkit::PluginEntry ToolkitPluginEntry;                                  \
        const ::Toolkit::PluginEntry ToolkitPluginEntry =                                                    \
            ::Toolkit::MakePluginEntry<Class, Interface>(name, version);                                     \
    }                                                                                                        \
    static_assert(sizeof(name) > 1, "a plug-in has a name")

#endif
