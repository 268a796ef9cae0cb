// SPDX-License-Identifier: MIT
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/faults/OutOfMemory.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/B64.h"
#include "toolkit/encoding/Bytes.h"
#include "toolkit/encoding/QP.h"
#include "toolkit/encoding/UTF7.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/FSStream.h"

using namespace Toolkit;
using ToolkitTest::Attempt;

namespace
{

const unsigned int s_uSize = 2 * 1024 * 1024 + 5;

const TString<wchar_t>& Wide()
{
    static const TString<wchar_t> s_text(std::wstring(200, L'\x20AC'));
    return s_text;
}

const TString<char>& Narrow()
{
    static const TString<char> s_text = UTF8::ToUTF8(Wide());
    return s_text;
}

const std::vector<unsigned char>& Data()
{
    static const std::vector<unsigned char> s_data(s_uSize, 'x');
    return s_data;
}

unsigned int SizeOf(const Bytes& bytes)
{
    unsigned char* out = nullptr;
    unsigned int size = 0;
    bytes.GetBytes(&out, &size);
    delete[] out;
    return size;
}

} // namespace

TEST(OutOfMemory, IsSurvivedByEncoding)
{
    const ToolkitTest::TemporaryFolder folder;
    {
        FSStream file(folder.Wide("bytes"), FSStream::ModeWrite);
        const Bytes bytes(Data().data(), s_uSize);
        ASSERT_EQ(StreamResult::Ok, bytes.Serialize(file));
    }
    Narrow();
    ToolkitTest::FailEachAllocation({
        {"UTF8::ToUNICODE",
         [](const Attempt& attempt) { attempt([] { EXPECT_EQ(Wide(), UTF8::ToUNICODE(Narrow())); }); }},
        {"UTF8::ToUTF8",
         [](const Attempt& attempt) { attempt([] { EXPECT_EQ(Narrow(), UTF8::ToUTF8(Wide())); }); }},
        {"UTF8::Encode",
         [](const Attempt& attempt)
         {
             TString<char> bytes;
             attempt([&] { UTF8::Encode(Wide(), bytes); });
             UTF8::Encode(L"after", bytes);
             EXPECT_EQ("after", bytes);
         }},
        {"UTF8::HasToBeUTF8",
         [](const Attempt& attempt) { attempt([] { EXPECT_TRUE(UTF8::HasToBeUTF8(Wide())); }); }},
        {"UTF7::ToUNICODE",
         [](const Attempt& attempt) { attempt([] { EXPECT_EQ(600U, UTF7::ToUNICODE(Narrow()).size()); }); }},
        {"UTF7::ToUTF7",
         [](const Attempt& attempt) { attempt([] { EXPECT_EQ(200U, UTF7::ToUTF7(Wide()).size()); }); }},
        {"QP::ToQP",
         [](const Attempt& attempt) { attempt([] { EXPECT_EQ(1800U, QP::ToQP(Wide()).size()); }); }},
        {"QP::ToQP(lines)",
         [](const Attempt& attempt) { attempt([] { EXPECT_LT(1800U, QP::ToQP(Wide(), 50, 76).size()); }); }},
        {"QP::ToUNICODE",
         [](const Attempt& attempt)
         {
             const TString<wchar_t> encoded = QP::ToQP(Wide());
             attempt([&] { EXPECT_EQ(Wide(), QP::ToUNICODE(encoded)); });
         }},
        {"QP::HasToBeQP", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(QP::HasToBeQP(Wide(), 200, 300, false)); }); }},
        {"b64_decode_binary, b64_encode_binary",
         [](const Attempt& attempt)
         {
             unsigned char* text = nullptr;
             unsigned int length = 0;
             attempt([&] { EXPECT_EQ(1, b64_decode_binary(Data().data(), 100, &text, &length)); });
             EXPECT_EQ(text == nullptr, length == 0);
             unsigned char* data = nullptr;
             unsigned int size = 0;
             attempt([&] { EXPECT_EQ(text != nullptr, b64_encode_binary(text, length, &data, &size) == 1); });
             EXPECT_EQ(data == nullptr ? 0U : 100U, size);
             delete[] text;
             delete[] data;
         }},
        {"B64::ToUNICODE",
         [](const Attempt& attempt)
         {
             const smart_ptr<Bytes> bytes(new Bytes(Data().data(), 99));
             attempt([&] { EXPECT_EQ(132U, B64::ToUNICODE(bytes).size()); });
             EXPECT_EQ(99U, SizeOf(*bytes));
         }},
        {"B64::ToB64", [](const Attempt& attempt)
         { attempt([] { EXPECT_EQ(75U, SizeOf(*B64::ToB64(std::wstring(100, L'A')))); }); }},
        {"Bytes::Bytes",
         [](const Attempt& attempt) { attempt([] { const Bytes bytes(Data().data(), 100); }); }},
        {"Bytes::SetBytes",
         [](const Attempt& attempt)
         {
             Bytes bytes(Data().data(), 100);
             const bool set = attempt([&] { EXPECT_TRUE(bytes.SetBytes(Data().data(), 200)); });
             EXPECT_EQ(set ? 200U : 100U, SizeOf(bytes));
         }},
        {"Bytes::GetBytes",
         [](const Attempt& attempt)
         {
             const Bytes bytes(Data().data(), 100);
             unsigned char* out = new unsigned char[1];
             unsigned int size = 1;
             const bool got = attempt([&] { EXPECT_TRUE(bytes.GetBytes(&out, &size)); });
             EXPECT_EQ(got ? 100U : 1U, size);
             delete[] out;
         }},
        {"Bytes::CopyBytes",
         [](const Attempt& attempt)
         {
             const Bytes bytes;
             unsigned char* out = new unsigned char[1];
             unsigned int size = 1;
             const bool got = attempt([&] { EXPECT_TRUE(bytes.CopyBytes(Data().data(), 100, &out, &size)); });
             EXPECT_EQ(got ? 100U : 1U, size);
             delete[] out;
         }},
        {"Bytes::Serialize",
         [&folder](const Attempt& attempt)
         {
             FSStream file(folder.Wide("copy"), FSStream::ModeWrite);
             const Bytes bytes(Data().data(), 100);
             attempt([&] { EXPECT_EQ(StreamResult::Ok, bytes.Serialize(file)); });
         }},
        {"Bytes::Deserialize",
         [&folder](const Attempt& attempt)
         {
             Bytes bytes(Data().data(), 100);
             FSStream file(folder.Wide("bytes"), FSStream::ModeRead);
             attempt([&] { EXPECT_EQ(StreamResult::Ok, bytes.Deserialize(file)); });
             FSStream again(folder.Wide("bytes"), FSStream::ModeRead);
             EXPECT_EQ(StreamResult::Ok, bytes.Deserialize(again));
             EXPECT_EQ(s_uSize, SizeOf(bytes));
         }},
    });
}
