// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "toolkit/core/ToolkitSession.h"

#ifdef BENCH_CALLGRIND
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(name) static_cast<void>(name)
#endif

namespace ToolkitGrowth
{

const std::vector<long> s_vecMany = {1024, 8192, 65536, 524288};
const std::vector<long> s_vecFew = {100, 400, 1600, 6400};

namespace
{

struct Case
{
    std::string m_strName;
    bool m_bTimed;
    std::function<Work()> m_make;
};

std::vector<Case> s_vecCases;

void AddCases(const std::string& operation, const std::vector<long>& sizes, bool timed,
              const std::function<Work(std::size_t)>& make)
{
    for (const long size : sizes)
        s_vecCases.push_back({operation + "/" + std::to_string(size), timed,
                              [make, size] { return make(static_cast<std::size_t>(size)); }});
}

void AddAll()
{
    AddText();
    AddEncoding();
    AddLog();
    AddThreading();
    AddFiles();
    AddIni();
    AddZip();
    AddApp();
    AddIpc();
    AddRegExp();
    AddDateTime();
}

// The work is made once for all repetitions.
void Time(benchmark::State& state, const Case& growing)
{
    static std::map<std::string, Work> s_mapWorks;
    Work& work = s_mapWorks[growing.m_strName];
    if (!work)
        work = growing.m_make();
    ToolkitBench::Measure(state, work);
}

// Does each work twice and has callgrind, if it looks on, write down what the second time took. Only those
// with that part in their names.
int Count(const char* part)
{
    for (const Case& growing : s_vecCases)
    {
        if (growing.m_strName.find(part) == growing.m_strName.npos)
            continue;
        const Work work = growing.m_make();
        work();
        CALLGRIND_ZERO_STATS;
        work();
        CALLGRIND_DUMP_STATS_AT(growing.m_strName.c_str());
        std::printf("%s\n", growing.m_strName.c_str());
        std::fflush(stdout);
    }
    return 0;
}

void RegisterTimed()
{
    for (const Case& growing : s_vecCases)
        if (growing.m_bTimed)
            benchmark::RegisterBenchmark(("growth:" + growing.m_strName).c_str(),
                                         [&growing](benchmark::State& state) { Time(state, growing); });
}

} // namespace

void Add(const std::string& operation, const std::vector<long>& sizes,
         const std::function<Work(std::size_t)>& make)
{
    AddCases(operation, sizes, true, make);
}

void AddUntimed(const std::string& operation, const std::vector<long>& sizes,
                const std::function<Work(std::size_t)>& make)
{
    AddCases(operation, sizes, false, make);
}

TString<wchar_t> PathOf(const std::string& name)
{
    return Toolkit::UTF8::ToUNICODE(TString<char>((ToolkitBench::Folder() / name).string()));
}

TString<wchar_t> WideText(std::size_t length)
{
    return TString<wchar_t>(ToolkitBench::WideWords(length));
}

std::vector<TString<wchar_t>> NumberedTexts(const std::wstring& prefix, std::size_t count)
{
    std::vector<TString<wchar_t>> texts;
    // As many digits for each, so that all are equally long.
    for (std::size_t i = 0; i < count; ++i)
        texts.emplace_back(prefix + std::to_wstring(1000000 + i));
    return texts;
}

} // namespace ToolkitGrowth

// --count [part of a name]: each operation is done but not timed, as callgrind wants it.
int main(int count, char** arguments)
{
    // The copy of this program that restarting it starts.
    if (std::strcmp(arguments[count - 1], "-restart") == 0)
        return 0;
    setenv("LC_ALL", "en_GB.UTF-8", 1);
    setenv("TZ", "Europe/Paris", 1);
    ToolkitBench::Folder();
    const Toolkit::ToolkitSession session;
    ToolkitGrowth::AddAll();
    if (count > 1 && std::strcmp(arguments[1], "--count") == 0)
        return ToolkitGrowth::Count(count > 2 ? arguments[2] : "");
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return 2;
    ToolkitGrowth::RegisterTimed();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
