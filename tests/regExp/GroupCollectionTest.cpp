// SPDX-License-Identifier: MIT
#include "toolkit/regExp/GroupCollection.h"

#include <gtest/gtest.h>

#include "tests/support/RegExpSupport.h"

using namespace Toolkit;
using namespace ToolkitTest;

TEST(Group, HoldsValueNameAndIndex)
{
    const Group group("v", "n", 65535);
    EXPECT_EQ("v", group.GetValue());
    EXPECT_EQ("n", group.GetName());
    EXPECT_EQ(65535, group.GetIndex());
}

TEST(GroupCollection, BeginsEmpty)
{
    const GroupCollection groups;
    EXPECT_EQ(0U, groups.GetCount());
    EXPECT_TRUE(groups.GetNames().empty());
    EXPECT_TRUE(groups.Find("x").IsNull());
}

TEST(GroupCollection, FindsGroupsByName)
{
    const auto match = Pattern("(?<year>\\d+)-(?<month>\\d+)-(\\d+)").Match("2009-11-05");
    EXPECT_EQ("2009", match->Find("year")->GetValue());
    EXPECT_EQ("11", match->Find("month")->GetValue());
    EXPECT_TRUE(match->Find("").IsNull());
    EXPECT_TRUE(match->Find("Year").IsNull());
}

TEST(GroupCollection, FoundGroupIsTheListedOne)
{
    const auto match = Pattern("(?<n>a)").Match("a");
    EXPECT_EQ((*match)[1], match->Find("n"));
}

TEST(GroupCollection, CopySharesTheGroups)
{
    const auto match = Pattern("(?<n>a)").Match("a");
    const GroupCollection copy = *match;
    EXPECT_EQ(2U, copy.GetCount());
    EXPECT_EQ((*match)[1], copy[1]);
    EXPECT_EQ(match->GetNames(), copy.GetNames());
}

TEST(GroupCollection, GroupOutlivesItsRecord)
{
    smart_ptr<Group, smart_ptr_policy> group;
    {
        group = Pattern("(?<n>a)").Match("a")->Find("n");
    }
    EXPECT_EQ("a", group->GetValue());
    EXPECT_EQ("n", group->GetName());
}
