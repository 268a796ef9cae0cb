// SPDX-License-Identifier: MIT
#include "toolkit/app/DynamicLibrary.h"

#include <dlfcn.h>
#include <wx/dynlib.h>

#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/PathNames.h"
#include "toolkit/internal/system/SharedLibrary.h"

namespace Toolkit
{

namespace
{

bool HasExtension(const TString<char>& path)
{
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.rfind('/');
    const std::size_t name = slash == TString<char>::npos ? 0 : slash + 1;
    return dot != TString<char>::npos && dot > name && dot + 1 < path.size();
}

// Loaded here and not by wxWidgets, which reads the path in the current locale and takes one that it cannot
// express for the program itself.
void* Load(const TString<wchar_t>& path)
{
    TString<char> native = PathNames::ToNative(path);
    if (native.empty())
        return nullptr;
    if (!HasExtension(native))
        native += ".so";
    Result<SharedLibrary> library = SharedLibrary::Load(NativePath::OfBytes(native), RTLD_GLOBAL);
    return library ? library->Release() : nullptr;
}

} // namespace

DynamicLibrary::DynamicLibrary() : m_pLibrary(new wxDynamicLibrary) {}

DynamicLibrary::DynamicLibrary(const TString<wchar_t>& path) : DynamicLibrary()
{
    m_strPath = path;
    m_pLibrary->Attach(Load(path));
}

DynamicLibrary::~DynamicLibrary()
{
    delete m_pLibrary;
}

void* DynamicLibrary::GetSymbol(const TString<wchar_t>& name) const
{
    const TString<char> native = PathNames::ToNative(name);
    return m_pLibrary->IsLoaded() && !native.empty() ? dlsym(m_pLibrary->GetLibHandle(), native.c_str())
                                                     : nullptr;
}

void* DynamicLibrary::Detach()
{
    return m_pLibrary->Detach();
}

void DynamicLibrary::Unload(void* handle)
{
    if (handle != nullptr)
        wxDynamicLibrary::Unload(handle);
}

} // namespace Toolkit
