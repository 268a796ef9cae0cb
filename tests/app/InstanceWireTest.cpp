// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/InstanceWire.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace InstanceWire = Toolkit::InstanceWire;

using namespace std::string_literals;

TEST(InstanceWire, DocumentedExampleIsWhatIsWritten)
{
    EXPECT_EQ(ToolkitTest::DocumentedBytes("```hex instance"), InstanceWire::Encode({{"open"}, "/"}));
}

TEST(InstanceWire, AcceptsBeforeAnAnswerUnlessThatWasSaid)
{
    const std::string answer = "\x06\0\0\0\0\x02\x12\0\0\0"
                               "\xff\xff\xff\xff\xff\xff\xff\xff\x02\0\0\0\0\0\0\0ok"s;
    EXPECT_EQ("\x0a" + answer, InstanceWire::Encode({-1, "ok"}, false));
    EXPECT_EQ(answer, InstanceWire::Encode({-1, "ok"}, true));
}

TEST(InstanceWire, LargeCommandsAreCutIntoPieces)
{
    const std::string argument(1024 * 1024, 'x');
    const std::string messages = InstanceWire::Encode({{argument}, ""});
    const std::string head = "\x0a\x08\0\0\0instance"s;
    const std::string first = "\x03\0\0\0\0\x01\0\0\x10\0"s;
    const std::string last = "\x03\0\0\0\0\x02\x10\0\0\0"s;
    EXPECT_EQ(0U, messages.find(head + first));
    EXPECT_EQ(last + std::string(16, 'x'), messages.substr(messages.size() - 16 - last.size()));
    EXPECT_EQ(head.size() + first.size() + last.size() + 16 + argument.size(), messages.size());
}

TEST(InstanceWire, TakesNothingThatIsNoCommandOrNoAnswer)
{
    const std::string one = "\x01\0\0\0\0\0\0\0/"s;
    InstanceWire::Command command;
    EXPECT_TRUE(InstanceWire::Decode(one, command));
    for (const std::string& bytes : {std::string(), "\x01\0\0"s, "\x02\0\0\0\0\0\0\0/"s, one + "x",
                                     one + "\x05\0\0\0\0\0\0\0open"s, "\xff\xff\xff\xff\xff\xff\xff\xff/"s})
        EXPECT_FALSE(InstanceWire::Decode(bytes, command)) << testing::PrintToString(bytes);
    InstanceWire::Answer answer;
    EXPECT_TRUE(InstanceWire::Decode("\0\0\0\0\0\0\0\0"s + one, answer));
    for (const std::string& bytes : {std::string(), one, "\0\0\0\0\0\0\0\0"s + one + "x"})
        EXPECT_FALSE(InstanceWire::Decode(bytes, answer)) << testing::PrintToString(bytes);
}
