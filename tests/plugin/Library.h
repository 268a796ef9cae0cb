// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_PLUGIN_LIBRARY_H
#define TOOLKIT_TESTS_PLUGIN_LIBRARY_H

#include <stdexcept>
#include <string>

#include <dlfcn.h>

namespace ToolkitTest
{

// A library opened for a scope the way a careful host does: resolved at once, its names kept to itself.
class Library
{
public:
    explicit Library(const std::string& path) : m_pHandle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
    {
        if (m_pHandle == nullptr)
            throw std::runtime_error(dlerror());
    }
    ~Library() { dlclose(m_pHandle); }

    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    template <class Function>
    Function Find(const char* name) const
    {
        void* const address = dlsym(m_pHandle, name);
        if (address == nullptr)
            throw std::runtime_error(dlerror());
        return reinterpret_cast<Function>(address);
    }

    static bool IsLoaded(const std::string& path)
    {
        void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr)
            dlclose(handle);
        return handle != nullptr;
    }

private:
    void* const m_pHandle;
};

} // namespace ToolkitTest

#endif
