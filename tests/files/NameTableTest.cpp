#include "toolkit/files/NameTable.h"

#include <map>
#include <random>
#include <string>

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
