// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_PLUGINS_H
#define TOOLKIT_CORE_PLUGINS_H

#include <filesystem>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/Plugin.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// What `Plugins` is without its interface; see there.
class TOOLKIT_API PluginsBase
{
public:
    PluginsBase(const PluginsBase&) = delete;
    PluginsBase& operator=(const PluginsBase&) = delete;

    /// Loads every `*.so` of the folder, in order by name, and returns why some could not be loaded; the
    /// others are. A folder that cannot be read is one failure. Hidden files are left alone.
    std::vector<Failure> LoadFolder(const std::filesystem::path& folder);

    /// Loads one plug-in. The message of a failure says why it cannot be; nothing of it remains then.
    /// `Errc::WrongInterface`: it is made for another interface or context, another version of it, or another
    /// major version of the library. `Errc::Refused`: there is one of that name, its constructor threw, or
    /// the path leads to a device. `std::errc::executable_format_error`: it is made for another architecture.
    /// `std::errc::not_enough_memory`: its constructor found no memory. `Errc::Malformed`: it is no library,
    /// is cut short, is no plug-in, or needs a symbol or a library that is not there. Else the code of the
    /// system.
    Result<void> Load(const std::filesystem::path& file);

    /// Gives up the plug-in of that name; it is destroyed and its code unloaded once nobody else holds it.
    /// `std::errc::invalid_argument`: there is none.
    Result<void> Unload(std::string_view name);

protected:
    /// A set without plug-ins.
    PluginsBase(const PluginInterface& interface, const PluginContext& context);
    ~PluginsBase();

    /// The plug-ins that are loaded, in the order of loading.
    std::vector<std::shared_ptr<Plugin>> Loaded() const;
    /// The plug-in of that name; null when there is none.
    std::shared_ptr<Plugin> FindLoaded(std::string_view name) const;

private:
    struct State;
    struct Code;
    class Destroy;
    class Making;

    Result<std::shared_ptr<Plugin>> Make(const PluginEntry& entry, const std::shared_ptr<Code>& code) const;
    Result<void> NeedNew(const PluginInfo& info) const;
    Result<void> Add(std::shared_ptr<Plugin> plugin);

    const std::unique_ptr<State> m_pState;
};

/// The plug-ins of an application that implement an interface: they are found, checked, loaded, owned and
/// unloaded here. A plug-in that does not fit is refused with the reason, before any of its objects is made.
/// Destroying the set gives up its plug-ins in the reverse order of loading. A plug-in that nobody holds any
/// more is destroyed in this order: the modules (`LibModule`) that its code registered are released, its
/// object is destroyed, its code is unloaded. The set may be made before, in and after a `ToolkitSession`;
/// any thread may call any operation, and a plug-in, too. A context must outlive the plug-ins.
///
/// @code
/// Toolkit::Plugins<desk::Importer> importers;
/// for (const Toolkit::Failure& failure : importers.LoadFolder(folder))
///     std::cerr << failure.Message() << '\n';
/// for (const std::shared_ptr<desk::Importer>& importer : importers.All())
///     std::cout << importer->Info().Name() << ": " << importer->Import(file) << '\n';
/// @endcode
template <typename Interface>
class Plugins : public PluginsBase
{
    static_assert(std::is_base_of_v<Plugin, Interface>,
                  "an interface of plug-ins is derived from Toolkit::Plugin");

public:
    Plugins() : PluginsBase(Agreement(), PluginContext()) {}

    /// Hands the constructor of each plug-in a reference, or a pointer, to this object.
    template <typename Context, std::enable_if_t<!std::is_base_of_v<PluginsBase, Context>, int> = 0>
    explicit Plugins(Context& context) : PluginsBase(Agreement(), PluginContext(context))
    {
    }
    /// The same for a pointer to the object, which is not null.
    template <typename Context>
    explicit Plugins(Context* context) : PluginsBase(Agreement(), PluginContext(*context))
    {
    }

    /// The plug-ins that are loaded at this moment, in the order of loading. The code of each stays until
    /// nobody holds it any more.
    std::vector<std::shared_ptr<Interface>> All() const
    {
        std::vector<std::shared_ptr<Interface>> all;
        for (std::shared_ptr<Plugin>& plugin : Loaded())
            all.push_back(std::static_pointer_cast<Interface>(std::move(plugin)));
        return all;
    }

    /// The plug-in of that name; null when there is none.
    std::shared_ptr<Interface> Find(std::string_view name) const
    {
        return std::static_pointer_cast<Interface>(FindLoaded(name));
    }

private:
    static PluginInterface Agreement() noexcept
    {
        return ToolkitPluginInterface(PluginInterfaceTag<Interface>());
    }
};

} // namespace Toolkit

#endif
