// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/NameTable.h"

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>

#include <gtest/gtest.h>

namespace
{

using Toolkit::NameTable;
using Toolkit::TString;

TEST(NameTable, FindsNothingWhenEmpty)
{
    EXPECT_EQ(NameTable<int>().Find(L""), nullptr);
}

TEST(NameTable, KeepsTheFirstValueOfAName)
{
    NameTable<int> table;
    EXPECT_EQ(table.Add(L"name", 1), 1);
    EXPECT_EQ(table.Add(L"name", 2), 1);
    EXPECT_EQ(table.GetEntries().size(), 1U);
}

TEST(NameTable, TellsNamesOfTheSameHashApart)
{
    std::unordered_map<std::uint32_t, std::wstring> names;
    std::wstring first;
    std::wstring second;
    for (int i = 0; first.empty(); ++i)
    {
        second = std::to_wstring(i);
        const auto hash = static_cast<std::uint32_t>(std::hash<std::wstring_view>()(second));
        const auto known = names.emplace(hash, second);
        if (!known.second)
            first = known.first->second;
    }
    NameTable<int> table;
    EXPECT_EQ(table.Add(TString<wchar_t>(first), 1), 1);
    EXPECT_EQ(table.Find(second), nullptr);
    EXPECT_EQ(table.Add(TString<wchar_t>(second), 2), 2);
    EXPECT_EQ(*table.Find(first), 1);
    EXPECT_EQ(*table.Find(second), 2);
}

TEST(NameTable, FindsWhatAnOrderedMapFinds)
{
    std::mt19937 random(7);
    const auto name = [&] { return TString<wchar_t>(std::to_wstring(random() % 3000)); };
    NameTable<int> table;
    std::map<TString<wchar_t>, int> plain;
    for (int i = 0; i < 5000; ++i)
    {
        const TString<wchar_t> added = name();
        EXPECT_EQ(table.Add(TString<wchar_t>(added), i), plain.emplace(added, i).first->second);
        const TString<wchar_t> asked = name();
        const auto found = plain.find(asked);
        const int* const value = table.Find(asked);
        ASSERT_EQ(value != nullptr, found != plain.end());
        ASSERT_TRUE(value == nullptr || *value == found->second);
    }
    EXPECT_EQ(table.GetEntries().size(), plain.size());
}

} // namespace
