// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include <fstream>
#include <memory>

#include "toolkit/files/IniFile.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

// A file of so many sections with so many keys each.
TString<wchar_t> Settings(std::size_t sections, std::size_t keys)
{
    const std::string name = "settings" + std::to_string(sections) + "-" + std::to_string(keys);
    std::ofstream file(ToolkitBench::Folder() / name);
    for (std::size_t section = 0; section < sections; ++section)
    {
        file << "[section" << 1000000 + section << "]\n";
        for (std::size_t key = 0; key < keys; ++key)
            file << "key" << 1000000 + key << " = " << 1000000 + key << "\n";
    }
    return PathOf(name);
}

const std::vector<long> s_vecKeys = {250, 1000, 4000, 16000};

void AddLoad()
{
    Add("IniLoadKeys", s_vecKeys,
        [](std::size_t keys)
        { return [path = Settings(1, keys)] { benchmark::DoNotOptimize(IniFile(path).IsLoaded()); }; });
    Add("IniLoadSections", s_vecFew,
        [](std::size_t sections)
        { return [path = Settings(sections, 10)] { benchmark::DoNotOptimize(IniFile(path).IsLoaded()); }; });
    Add("IniLoadLongValue", s_vecMany,
        [](std::size_t length)
        {
            const std::string name = "value" + std::to_string(length);
            std::ofstream(ToolkitBench::Folder() / name)
                << "[section]\nkey=" << ToolkitBench::Words(length) << "\n";
            return [path = PathOf(name)] { benchmark::DoNotOptimize(IniFile(path).IsLoaded()); };
        });
}

// `look(file, keys)` in a file of that many keys, or of that many sections.
template <class Look>
void AddLookUp(const std::string& operation, bool sections, Look look)
{
    Add(operation, s_vecKeys,
        [sections, look](std::size_t count)
        {
            return [look, count,
                    file = std::make_shared<IniFile>(sections ? Settings(count, 1) : Settings(1, count))]
            { look(*file, count); };
        });
}

// A hundred of the names, or of names that are not there, evenly spread, so that no chance of one name
// counts.
template <class Call>
auto ForHundred(const std::wstring& prefix, Call call)
{
    return [names = NumberedTexts(prefix, 16000), call](const IniFile& file, std::size_t count)
    {
        for (std::size_t i = 0; i < 100; ++i)
            call(file, names[i * count / 100]);
    };
}

} // namespace

void AddIni()
{
    AddLoad();
    AddLookUp("IniLookUpKeys", false,
              ForHundred(L"key",
                         [](const IniFile& file, const TString<wchar_t>& name) {
                             benchmark::DoNotOptimize(
                                 file.GetValue(L"section1000000", name, TString<wchar_t>::Empty()).data());
                         }));
    AddLookUp("IniLookUpMissing", false,
              ForHundred(L"other", [](const IniFile& file, const TString<wchar_t>& name)
                         { benchmark::DoNotOptimize(file.HasValue(L"section1000000", name)); }));
    AddLookUp("IniLookUpSections", true,
              ForHundred(L"section", [](const IniFile& file, const TString<wchar_t>& name)
                         { benchmark::DoNotOptimize(file.GetUint32(name, L"key1000000", 0)); }));
    AddLookUp("IniKeyList", false,
              [](const IniFile& file, std::size_t)
              {
                  std::vector<TString<wchar_t>> keys;
                  file.GetKeyList(L"section1000000", keys);
                  benchmark::DoNotOptimize(keys.data());
              });
}

} // namespace ToolkitGrowth
