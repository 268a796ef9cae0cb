// SPDX-License-Identifier: MIT
// Is linked with the library and opens a second copy of the library's file, which is its argument.

#include <iostream>

#include <dlfcn.h>

#include "toolkit/Toolkit.h"

using namespace Toolkit;

namespace
{

int Fail(const char* what)
{
    std::cerr << what << '\n';
    return 1;
}

} // namespace

int main(int, char* arguments[])
{
    RestartManagment::s_strExecutableFilename = L"a name that takes memory of its own";
    const wchar_t* const constant = FileLogger::c_strLogExtension.data();
    const wchar_t* const variable = RestartManagment::s_strExecutableFilename.data();
    void* const copy = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (copy == nullptr)
        return Fail(dlerror());
    if (dlsym(copy, "DllToolkitLoad") == reinterpret_cast<void*>(&DllToolkitLoad))
        return Fail("the copy is no second one");
    if (FileLogger::c_strLogExtension.data() != constant ||
        RestartManagment::s_strExecutableFilename.data() != variable)
        return Fail("the copy made the statics again");
    if (dlclose(copy) != 0)
        return Fail(dlerror());
    if (FileLogger::c_strLogExtension != L".vxlog" || PathManager::c_strPluginsFolderName != L"plugins" ||
        RestartManagment::s_strExecutableFilename != L"a name that takes memory of its own")
        return Fail("the copy took the statics along");
    const ToolkitSession session;
    std::cout << "whole\n";
    return 0;
}
