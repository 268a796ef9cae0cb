// Plug-in "redact": copies text files and hides the mail addresses in them.

#include "Plugin.h"

namespace Desk
{

namespace
{

const wchar_t* const c_strHidden = L"***";
const wchar_t* const c_strWordEnds = L" \t,;:<>()[]\"";

// Hides the part before the "@" of every mail address; answers how many there were.
std::size_t HideAddresses(Text& line)
{
    std::size_t hidden = 0;
    for (std::size_t at = line.find(L'@'); at != line.npos; at = line.find(L'@', at + 1))
    {
        const std::size_t end = at == 0 ? line.npos : line.find_last_of(c_strWordEnds, at - 1);
        const std::size_t start = end == line.npos ? 0 : end + 1;
        if (start == at)
            continue;
        line.replace(start, at - start, c_strHidden);
        at = start + Text(c_strHidden).size();
        ++hidden;
    }
    return hidden;
}

class Redact : public Plugin
{
public:
    void Initialize() override { TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"redact: ready"; }
    void Release() override { TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"redact: released"; }

    Text GetName() const override { return L"redact"; }

    void Configure(const Toolkit::IniFile&) override {}

    bool Takes(const Text& fileName) const override { return HasExtension(fileName, L".txt"); }

    bool Work(const Text& path, const Text& folder, std::vector<Text>& report) override
    {
        Toolkit::TextFile source;
        Toolkit::FFile target;
        const Text targetPath = TargetPath(path, folder);
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
            const std::size_t inLine = HideAddresses(line);
            if (hidden == 0 && inLine > 0)
                report.push_back(L"\"" + line + L"\"");
            hidden += inLine;
            target.Write(line + L"\n");
        }
        TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"redact: hid " << hidden << L" addresses of " << path;
        report.push_back(std::to_wstring(lines) + L" lines, " + std::to_wstring(hidden) +
                         L" addresses hidden, in " + targetPath);
        return target.Close();
    }

private:
    static Text TargetPath(const Text& path, const Text& folder)
    {
        Text volume, parent, name, extension, target;
        Toolkit::PathManager::SplitPath(path, volume, parent, name, extension);
        Toolkit::PathManager::AppendPath(target, folder, name + L"." + extension);
        return target;
    }
};

} // namespace

extern "C" Plugin* DeskPluginLoad()
{
    static Redact s_module;
    Toolkit::LibModuleManager::s_pInstance->Register(&s_module);
    return &s_module;
}

} // namespace Desk
