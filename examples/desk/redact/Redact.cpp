// SPDX-License-Identifier: MIT
// Plug-in "redact": copies text files and hides in them what the patterns of its settings find.

#include "Plugin.h"
#include "redact/Rule.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogStatement.h"
#include "toolkit/regExp/RegExp.Exceptions"

namespace Desk
{

namespace
{

class Redact : public Plugin
{
public:
    void Initialize() override { TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"redact: ready"; }
    void Release() override { TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"redact: released"; }

    Text GetName() const override { return L"redact"; }

    // Every key of the section names a rule, its value is the pattern.
    void Configure(const Toolkit::IniFile& settings, std::vector<Text>& problems) override
    {
        m_rules.clear();
        std::vector<Text> names;
        settings.GetKeyList(GetName(), names);
        for (const Text& name : names)
            AddRule(name, settings.GetValue(GetName(), name, Text::Empty()), problems);
    }

    bool Takes(const Text& fileName) const override { return HasExtension(fileName, L".txt"); }

    bool Work(const Text& path, const Text& folder, std::vector<Text>& report) override
    {
        Toolkit::TextFile source;
        Toolkit::FFile target;
        const Text targetPath = Join(folder, FileName(path));
        if (!source.Open(path) || !target.Open(targetPath, L"wb"))
        {
            TOOLKIT_LOG(Toolkit::LogSeverity::Warning) << L"redact: cannot work on " << path;
            return false;
        }
        std::size_t lines = 0;
        std::size_t hidden = 0;
        for (Text line = source.GetFirstLine(); !source.Eof(); line = source.GetNextLine())
        {
            ++lines;
            const std::size_t inLine = Hide(line);
            if (inLine > 0)
                report.push_back(line);
            hidden += inLine;
            target.Write(line + L"\n");
        }
        TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"redact: hid " << hidden << L" places of " << path;
        report.push_back(ToText(lines) + L" lines, " + ToText(hidden) + L" places hidden, in " + targetPath);
        return target.Close();
    }

    bool Read(const Text& path, Document& document) override
    {
        const Text name = FileName(path);
        std::vector<Text> lines;
        if (!Takes(name) || !ReadLines(path, lines))
            return false;
        document = {path, name, Text(), Text(), Text(), 0};
        for (const Text& line : lines)
            document.m_strText += line + L"\n";
        return true;
    }

    std::size_t Hide(Text& text) const override
    {
        std::size_t hidden = 0;
        Toolkit::TString<char> bytes = Toolkit::UTF8::ToUTF8(text);
        for (const Rule& rule : m_rules)
            hidden += rule.Apply(bytes);
        text = Toolkit::UTF8::ToUNICODE(bytes);
        return hidden;
    }

private:
    void AddRule(const Text& name, const Text& pattern, std::vector<Text>& problems)
    {
        try
        {
            m_rules.emplace_back(name, pattern);
        }
        catch (const Toolkit::smart_ptr<Toolkit::RegExpException>& exception)
        {
            const Text problem = name + L": " + Toolkit::UTF8::ToUNICODE(exception->GetMessage());
            TOOLKIT_LOG(Toolkit::LogSeverity::Warning) << L"redact: " << problem;
            problems.push_back(problem);
        }
    }

    std::vector<Rule> m_rules;
};

} // namespace

extern "C" Plugin* DeskPluginLoad()
{
    static Redact s_module;
    Toolkit::LibModuleManager::s_pInstance->Register(&s_module);
    return &s_module;
}

} // namespace Desk
