// SPDX-License-Identifier: MIT
// Plug-in "redact": hides in texts what the patterns of its settings find, and reads notes.

#include "Reader.h"
#include "redact/Rule.h"
#include "toolkit/core/LibModule.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

// What a plug-in has that relies on classic classes, which live as long as a ToolkitSession: the session
// initialises it and releases it. Where there is no session, nothing is registered.
class Module : public LibModule
{
public:
    Module()
    {
        if (LibModuleManager::s_pInstance != nullptr)
            LibModuleManager::s_pInstance->Register(this);
    }

    void Initialize() override { TOOLKIT_LOG(LogSeverity::Info) << "redact: module initialised"; }
    void Release() override { TOOLKIT_LOG(LogSeverity::Info) << "redact: module released"; }
};

class Redact : public Reader
{
public:
    Redact() { TOOLKIT_LOG(LogSeverity::Info) << "redact: ready"; }
    ~Redact() override { TOOLKIT_LOG(LogSeverity::Info) << "redact: released"; }

    // Every key of the section names a rule, its value is the pattern.
    std::vector<Failure> Configure(const Settings& settings) override
    {
        m_rules.clear();
        std::vector<Failure> problems;
        for (const std::string& name : settings.Keys("redact"))
        {
            const Result<Rule> rule = Rule::Make(name, settings.Get("redact", name, ""));
            if (rule)
                m_rules.push_back(*rule);
            else
                problems.push_back(rule.error());
        }
        return problems;
    }

    bool Takes(const std::filesystem::path& file) const override { return file.extension() == ".txt"; }

    Result<Document> Read(const std::filesystem::path& file) const override
    {
        Result<std::string> text = ReadFile(file);
        if (!text)
            return text.error();
        Document document;
        document.file = file;
        document.title = file.filename().string();
        document.text = *std::move(text);
        return document;
    }

    std::size_t Hide(std::string& text) const override
    {
        std::size_t hidden = 0;
        for (const Rule& rule : m_rules)
            hidden += rule.Apply(text);
        return hidden;
    }

private:
    Module m_module;
    std::vector<Rule> m_rules;
};

} // namespace

} // namespace Desk

TOOLKIT_PLUGIN(Desk::Redact, Desk::Reader, "redact", "2.0");
