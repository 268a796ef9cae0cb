// SPDX-License-Identifier: MIT
#include "toolkit/regExp/MatchResult.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/RegExpSupport.h"

using namespace Toolkit;
using namespace ToolkitTest;

namespace
{

using Record = smart_ptr<MatchResult, smart_ptr_policy>;

Record NewRecord(const std::string& pattern, const std::string& subject)
{
    Record record(new MatchResult);
    record->SetPattern(TString<char>(pattern));
    record->SetSubject(TString<char>(subject));
    return record;
}

} // namespace

TEST(MatchResult, BeginsZeroAndEmpty)
{
    const MatchResult record;
    EXPECT_EQ(0, record.GetResult());
    EXPECT_EQ(nullptr, record.GetErrorText());
    EXPECT_EQ(0, record.GetErrorOffset());
    EXPECT_EQ("", record.GetSubject());
    EXPECT_EQ("", record.GetPattern());
    EXPECT_EQ(0, record.GetExecOptions());
    EXPECT_EQ(60, record.GetVectorSize());
    EXPECT_TRUE(std::all_of(record.GetOffsets(), record.GetOffsets() + 60, [](int i) { return i == 0; }));
    EXPECT_EQ(0U, record.GetCount());
    EXPECT_TRUE(record.GetNames().empty());
}

TEST(MatchResult, HoldsWhatMatchUsed)
{
    const auto record = Pattern("(a)").Match("ba");
    EXPECT_EQ(2, record->GetResult());
    EXPECT_EQ(nullptr, record->GetErrorText());
    EXPECT_EQ("ba", record->GetSubject());
    EXPECT_EQ("(a)", record->GetPattern());
    EXPECT_EQ(0, record->GetExecOptions());
    EXPECT_EQ(60, record->GetVectorSize());
    EXPECT_EQ(1, record->GetOffsets()[0]);
    EXPECT_EQ(2, record->GetOffsets()[1]);
}

TEST(MatchResult, KeepsWhatMatchCompiled)
{
    Record record = Pattern("(a)").Match("ba");
    record->SetSubject("bbba");
    Pattern("z").RegExp_exec(record, 0);
    EXPECT_EQ(2, record->GetResult());
    EXPECT_EQ(3, record->GetOffsets()[0]);
}

TEST(MatchResult, CompilesItsOwnPattern)
{
    const RegExp other = Pattern("z");
    Record record = NewRecord("a", "za");
    other.RegExp_compile(record);
    other.RegExp_exec(record, 0);
    EXPECT_EQ(1, record->GetResult());
    EXPECT_EQ(1, record->GetOffsets()[0]);
}

TEST(MatchResult, ExecutesFromTheStartOnly)
{
    const RegExp steps = Pattern("");
    Record record = NewRecord("a", "aba");
    steps.RegExp_compile(record);
    steps.RegExp_exec(record, 1);
    EXPECT_EQ(2, record->GetOffsets()[0]);
    steps.RegExp_exec(record, 3);
    EXPECT_EQ(-1, record->GetResult());
}

TEST(MatchResult, ExecutionLeavesGroupsAlone)
{
    const RegExp regExp = Pattern("(a)");
    Record record = NewRecord("(a)", "a");
    regExp.RegExp_compile(record);
    regExp.RegExp_exec(record, 0);
    EXPECT_EQ(2, record->GetResult());
    EXPECT_EQ(0U, record->GetCount());
}

TEST(MatchResult, ExecutesWithItsOptions)
{
    const int notEmpty = 0x400;
    const RegExp steps = Pattern("");
    Record record = NewRecord("a*", "b");
    record->SetExecOptions(notEmpty);
    steps.RegExp_compile(record);
    steps.RegExp_exec(record, 0);
    EXPECT_EQ(-1, record->GetResult());
    EXPECT_EQ(notEmpty, record->GetExecOptions());
    record->SetExecOptions(0);
    steps.RegExp_exec(record, 0);
    EXPECT_EQ(1, record->GetResult());
}

TEST(MatchResult, FailedCompilationLeavesTextAndOffset)
{
    const RegExp steps = Pattern("");
    Record record = NewRecord("ab(", "x");
    EXPECT_EQ(" : missing ) (@offset: 3) ab(r ", MessageOf([&] { steps.RegExp_compile(record); }));
    EXPECT_STREQ("missing )", record->GetErrorText());
    EXPECT_EQ(3, record->GetErrorOffset());
}

TEST(MatchResult, CompilesAgainAfterAFailure)
{
    const RegExp steps = Pattern("");
    Record record = NewRecord("(", "a");
    MessageOf([&] { steps.RegExp_compile(record); });
    record->SetPattern("a");
    steps.RegExp_compile(record);
    EXPECT_EQ(nullptr, record->GetErrorText());
    EXPECT_EQ(0, record->GetErrorOffset());
    steps.RegExp_exec(record, 0);
    EXPECT_EQ(1, record->GetResult());
}

TEST(MatchResult, FailedCompilationLeavesNothingToExecute)
{
    const RegExp steps = Pattern("");
    Record record = NewRecord("a", "a");
    steps.RegExp_compile(record);
    record->SetPattern("(");
    MessageOf([&] { steps.RegExp_compile(record); });
    EXPECT_EQ(ExecutionMessage("-2"), MessageOf([&] { steps.RegExp_exec(record, 0); }));
    EXPECT_EQ(-2, record->GetResult());
}

TEST(MatchResult, FailedExecutionIsKeptAsResult)
{
    const struct
    {
        const char* pattern;
        std::string subject;
        unsigned short start;
        int options;
        int result;
    } rows[] = {
        {"a", "b", 0, 0, -1},  {"a", "a\xC3", 0, 0, -10}, {"a", "\xC3\xA4", 1, 0, -11},
        {"a", "a", 2, 0, -24}, {"a", "a", 65535, 0, -24}, {"a", "a", 0, 0x00000001, -3},
        {"a", "a", 0, 0, 1},
    };
    for (const auto& row : rows)
    {
        const RegExp steps = Pattern("");
        Record record = NewRecord(row.pattern, row.subject);
        record->SetExecOptions(row.options);
        steps.RegExp_compile(record);
        const std::string message = MessageOf([&] { steps.RegExp_exec(record, row.start); });
        EXPECT_EQ(row.result, record->GetResult()) << row.pattern;
        EXPECT_EQ(row.result >= -1 ? "nothing was thrown" : ExecutionMessage(std::to_string(row.result)),
                  message);
    }
}

TEST(MatchResult, ExecutionWithoutCompilationIsPcresNullError)
{
    Record record = NewRecord("a", "a");
    EXPECT_EQ("-2gExp::Match return error: ", MessageOf([&] { Pattern("a").RegExp_exec(record, 0); }));
}

TEST(MatchResult, NullRecordIsPcresNullError)
{
    const RegExp regExp = Pattern("a");
    Record null;
    TString<char> target("a");
    EXPECT_EQ(ExecutionMessage("-2"), MessageOf([&] { regExp.RegExp_compile(null); }));
    EXPECT_EQ(ExecutionMessage("-2"), MessageOf([&] { regExp.RegExp_exec(null, 0); }));
    EXPECT_EQ(ExecutionMessage("-2"), MessageOf([&] { regExp.RegExp_replace(null, 0, target, "b", 0); }));
    EXPECT_EQ("a", target);
}

TEST(MatchResult, SubjectMayBeRewrittenBetweenExecutions)
{
    const RegExp steps = Pattern("");
    Record record = NewRecord("b", "a");
    steps.RegExp_compile(record);
    steps.RegExp_exec(record, 0);
    EXPECT_EQ(-1, record->GetResult());
    record->SetSubject("ab");
    steps.RegExp_exec(record, 0);
    EXPECT_EQ(1, record->GetResult());
}
