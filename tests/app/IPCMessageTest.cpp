// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCMessage.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/Document.h"

using Toolkit::IPCMessage;
using Toolkit::IPCMessageReader;
using Toolkit::TString;
using Result = Toolkit::IPCMessageReader::Result;

namespace
{

using namespace std::string_literals;

struct Read
{
    int m_iCode;
    std::string m_strText;
    int m_iFormat;
    std::string m_strData;
};

bool operator==(const Read& a, const Read& b)
{
    return a.m_iCode == b.m_iCode && a.m_strText == b.m_strText && a.m_iFormat == b.m_iFormat &&
           a.m_strData == b.m_strData;
}

// All messages of the bytes, which arrive in pieces of that size, and how it ends.
std::vector<Read> ReadAll(const std::string& bytes, std::size_t piece, Result& result)
{
    IPCMessageReader reader;
    std::vector<Read> messages;
    result = Result::Incomplete;
    for (std::size_t at = 0; at < bytes.size() && result == Result::Incomplete; at += piece)
    {
        const std::string part = bytes.substr(at, piece);
        reader.Append(part.data(), part.size());
        IPCMessage message;
        while ((result = reader.Next(message)) == Result::Complete)
            messages.push_back({message.m_uCode, std::string(message.m_strText), message.m_uFormat,
                                std::string(message.m_strData)});
    }
    return messages;
}

const std::string c_strStart = "\x0a\x05\0\0\0topic"s;
const std::string c_strExecute = "\x01\x11\x03\0\0\0go\0"s;
const std::string c_strEnd = "\x0b"s;

} // namespace

TEST(IPCMessage, ReadsEveryMessageHoweverItArrives)
{
    const std::string bytes = c_strStart + c_strExecute + "\x02\x01\0\0\0i\x01"s +
                              "\x03\x01\0\0\0i\x01\x02\0\0\0ab"s + "\x04\x01\0\0\0i"s +
                              "\x06\x01\0\0\0i\x14\0\0\0\0"s + "\x07\0\0\0\0"s + "\x09"s + c_strEnd;
    const std::vector<Read> expected = {{10, "topic", 0, ""}, {1, "", 17, "go\0"s}, {2, "i", 1, ""},
                                        {3, "i", 1, "ab"},    {4, "i", 0, ""},      {6, "i", 20, ""},
                                        {7, "", 0, ""},       {9, "", 0, ""},       {11, "", 0, ""}};
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece)
    {
        Result result = Result::Broken;
        EXPECT_TRUE(ReadAll(bytes, piece, result) == expected) << "pieces of " << piece;
        EXPECT_EQ(Result::Incomplete, result);
    }
}

TEST(IPCMessage, WritesWhatItReads)
{
    TString<char> bytes;
    IPCMessage::AppendConnect(bytes, "topic");
    IPCMessage::AppendExecute(bytes, "go");
    IPCMessage::AppendDisconnect(bytes);
    EXPECT_EQ(c_strStart + c_strExecute + c_strEnd, bytes);
}

TEST(IPCMessage, DocumentedExampleIsWhatIsWritten)
{
    TString<char> bytes;
    IPCMessage::AppendConnect(bytes, "open é");
    IPCMessage::AppendExecute(bytes, "open é");
    IPCMessage::AppendDisconnect(bytes);
    EXPECT_EQ(ToolkitTest::DocumentedBytes("```hex ipc"), bytes);
}

TEST(IPCMessage, IsBrokenByAnUnknownCode)
{
    for (const int code : {0, 5, 8, 12, 13, 127, 128, 255})
    {
        Result result = Result::Incomplete;
        EXPECT_TRUE(ReadAll(std::string(1, static_cast<char>(code)), 1, result).empty());
        EXPECT_EQ(Result::Broken, result) << code;
    }
}

TEST(IPCMessage, IsBrokenByASizeThatIsTooLarge)
{
    struct Row
    {
        std::string m_strBytes;
        Result m_result;
    };
    const Row rows[] = {
        {"\x0a\0\0\0\x04"s, Result::Incomplete},   {"\x0a\x01\0\0\x04"s, Result::Broken},
        {"\x0a\xff\xff\xff\xff"s, Result::Broken}, {"\x01\x11\0\0\0\x04"s, Result::Incomplete},
        {"\x01\x11\x01\0\0\x04"s, Result::Broken}, {"\x01\x11\xff\xff\xff\x7f"s, Result::Broken}};
    for (const Row& row : rows)
    {
        Result result = Result::Complete;
        EXPECT_TRUE(ReadAll(row.m_strBytes, 100, result).empty());
        EXPECT_EQ(row.m_result, result) << testing::PrintToString(row.m_strBytes);
    }
}

TEST(IPCMessage, TakesNoMemoryForWhatIsOnlyDeclared)
{
    IPCMessageReader reader;
    const std::string bytes = "\x0a\0\0\0\x04"s;
    reader.Append(bytes.data(), bytes.size());
    IPCMessage message;
    EXPECT_EQ(Result::Incomplete, reader.Next(message));
    EXPECT_EQ(bytes.size(), reader.GetSize());
}
