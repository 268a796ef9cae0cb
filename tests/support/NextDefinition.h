// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_NEXTDEFINITION_H
#define TOOLKIT_TESTS_SUPPORT_NEXTDEFINITION_H

#include <dlfcn.h>

namespace ToolkitTest
{

// For a program that defines a function of another library to stand between the two: the definition after its
// own. `name` is that of the symbol.
template <class Function>
Function* NextDefinition(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace ToolkitTest

#endif
