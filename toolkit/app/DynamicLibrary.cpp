// SPDX-License-Identifier: MIT
#include "toolkit/app/DynamicLibrary.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <wx/dynlib.h>

#include "toolkit/internal/system/PathNames.h"

namespace Toolkit
{

namespace
{

// The loader would wait at a FIFO for a writer. A name without a folder is searched for elsewhere.
bool IsReadyToOpen(const TString<char>& path)
{
    struct stat status = {};
    return path.find('/') == TString<char>::npos || stat(path.c_str(), &status) != 0 ||
           S_ISREG(status.st_mode);
}

bool HasExtension(const TString<char>& path)
{
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.rfind('/');
    const std::size_t name = slash == TString<char>::npos ? 0 : slash + 1;
    return dot != TString<char>::npos && dot > name && dot + 1 < path.size();
}

// Loaded here and not by the base library, which reads the path in the current locale and takes one that it
// cannot express for the program itself.
void* Load(const TString<wchar_t>& path)
{
    TString<char> native = PathNames::ToNative(path);
    if (native.empty())
        return nullptr;
    if (!HasExtension(native))
        native += ".so";
    return IsReadyToOpen(native) ? dlopen(native.c_str(), RTLD_NOW | RTLD_GLOBAL) : nullptr;
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
