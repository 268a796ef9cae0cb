// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCPayload.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <wx/ipcbase.h>

namespace IPCPayload = Toolkit::IPCPayload;
using Toolkit::TString;

namespace
{

template <class Element>
std::string BytesOf(const std::basic_string<Element>& text)
{
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(Element));
}

std::string UTF16(const std::u16string& text)
{
    return BytesOf(text);
}

std::string UTF32(const std::u32string& text)
{
    return BytesOf(text);
}

const wchar_t* const c_strNone = L"(none)";

// What is made of the bytes, which end where their memory does.
std::wstring Decoded(const std::string& bytes, int format)
{
    const std::vector<char> exact(bytes.begin(), bytes.end());
    TString<wchar_t> text(L"before");
    if (IPCPayload::Decode(exact.data(), exact.size(), format, text))
        return text;
    EXPECT_EQ(text, L"") << "a refused text leaves nothing";
    return c_strNone;
}

struct Row
{
    std::string m_strBytes;
    int m_iFormat;
    std::wstring m_strText;
};

void ExpectRows(const std::vector<Row>& rows)
{
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(rows[i].m_strText, Decoded(rows[i].m_strBytes, rows[i].m_iFormat)) << "row " << i;
}

} // namespace

TEST(IPCPayload, DecodesEachTextFormat)
{
    const std::wstring text = L"open a\u00e4\u4e2d\U0001f600";
    ExpectRows({{"open a\xc3\xa4\xe4\xb8\xad\xf0\x9f\x98\x80", wxIPC_TEXT, text},
                {"open a\xc3\xa4\xe4\xb8\xad\xf0\x9f\x98\x80", wxIPC_UTF8TEXT, text},
                {UTF16(u"open a\u00e4\u4e2d\U0001f600"), wxIPC_UTF16TEXT, text},
                {UTF32(U"open a\u00e4\u4e2d\U0001f600"), wxIPC_UTF32TEXT, text},
                {UTF32(U"open a\u00e4\u4e2d\U0001f600"), wxIPC_UNICODETEXT, text}});
}

TEST(IPCPayload, EndsAtTheFirstZeroOrWithTheData)
{
    using namespace std::string_literals;
    ExpectRows({{"open"s, wxIPC_UTF8TEXT, L"open"},
                {"open\0"s, wxIPC_UTF8TEXT, L"open"},
                {"open\0x\0"s, wxIPC_UTF8TEXT, L"open"},
                {"open\0\xff"s, wxIPC_TEXT, L"open"},
                {UTF16(u"open\0\xd800"s), wxIPC_UTF16TEXT, L"open"},
                {UTF32(U"open\0x"s), wxIPC_UTF32TEXT, L"open"},
                {"\0"s, wxIPC_TEXT, L""},
                {""s, wxIPC_TEXT, L""},
                {""s, wxIPC_UTF8TEXT, L""},
                {""s, wxIPC_UTF16TEXT, L""},
                {""s, wxIPC_UTF32TEXT, L""}});
}

TEST(IPCPayload, LeavesOutWhatMakesNoWholeElement)
{
    ExpectRows({{UTF16(u"ab") + "c", wxIPC_UTF16TEXT, L"ab"},
                {"c", wxIPC_UTF16TEXT, L""},
                {UTF32(U"ab") + "c", wxIPC_UTF32TEXT, L"ab"},
                {UTF32(U"ab") + "cde", wxIPC_UTF32TEXT, L"ab"},
                {"cde", wxIPC_UTF32TEXT, L""}});
}

TEST(IPCPayload, RefusesWhatIsNoUnicodeText)
{
    const std::u32string beyond(1, char32_t(0x110000));
    const std::u32string surrogate(1, char32_t(0xd800));
    ExpectRows({{"a\xff", wxIPC_TEXT, c_strNone},
                {"a\xe4\xb8", wxIPC_UTF8TEXT, c_strNone},
                {"\xc0\xaf", wxIPC_UTF8TEXT, c_strNone},
                {UTF16(std::u16string(1, char16_t(0xd83d))), wxIPC_UTF16TEXT, c_strNone},
                {UTF16(std::u16string(1, char16_t(0xde00))), wxIPC_UTF16TEXT, c_strNone},
                {UTF16(std::u16string{char16_t(0xd83d), u'a'}), wxIPC_UTF16TEXT, c_strNone},
                {UTF16(std::u16string{char16_t(0xde00), char16_t(0xd83d)}), wxIPC_UTF16TEXT, c_strNone},
                {UTF16(std::u16string{char16_t(0xd83d), char16_t(0xe000)}), wxIPC_UTF16TEXT, c_strNone},
                {UTF32(beyond), wxIPC_UTF32TEXT, c_strNone},
                {UTF32(surrogate), wxIPC_UTF32TEXT, c_strNone},
                {UTF32(std::u32string(1, char32_t(0x80000041))), wxIPC_UTF32TEXT, c_strNone}});
}

TEST(IPCPayload, EveryOtherFormatIsUTF8)
{
    for (int format = -1; format < 300; ++format)
        if (format != wxIPC_UTF16TEXT && format != wxIPC_UTF32TEXT)
        {
            EXPECT_EQ(L"\u4e2d", Decoded(std::string("\xe4\xb8\xad\0x", 5), format)) << format;
            EXPECT_EQ(c_strNone, Decoded("\xff", format)) << format;
        }
}

TEST(IPCPayload, NullIsAnEmptyText)
{
    TString<wchar_t> text(L"before");
    EXPECT_TRUE(IPCPayload::Decode(nullptr, 12, wxIPC_UTF8TEXT, text));
    EXPECT_EQ(text, L"");
}
