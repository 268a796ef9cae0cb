// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include <cstring>
#include <memory>

#include <sys/wait.h>

#include "toolkit/app/CmdLineOption.h"
#include "toolkit/app/CmdLineParser.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/app/Version.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

// The arguments of a program that is given that many options with a value each.
class Arguments
{
public:
    explicit Arguments(std::size_t options) : m_texts(NumberedTexts(L"-option", options))
    {
        m_pointers.push_back(L"program");
        for (const TString<wchar_t>& text : m_texts)
        {
            m_pointers.push_back(text.c_str());
            m_pointers.push_back(L"value");
        }
    }

    int Count() const { return static_cast<int>(m_pointers.size()); }
    const wchar_t** Vector() { return m_pointers.data(); }

private:
    const std::vector<TString<wchar_t>> m_texts;
    std::vector<const wchar_t*> m_pointers;
};

void AddOptions(CmdLineParser& parser, std::size_t count)
{
    for (const TString<wchar_t>& name : NumberedTexts(L"option", count))
        parser.AddOption(smart_ptr<CmdLineOption>(new CmdLineOption(name, true)));
}

void AddCommandLine()
{
    Add("Tokenize", {100, 1000, 10000, 100000},
        [](std::size_t length)
        {
            return [line = WideText(length)]
            {
                std::vector<TString<wchar_t>> tokens;
                CmdLineParser::Tokenize(line, tokens);
                benchmark::DoNotOptimize(tokens.data());
            };
        });
    Add("CmdLineArguments", s_vecFew,
        [](std::size_t size)
        {
            return [arguments = std::make_shared<Arguments>(size)]
            {
                const CmdLineParser parser(arguments->Count(), arguments->Vector());
                benchmark::DoNotOptimize(parser.GetArguments().data());
            };
        });
    Add("CmdLineParse", s_vecFew,
        [](std::size_t size)
        {
            Arguments arguments(size);
            const auto parser = std::make_shared<CmdLineParser>(arguments.Count(), arguments.Vector());
            AddOptions(*parser, 10);
            return [parser] { benchmark::DoNotOptimize(parser->Parse()); };
        });
    Add("CmdLineParseOptions", s_vecFew,
        [](std::size_t size)
        {
            Arguments arguments(size);
            const auto parser = std::make_shared<CmdLineParser>(arguments.Count(), arguments.Vector());
            AddOptions(*parser, size);
            return [parser] { benchmark::DoNotOptimize(parser->Parse()); };
        });
}

void AddPaths()
{
    Add("AppendPathParts", s_vecFew,
        [](std::size_t parts)
        {
            return [parts, name = TString<wchar_t>(L"folder")]
            {
                TString<wchar_t> path;
                for (std::size_t i = 0; i < parts; ++i)
                    PathManager::AppendPath(path, name);
                benchmark::DoNotOptimize(path.data());
            };
        });
    Add("AppendPathLength", s_vecMany,
        [](std::size_t length)
        {
            return [base = WideText(length), name = TString<wchar_t>(L"folder")]
            {
                TString<wchar_t> path;
                PathManager::AppendPath(path, base, name);
                benchmark::DoNotOptimize(path.data());
            };
        });
    Add("SplitPath", s_vecFew,
        [](std::size_t parts)
        {
            std::wstring path;
            for (std::size_t i = 0; i < parts; ++i)
                path += L"/folder";
            return [path = TString<wchar_t>(path + L"/name.txt")]
            {
                TString<wchar_t> volume;
                TString<wchar_t> folder;
                TString<wchar_t> name;
                TString<wchar_t> extension;
                PathManager::SplitPath(path, volume, folder, name, extension);
                benchmark::DoNotOptimize(folder.data());
            };
        });
}

// Keeps that many MiB in use.
void UseMemory(std::size_t size)
{
    static std::vector<char> s_vecUsed;
    if (s_vecUsed.size() == size << 20)
        return;
    s_vecUsed = std::vector<char>();
    s_vecUsed.resize(size << 20, 1);
}

// What comes after uses little again.
Work Start(std::size_t megabytes, const TString<wchar_t>& arguments)
{
    return [megabytes, arguments, path = TString<wchar_t>(L"/bin/true")]
    {
        UseMemory(megabytes);
        benchmark::DoNotOptimize(SystemInfo::StartProcess(path, arguments, true));
    };
}

void AddProcesses()
{
    Add("StartProcessMemory", {16, 64, 256, 1024}, [](std::size_t size) { return Start(size, L""); });
    Add("StartProcessArguments", s_vecFew,
        [](std::size_t size)
        {
            std::wstring arguments;
            for (const TString<wchar_t>& argument : NumberedTexts(L"argument", size))
                arguments += argument + L" ";
            return Start(1, TString<wchar_t>(arguments));
        });
    // The executable is not there, so that nothing but the restart itself is done.
    Add("RestartArguments", s_vecFew,
        [](std::size_t size)
        {
            RestartManagment::s_strExecutableFilename = L"toolkit-growth-restarts";
            return [arguments = std::make_shared<Arguments>(size)]
            {
                RestartManagment::ActivateRestartProcess(arguments->Count(), arguments->Vector());
                RestartManagment::RemoveLock();
                waitpid(-1, nullptr, 0);
            };
        });
}

} // namespace

void AddApp()
{
    AddCommandLine();
    AddPaths();
    AddProcesses();
    Add("VersionParse", s_vecMany,
        [](std::size_t length)
        {
            return [text = TString<wchar_t>(L"1.2.3." + std::wstring(length, L'4'))]
            { benchmark::DoNotOptimize(Version(text).GetRevision()); };
        });
}

} // namespace ToolkitGrowth
