// SPDX-License-Identifier: MIT
#include <new>

#include "tests/plugins/Brought.h"
#include "toolkit/core/LibModule.h"
#include "toolkit/core/LibModuleManager.h"

namespace
{

class Module : public Toolkit::LibModule
{
public:
    void Initialize() override {}
    void Release() override {}
};
// Never destroyed, and registered until the code is gone.
alignas(Module) unsigned char s_place[sizeof(Module)];

} // namespace

void ToolkitTest::RegisterBrought()
{
    Toolkit::LibModuleManager::s_pInstance->Register(new (s_place) Module);
}
