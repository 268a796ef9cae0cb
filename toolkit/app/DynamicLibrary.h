// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_DYNAMICLIBRARY_H
#define TOOLKIT_APP_DYNAMICLIBRARY_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

class wxDynamicLibrary;

namespace Toolkit
{

/// A shared library loaded at run time. The object owns it and unloads it when it is destroyed, unless it was
/// detached. One thread at a time may use it. Where the library cannot be loaded, the object has no symbols,
/// and nothing is logged.
///
/// @code
/// Toolkit::DynamicLibrary mailer(L"/usr/lib/desk/mails.so");
/// using Start = void (*)();
/// if (const auto start = reinterpret_cast<Start>(mailer.GetSymbol(L"Start")))
///     start();
/// @endcode
class TOOLKIT_API DynamicLibrary
{
public:
    DynamicLibrary();
    /// Loads the library at once, resolves all of its symbols and offers its own to libraries loaded later.
    /// A name without a folder is searched for as the system does. Quirk: ".so" is added to a name without an
    /// extension.
    explicit DynamicLibrary(const TString<wchar_t>& path);
    ~DynamicLibrary();

    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    /// As given to the constructor.
    const TString<wchar_t>& GetPath() const { return m_strPath; }

    /// The symbol's address, valid while the library is loaded; null when there is none.
    void* GetSymbol(const TString<wchar_t>& name) const;

    /// The system's handle, which the caller now owns and gives to `Unload`; null when nothing is loaded.
    void* Detach();

    /// Unloads a library that was detached; null is ignored.
    static void Unload(void* handle);

private:
    TString<wchar_t> m_strPath;
    wxDynamicLibrary* m_pLibrary;
};

} // namespace Toolkit

#endif
