// SPDX-License-Identifier: MIT
#include <new>
#include <stdexcept>

#include "tests/plugins/Greeter.h"
#include "toolkit/core/LibModule.h"
#include "toolkit/core/LibModuleManager.h"

// Its constructor throws what the program asks for.

namespace
{

class Strange
{
};

// Its text is in the plug-in's code.
class Refusal : public std::exception
{
public:
    const char* what() const noexcept override { return "no mailbox is set up"; }
};

class ThrowingModule : public Toolkit::LibModule
{
public:
    void Initialize() override { throw std::runtime_error("the module has no licence"); }
    void Release() override {}
};
ThrowingModule s_module;

class Throwing : public ToolkitTest::Greeter
{
public:
    explicit Throwing(const std::string& what)
    {
        if (what == "refusal")
            throw Refusal();
        if (what == "strange")
            throw Strange();
        if (what == "memory")
            throw std::bad_alloc();
        if (what == "module")
            Toolkit::LibModuleManager::s_pInstance->Register(&s_module);
    }

    std::string Greet(const std::string& whom) const override { return whom; }
};

} // namespace

TOOLKIT_PLUGIN(Throwing, ToolkitTest::Greeter, "throwing", "1");
