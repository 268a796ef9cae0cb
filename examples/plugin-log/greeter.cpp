// SPDX-License-Identifier: MIT
// A plug-in: its module is brought up and down with all the others, and its lines go to the host's log.

#include <toolkit/Toolkit.h>

using namespace Toolkit;

namespace
{

class Greeter : public LibModule
{
public:
    void Initialize() override { TOOLKIT_LOG(LogSeverity::Info) << L"greeter: hello"; }
    void Release() override { TOOLKIT_LOG(LogSeverity::Info) << L"greeter: good bye"; }
};

} // namespace

// What the host looks for.
extern "C" TOOLKIT_API void LoadPlugin()
{
    static Greeter s_module;
    LibModuleManager::s_pInstance->Register(&s_module);
}
