// SPDX-License-Identifier: MIT
#include <new>
#include <stdexcept>

#include "tests/plugins/Greeter.h"
#include "toolkit/core/LibModule.h"
#include "toolkit/core/LibModuleManager.h"

// Notes all that happens to it in the program's context, throws what that asks for, and registers two modules
// where there is a manager: one in place, and one that nobody destroys. Built several times, each with a
// PLUGIN_NAME of its own.

using Toolkit::LibModuleManager;
using ToolkitTest::Notes;

namespace
{

struct Statics
{
    ~Statics()
    {
        if (m_pNotes != nullptr)
            m_pNotes->events.push_back("~" PLUGIN_NAME);
    }

    Notes* m_pNotes = nullptr;
};
Statics s_statics;

class Module : public Toolkit::LibModule
{
public:
    explicit Module(std::string name) : m_strName(std::move(name)) {}

    void Initialize() override { s_statics.m_pNotes->events.push_back("<" PLUGIN_NAME + m_strName); }
    void Release() override { s_statics.m_pNotes->events.push_back(">" PLUGIN_NAME + m_strName); }

private:
    const std::string m_strName;
};
Module s_module(".static");
// Reachable for as long as the code is there, so that no tool takes it for lost.
alignas(Module) unsigned char s_place[sizeof(Module)];

class Noting : public ToolkitTest::Greeter
{
public:
    explicit Noting(Notes& notes)
    {
        s_statics.m_pNotes = &notes;
        Note("+");
        if (!notes.refusal.empty())
            throw std::runtime_error(notes.refusal);
        if (LibModuleManager::s_pInstance == nullptr)
            return;
        LibModuleManager::s_pInstance->Register(&s_module);
        LibModuleManager::s_pInstance->Register(new (s_place) Module(".lost"));
    }
    ~Noting() override { Note("-"); }

    std::string Greet(const std::string& whom) const override { return "noted " + whom; }

private:
    static void Note(const char* event)
    {
        s_statics.m_pNotes->events.push_back(event + std::string(PLUGIN_NAME));
    }
};

} // namespace

TOOLKIT_PLUGIN(Noting, ToolkitTest::Greeter, PLUGIN_NAME, "1");
