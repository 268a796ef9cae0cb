// SPDX-License-Identifier: MIT
#include "toolkit/core/Plugins.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>

#include "toolkit/core/LibModuleManager.h"
#include "toolkit/internal/system/AbsolutePath.h"
#include "toolkit/internal/system/FolderStream.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SharedLibrary.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/text/ReadableSymbol.h"

namespace Toolkit
{

namespace
{

static_assert(s_uPluginLibraryMajor == TOOLKIT_VERSION_MAJOR, "the version of the headers is the library's");

const char c_strEntry[] = "ToolkitPluginEntry";

// Thrown by a plug-in's conversion of its context, and caught around its constructor.
struct WrongContext
{
    std::string m_strReason;
};

std::string Agreed(const PluginInterface& interface)
{
    return "version " + std::to_string(interface.version) + " of " + interface.name;
}

// Why the plug-in of this entry does not fit; empty if it does. The first two fields are of every version.
std::string Mismatch(const PluginEntry& entry, const PluginInterface& wanted)
{
    if (entry.size < sizeof(PluginEntry) || entry.libraryMajor != s_uPluginLibraryMajor)
        return "it is made for version " + std::to_string(entry.libraryMajor) +
               " of the library, this program uses version " + std::to_string(s_uPluginLibraryMajor);
    if (entry.interface.version != wanted.version || std::strcmp(entry.interface.name, wanted.name) != 0)
        return "it is made for " + Agreed(entry.interface) + ", this program uses " + Agreed(wanted);
    return std::string();
}

bool IsLibraryName(std::string_view name)
{
    const std::string_view ending = ".so";
    return name.front() != '.' && name.size() > ending.size() &&
           name.substr(name.size() - ending.size()) == ending;
}

// Collects the names of the libraries in the folder, in order; returns 0 or the number of the error that
// ended the list.
int FindLibraries(const NativePath& folder, std::vector<std::string>& names)
{
    errno = ENOENT;
    const FolderStream stream = folder.IsValid() ? OpenFolder(AT_FDCWD, folder.c_str()) : nullptr;
    if (stream == nullptr)
        return errno;
    errno = 0;
    while (const dirent* const entry = readdir(stream.get()))
    {
        if (IsLibraryName(entry->d_name))
            names.emplace_back(entry->d_name);
        errno = 0;
    }
    const int error = errno;
    std::sort(names.begin(), names.end());
    return error;
}

} // namespace

bool PluginContext::IsEmpty() const noexcept
{
    return m_pObject == nullptr;
}

void PluginContext::ThrowObject() const
{
    if (!IsEmpty())
        m_pThrow(m_pObject);
}

void PluginContext::Refuse(const char* wanted) const
{
    const std::string reason =
        "it needs a context of type " + ReadableSymbol(wanted) + ", this program gives ";
    if (IsEmpty())
        throw WrongContext{reason + "none"};
    throw WrongContext{reason + "one of type " + (m_bConst ? "const " : "") + ReadableSymbol(m_strType)};
}

struct PluginsBase::State
{
    std::vector<std::shared_ptr<Plugin>>::iterator Find(std::string_view name)
    {
        return std::find_if(m_plugins.begin(), m_plugins.end(),
                            [name](const std::shared_ptr<Plugin>& plugin)
                            { return plugin->Info().Name() == name; });
    }

    // That no plug-in is loaded by this one's name.
    Result<void> NeedNew(const PluginInfo& info)
    {
        const auto found = Find(info.Name());
        if (found == m_plugins.end())
            return Result<void>();
        return LibraryFailure(Errc::Refused, info.File().native(),
                              "its name is \"" + info.Name() + "\", as is that of " +
                                  (*found)->Info().File().native());
    }

    const PluginInterface m_interface;
    const PluginContext m_context;
    // Guards the list, and is held for nothing else: plug-ins may come back here.
    std::mutex m_mutex;
    std::vector<std::shared_ptr<Plugin>> m_plugins;
};

// A plug-in's library, and what its object is told of it. Several of them may own the same library, which the
// system has loaded once: its modules are those of all of them.
struct PluginsBase::Code
{
    explicit Code(SharedLibrary library) noexcept : m_library(std::move(library))
    {
        const std::lock_guard<std::mutex> lock(s_mutex);
        m_pNext = std::exchange(s_pFirst, this);
    }
    ~Code()
    {
        TakeBackModules();
        Unlist();
        LibModuleManager::Unload(std::move(m_library));
    }

    Code(const Code&) = delete;
    Code& operator=(const Code&) = delete;

    // Takes back the library's modules, unless somebody else still needs them.
    void TakeBackModules()
    {
        if (Leave())
            LibModuleManager::TakeBackModulesOf(m_library);
    }

    SharedLibrary m_library;
    PluginInfo m_info;

private:
    // Needs the modules no more; true when nobody else does.
    bool Leave()
    {
        const std::lock_guard<std::mutex> lock(s_mutex);
        m_bHasLeft = true;
        for (const Code* code = s_pFirst; code != nullptr; code = code->m_pNext)
            if (!code->m_bHasLeft && code->m_library.IsSame(m_library))
                return false;
        return true;
    }

    void Unlist()
    {
        const std::lock_guard<std::mutex> lock(s_mutex);
        Code** place = &s_pFirst;
        while (*place != this)
            place = &(*place)->m_pNext;
        *place = m_pNext;
    }

    // All that there are, in no order. Nobody else's, although the class around is exported.
    [[gnu::visibility("hidden")]] static std::mutex s_mutex;
    [[gnu::visibility("hidden")]] static Code* s_pFirst;

    Code* m_pNext = nullptr;
    bool m_bHasLeft = false;
};

std::mutex PluginsBase::Code::s_mutex;
PluginsBase::Code* PluginsBase::Code::s_pFirst = nullptr;

// How a plug-in that nobody holds any more is destroyed.
class PluginsBase::Destroy
{
public:
    explicit Destroy(std::shared_ptr<Code> code) noexcept : m_pCode(std::move(code)) {}

    void operator()(Plugin* plugin)
    {
        m_pCode->TakeBackModules();
        delete plugin;
        // Here, since this object itself stays for as long as there are weak pointers.
        m_pCode.reset();
    }

private:
    std::shared_ptr<Code> m_pCode;
};

// While it lives, the constructors on this thread take this information.
class PluginsBase::Making
{
public:
    explicit Making(const PluginInfo& info) noexcept : m_pBefore(Plugin::Exchange(&info)) {}
    ~Making() { Plugin::Exchange(m_pBefore); }

    Making(const Making&) = delete;
    Making& operator=(const Making&) = delete;

private:
    const PluginInfo* const m_pBefore;
};

PluginsBase::PluginsBase(const PluginInterface& interface, const PluginContext& context)
    : m_pState(new State{interface, context, {}, {}})
{
}

PluginsBase::~PluginsBase()
{
    for (bool more = true; more;)
    {
        // Destroyed after the lock.
        std::shared_ptr<Plugin> last;
        const std::lock_guard<std::mutex> lock(m_pState->m_mutex);
        more = !m_pState->m_plugins.empty();
        if (more)
        {
            last = std::move(m_pState->m_plugins.back());
            m_pState->m_plugins.pop_back();
        }
    }
}

std::vector<Failure> PluginsBase::LoadFolder(const std::filesystem::path& folder)
{
    std::vector<Failure> failures;
    std::vector<std::string> names;
    if (const int error = FindLibraries(NativePath::OfBytes(folder.native()), names); error != 0)
        failures.push_back(SystemFailure("cannot load plug-ins from", folder.native(), error));
    for (const std::string& name : names)
        if (Result<void> loaded = Load(folder / name); !loaded)
            failures.push_back(loaded.error());
    return failures;
}

Result<void> PluginsBase::Load(const std::filesystem::path& file)
{
    const std::filesystem::path path = AbsolutePath(file);
    Result<SharedLibrary> library = SharedLibrary::Load(NativePath::OfBytes(path.native()), RTLD_LOCAL);
    if (!library)
        return library.error();
    const auto code = std::make_shared<Code>(*std::move(library));
    const auto* const entry = static_cast<const PluginEntry*>(code->m_library.Find(c_strEntry));
    // The loader finds that of a library that this one needs, too.
    if (entry == nullptr || !code->m_library.Contains(entry))
        return LibraryFailure(Errc::Malformed, path.native(), "it is no plug-in, as it has no entry");
    if (const std::string reason = Mismatch(*entry, m_pState->m_interface); !reason.empty())
        return LibraryFailure(Errc::WrongInterface, path.native(), reason);
    code->m_info = PluginInfo(entry->name, entry->version, path);
    if (Result<void> isNew = NeedNew(code->m_info); !isNew)
        return isNew;
    Result<std::shared_ptr<Plugin>> made = Make(*entry, code);
    return made ? Add(*std::move(made)) : made.error();
}

Result<void> PluginsBase::Unload(std::string_view name)
{
    // Destroyed after the lock.
    std::shared_ptr<Plugin> plugin;
    const std::lock_guard<std::mutex> lock(m_pState->m_mutex);
    const auto found = m_pState->Find(name);
    if (found == m_pState->m_plugins.end())
        return Failure(std::make_error_code(std::errc::invalid_argument),
                       "cannot unload \"" + std::string(name) + "\": no plug-in of this name is loaded");
    plugin = std::move(*found);
    m_pState->m_plugins.erase(found);
    return Result<void>();
}

std::vector<std::shared_ptr<Plugin>> PluginsBase::Loaded() const
{
    const std::lock_guard<std::mutex> lock(m_pState->m_mutex);
    return m_pState->m_plugins;
}

std::shared_ptr<Plugin> PluginsBase::FindLoaded(std::string_view name) const
{
    const std::lock_guard<std::mutex> lock(m_pState->m_mutex);
    const auto found = m_pState->Find(name);
    return found != m_pState->m_plugins.end() ? *found : nullptr;
}

Result<std::shared_ptr<Plugin>> PluginsBase::Make(const PluginEntry& entry,
                                                  const std::shared_ptr<Code>& code) const
{
    const auto refuse = [&code](std::error_code error, const std::string& reason)
    { return LibraryFailure(error, code->m_info.File().native(), reason); };
    // What is thrown, and its text, belong to the plug-in's code, which the caller still holds.
    try
    {
        const Making making(code->m_info);
        return std::shared_ptr<Plugin>(entry.make(&m_pState->m_context), Destroy(code));
    }
    catch (const WrongContext& wrong)
    {
        return refuse(Errc::WrongInterface, wrong.m_strReason);
    }
    catch (const std::bad_alloc&)
    {
        return refuse(std::make_error_code(std::errc::not_enough_memory), "there is no memory for it");
    }
    catch (const std::exception& thrown)
    {
        return refuse(Errc::Refused, std::string("its constructor threw: ") + thrown.what());
    }
    catch (const abi::__forced_unwind&)
    {
        throw;
    }
    catch (...)
    {
        return refuse(Errc::Refused, "its constructor threw a " +
                                         ReadableSymbol(abi::__cxa_current_exception_type()->name()));
    }
}

Result<void> PluginsBase::NeedNew(const PluginInfo& info) const
{
    const std::lock_guard<std::mutex> lock(m_pState->m_mutex);
    return m_pState->NeedNew(info);
}

Result<void> PluginsBase::Add(std::shared_ptr<Plugin> plugin)
{
    const std::lock_guard<std::mutex> lock(m_pState->m_mutex);
    // Another thread may have been faster.
    if (Result<void> isNew = m_pState->NeedNew(plugin->Info()); !isNew)
        return isNew;
    m_pState->m_plugins.push_back(std::move(plugin));
    return Result<void>();
}

} // namespace Toolkit
