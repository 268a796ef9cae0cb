// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

namespace ToolkitGrowth
{

namespace
{

template <class C>
TString<C> Repeated(std::size_t length, C character)
{
    return TString<C>(std::basic_string<C>(length, character));
}

// A part half as long as the text, which nearly occurs everywhere.
template <class C>
TString<C> NearlyRepeated(std::size_t length, C character, C other)
{
    TString<C> part = Repeated(length / 2, character);
    part[length / 4] = other;
    return part;
}

template <class C>
void AddCompare(const std::string& operation)
{
    Add(operation, s_vecMany,
        [](std::size_t size)
        {
            const std::string words = ToolkitBench::Words(size);
            const TString<C> a(std::basic_string<C>(words.begin(), words.end()));
            TString<C> b(a);
            for (C& character : b)
                character = character == C(' ') ? character : static_cast<C>(character - C('a') + C('A'));
            return [a, b] { benchmark::DoNotOptimize(a.compareNoCase(b)); };
        });
}

template <class C>
void AddSearches(const std::string& suffix)
{
    Add("HasSubstring" + suffix, s_vecMany,
        [](std::size_t size)
        {
            const std::string words = ToolkitBench::Words(size);
            return [text = TString<C>(std::basic_string<C>(words.begin(), words.end())),
                    part = Repeated<C>(6, C('Z'))] { benchmark::DoNotOptimize(text.HasSubstring(part)); };
        });
    const std::vector<long> sizes = {512, 2048, 8192, 32768};
    Add("HasSubstringNearly" + suffix, sizes,
        [](std::size_t size)
        {
            return [text = Repeated<C>(size, C('a')), part = NearlyRepeated<C>(size, C('A'), C('B'))]
            { benchmark::DoNotOptimize(text.HasSubstring(part)); };
        });
    Add("Contains" + suffix, s_vecMany,
        [](std::size_t size)
        {
            const std::string words = ToolkitBench::Words(size);
            return [text = TString<C>(std::basic_string<C>(words.begin(), words.end())),
                    part = Repeated<C>(6, C('z'))] { benchmark::DoNotOptimize(text.Contains(part)); };
        });
    Add("ContainsNearly" + suffix, sizes,
        [](std::size_t size)
        {
            return [text = Repeated<C>(size, C('a')), part = NearlyRepeated<C>(size, C('a'), C('b'))]
            { benchmark::DoNotOptimize(text.Contains(part)); };
        });
}

void AddReplace(const std::string& operation, const TString<wchar_t>& what, const TString<wchar_t>& with,
                const std::vector<long>& sizes, TString<wchar_t> (*makeText)(std::size_t))
{
    Add(operation, sizes,
        [what, with, makeText](std::size_t size)
        {
            return [what, with, text = makeText(size)]
            {
                TString<wchar_t> copy(text);
                copy.Replace(what, with);
                benchmark::DoNotOptimize(copy.data());
            };
        });
}

} // namespace

void AddText()
{
    AddCompare<char>("CompareNoCaseBytes");
    AddCompare<wchar_t>("CompareNoCaseWide");
    AddSearches<char>("Bytes");
    AddSearches<wchar_t>("Wide");
    AddReplace("ReplaceByLonger", L"the", L"every", s_vecMany, &WideText);
    AddReplace("ReplaceByShorter", L"the", L"", s_vecMany, &WideText);
    // Each replacement makes the next match: before it, behind it, and out of both.
    const std::vector<long> sizes = {512, 2048, 8192, 32768};
    AddReplace("ReplaceChainBack", L"ab", L"b", sizes,
               [](std::size_t size) { return TString<wchar_t>(std::wstring(size, L'a') + L"b"); });
    AddReplace("ReplaceChainOn", L"ba", L"b", sizes,
               [](std::size_t size) { return TString<wchar_t>(L"b" + std::wstring(size, L'a')); });
    AddReplace("ReplaceNested", L"ab", L"", sizes,
               [](std::size_t size)
               { return TString<wchar_t>(std::wstring(size, L'a') + std::wstring(size, L'b')); });
    // What is replaced as long as the text, and nearly everywhere.
    Add("ReplaceNearly", sizes,
        [](std::size_t size)
        {
            return [text = Repeated<wchar_t>(size, L'a'), part = NearlyRepeated<wchar_t>(size, L'a', L'b')]
            {
                TString<wchar_t> copy(text);
                copy.Replace(part, L"c");
                benchmark::DoNotOptimize(copy.data());
            };
        });
}

} // namespace ToolkitGrowth
