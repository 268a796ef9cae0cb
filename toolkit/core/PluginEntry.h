// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_PLUGINENTRY_H
#define TOOLKIT_CORE_PLUGINENTRY_H

#include <cstdint>
#include <memory>
#include <type_traits>
#include <typeinfo>

#include "toolkit/core/Export.h"

namespace Toolkit
{

class Plugin;

/// What a program and its plug-ins agree on: an interface by its name, and its version.
struct PluginInterface
{
    /// The name of the interface, unique to it.
    const char* name;
    /// The version that both sides must agree on.
    std::uint32_t version;
};

/// Stands for an interface where a function is looked up by it.
template <typename Interface>
struct PluginInterfaceTag
{
};

/// Found where TOOLKIT_PLUGIN_INTERFACE gives nothing better.
template <typename Interface>
constexpr PluginInterface ToolkitPluginInterface(PluginInterfaceTag<Interface>) noexcept
{
    static_assert(sizeof(Interface) == 0, "TOOLKIT_PLUGIN_INTERFACE does not stand after this interface");
    return {nullptr, 0};
}

/// The object that a program hands to each plug-in's constructor, or none. Its class may be derived from the
/// one that a plug-in asks for. Only the program knows that; the conversion is made by throwing the pointer
/// and catching it as the other type.
class TOOLKIT_API PluginContext
{
public:
    PluginContext() noexcept = default;
    /// The context is this object, which must outlive the plug-ins.
    template <typename Context>
    explicit PluginContext(Context& context) noexcept
        : m_pObject(std::addressof(const_cast<std::remove_cv_t<Context>&>(context))),
          m_pThrow(&Throw<Context>),
          m_strType(typeid(Context).name()),
          m_bConst(std::is_const_v<Context>)
    {
    }

    /// True when there is no object.
    bool IsEmpty() const noexcept;

    /// The object as one of that type. What this throws where it is none is for `Plugins` alone.
    template <typename Wanted>
    Wanted* As() const
    {
        try
        {
            ThrowObject();
        }
        catch (Wanted* object)
        {
            return object;
        }
        catch (...)
        {
            Refuse(typeid(Wanted).name());
        }
        Refuse(typeid(Wanted).name());
    }

private:
    template <typename Context>
    static void Throw(void* object)
    {
        throw static_cast<Context*>(object);
    }

    // Throws a pointer to the object; nothing without one.
    void ThrowObject() const;
    [[noreturn]] void Refuse(const char* wanted) const;

    void* m_pObject = nullptr;
    void (*m_pThrow)(void* object) = nullptr;
    const char* m_strType = nullptr;
    bool m_bConst = false;
};

/// The one argument of a plug-in's constructor: it becomes a reference or a pointer to the context, of the
/// type that the constructor takes.
template <typename Class>
class PluginArgument
{
    // A constructor that copies does not take the context.
    template <typename Context>
    static constexpr bool s_bIsContext =
        !std::is_pointer_v<Context> && !std::is_base_of_v<std::remove_cv_t<Context>, Class>;

public:
    /// The context must outlive this object.
    explicit PluginArgument(const PluginContext& context) noexcept : m_context(context) {}

    /// The object of the context, by reference.
    template <typename Context, std::enable_if_t<s_bIsContext<Context>, int> = 0>
    operator Context&() const
    {
        return *m_context.As<Context>();
    }
    /// The object of the context, by pointer.
    template <typename Context, std::enable_if_t<s_bIsContext<Context>, int> = 0>
    operator Context*() const
    {
        return m_context.As<Context>();
    }

private:
    const PluginContext& m_context;
};

/// What a plug-in's library exports under the name ToolkitPluginEntry: a structure of C, which may grow at
/// its end. TOOLKIT_PLUGIN makes it.
struct PluginEntry
{
    /// The size of this structure in the library that it comes from.
    std::uint32_t size;
    /// The major version of the headers that the plug-in was compiled with.
    std::uint32_t libraryMajor;
    /// The interface that the plug-in implements.
    PluginInterface interface;
    /// The name of the plug-in.
    const char* name;
    /// The version of the plug-in.
    const char* version;
    /// Makes the plug-in's object, which the caller owns.
    Plugin* (*make)(const PluginContext* context);
};

/// The major version of the library whose headers these are.
constexpr std::uint32_t s_uPluginLibraryMajor = 1;

/// Makes an object of a plug-in's class: with the context if its constructor takes one.
template <typename Class, typename Interface>
Plugin* MakePlugin(const PluginContext* context)
{
    static_assert(std::is_base_of_v<Interface, Class>, "a plug-in's class is derived from its interface");
    Interface* made = nullptr;
    if constexpr (!std::is_constructible_v<Class, PluginArgument<Class>>)
        made = new Class();
    else if constexpr (!std::is_default_constructible_v<Class>)
        made = new Class(PluginArgument<Class>(*context));
    else
        made = context->IsEmpty() ? new Class() : new Class(PluginArgument<Class>(*context));
    return made;
}

/// The entry of a plug-in of this class.
template <typename Class, typename Interface>
constexpr PluginEntry MakePluginEntry(const char* name, const char* version) noexcept
{
    return {sizeof(PluginEntry),
            s_uPluginLibraryMajor,
            ToolkitPluginInterface(PluginInterfaceTag<Interface>()),
            name,
            version,
            &MakePlugin<Class, Interface>};
}

} // namespace Toolkit

#endif
