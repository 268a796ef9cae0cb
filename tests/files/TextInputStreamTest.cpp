// SPDX-License-Identifier: MIT
#include "toolkit/files/TextInputStream.h"

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <wx/log.h>
#include <wx/mstream.h>
#include <wx/txtstrm.h>
#include <wx/wfstream.h>

#include "tests/support/TemporaryFolder.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using Toolkit::TextInputStream;
using Toolkit::TString;
using ToolkitTest::CapturedOutput;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

using Words = std::vector<std::wstring>;

template <std::size_t N>
std::string Bytes(const char (&text)[N])
{
    return std::string(text, N - 1);
}

TString<wchar_t> NextWord(TextInputStream& stream)
{
    TString<wchar_t> word = L"before";
    stream >> word;
    return word;
}

// The words up to the first empty one.
Words AllWords(const std::string& bytes)
{
    TextInputStream stream(new wxMemoryInputStream(bytes.data(), bytes.size()));
    Words words;
    for (TString<wchar_t> word = NextWord(stream); !word.empty(); word = NextWord(stream))
        words.push_back(word);
    return words;
}

// Yields one byte at a time and tells when it goes.
class SlowStream : public wxInputStream
{
public:
    SlowStream(std::string bytes, bool& destroyed) : m_bytes(std::move(bytes)), m_destroyed(destroyed) {}
    ~SlowStream() override { m_destroyed = true; }

protected:
    size_t OnSysRead(void* buffer, size_t size) override
    {
        if (m_position == m_bytes.size() || size == 0)
        {
            m_lasterror = wxSTREAM_EOF;
            return 0;
        }
        *static_cast<char*>(buffer) = m_bytes[m_position++];
        return 1;
    }

private:
    const std::string m_bytes;
    std::size_t m_position = 0;
    bool& m_destroyed;
};

TEST(TextInputStream, ReadsWords)
{
    struct Row
    {
        const char* text;
        Words words;
    };
    const Row rows[] = {
        {"", {}},
        {" \t\r\n", {}},
        {"one", {L"one"}},
        {"one two", {L"one", L"two"}},
        {"  one\t\ttwo  ", {L"one", L"two"}},
        {"one\ntwo\r\nthree\rfour\n", {L"one", L"two", L"three", L"four"}},
        {"\r\r\n\none", {L"one"}},
        {"one\r", {L"one"}},
        {"a,b;c \"d e\"", {L"a,b;c", L"\"d", L"e\""}},
        {"a\vb\fc d", {L"a\vb\fc", L"d"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.words, AllWords(row.text)) << row.text;
}

TEST(TextInputStream, ReadsWordsLikeWxWidgets)
{
    const char alphabet[] = {' ', '\t', '\r', '\n', 'a', '\0'};
    for (unsigned int number = 0; number < 6 * 6 * 6 * 6 * 6; ++number)
    {
        std::string text;
        for (unsigned int rest = number, i = 0; i < 5; ++i, rest /= 6)
            text += alphabet[rest % 6];
        // There a leading zero may begin a mark, and one behind "\r" is lost.
        if (text[0] == '\0' || text.find(std::string("\r\0", 2)) != text.npos)
            continue;
        wxMemoryInputStream source(text.data(), text.size());
        wxTextInputStream expected(source);
        TextInputStream stream(new wxMemoryInputStream(text.data(), text.size()));
        for (int i = 0; i < 4; ++i)
        {
            wxString word;
            expected >> word;
            ASSERT_EQ(word.ToStdWstring(), NextWord(stream)) << testing::PrintToString(text) << i;
        }
    }
}

TEST(TextInputStream, ReturnsItselfForChaining)
{
    TextInputStream stream(new wxMemoryInputStream("one two three", 13));
    TString<wchar_t> one;
    TString<wchar_t> two;
    TString<wchar_t> three;
    EXPECT_EQ(&stream, &(stream >> one >> two >> three));
    EXPECT_THAT(Words({one, two, three}), ElementsAre(L"one", L"two", L"three"));
}

TEST(TextInputStream, WordIsEmptyAtTheEnd)
{
    TextInputStream stream(new wxMemoryInputStream("one", 3));
    EXPECT_EQ(L"one", NextWord(stream));
    EXPECT_EQ(L"", NextWord(stream));
    EXPECT_EQ(L"", NextWord(stream));
}

TEST(TextInputStream, DecodesWhatTheMarkSelects)
{
    struct Row
    {
        const char* name;
        std::string bytes;
        Words words;
    };
    const Row rows[] = {
        {"UTF-8 without a mark", Bytes("\xC3\xA9 \xE2\x82\xAC\xF0\x9F\x98\x80"), {L"\xE9", L"\x20AC\x1F600"}},
        {"UTF-8", Bytes("\xEF\xBB\xBF\xC3\xA9 b"), {L"\xE9", L"b"}},
        {"UTF-16LE", Bytes("\xFF\xFE\xE9\0\r\0\n\0=\xD8\0\xDE"), {L"\xE9", L"\x1F600"}},
        {"UTF-16BE", Bytes("\xFE\xFF\0\xE9\0 \xD8=\xDE\0"), {L"\xE9", L"\x1F600"}},
        {"UTF-32LE", Bytes("\xFF\xFE\0\0\xE9\0\0\0\r\0\0\0\0\xF6\1\0"), {L"\xE9", L"\x1F600"}},
        {"UTF-32BE", Bytes("\0\0\xFE\xFF\0\0\0\xE9\0\0\0\n\0\1\xF6\0"), {L"\xE9", L"\x1F600"}},
        {"UTF-16LE, short",
         Bytes("\xFF\xFE"
               "a\0"),
         {L"a"}},
        {"UTF-16LE, blanks in other characters", Bytes("\xFF\xFE \1\1 "), {L"\x120\x2001"}},
        {"mark in the middle",
         Bytes("a \xEF\xBB\xBF"
               "b"),
         {L"a", L"\xFEFF"
                L"b"}},
        {"only the first mark counts",
         Bytes("\xEF\xBB\xBF\xEF\xBB\xBF"
               "a"),
         {L"\xFEFF"
          L"a"}},
        {"mark alone", Bytes("\xFF\xFE\0\0"), {}},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(row.words, AllWords(row.bytes)) << row.name;
        bool destroyed = false;
        TextInputStream slow(new SlowStream(row.bytes, destroyed));
        for (const std::wstring& word : row.words)
            EXPECT_EQ(word, NextWord(slow)) << row.name;
        EXPECT_EQ(L"", NextWord(slow)) << row.name;
    }
}

TEST(TextInputStream, BrokenTextIsTheEnd)
{
    struct Row
    {
        std::string bytes;
        Words words;
    };
    const Row rows[] = {
        {Bytes("good caf\xE9 more"), {L"good", L"caf"}},
        {Bytes("good \xFF more"), {L"good"}},
        {Bytes("a\x80"), {L"a"}},
        {Bytes("a\xE2\x82"), {L"a"}},
        {Bytes("a\xC0\xAF"
               "b"),
         {L"a"}},
        {Bytes("a\xED\xA0\x80"
               "b"),
         {L"a"}},
        {Bytes("a\xF4\x90\x80\x80"
               "b"),
         {L"a"}},
        {Bytes("a\r\xFF"
               "b"),
         {L"a"}},
        {Bytes("\xEF\xBB"
               "a"),
         {}},
        {Bytes("\xFF\xFE"
               "a\0b"),
         {L"a"}},
        {Bytes("\xFF\xFE"
               "a\0\0\xDC"
               "b\0"),
         {L"a"}},
        {Bytes("\xFF\xFE"
               "a\0\0\xD8"
               "b\0c\0"),
         {L"a"}},
        {Bytes("\xFF\xFE\0\0a\0\0\0\0\0\x11\0b\0\0\0"), {L"a"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.words, AllWords(row.bytes)) << testing::PrintToString(row.bytes);
}

TEST(TextInputStream, NothingIsReadBehindBrokenText)
{
    TextInputStream stream(new wxMemoryInputStream("a\xFF b c", 6));
    EXPECT_EQ(L"a", NextWord(stream));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(L"", NextWord(stream));
}

TEST(TextInputStream, NulEndsAWord)
{
    TextInputStream stream(new wxMemoryInputStream("a\0b \0c", 6));
    for (const wchar_t* word : {L"a", L"b", L"", L"c", L""})
        EXPECT_EQ(word, NextWord(stream));
}

TEST(TextInputStream, ReadsLeadingZerosThatMakeNoMark)
{
    TextInputStream stream(new wxMemoryInputStream("\0\0a b", 5));
    for (const wchar_t* word : {L"", L"", L"a", L"b", L""})
        EXPECT_EQ(word, NextWord(stream));
}

TEST(TextInputStream, TwoStreamsDoNotDisturbEachOther)
{
    TextInputStream one(new wxMemoryInputStream("\xFF\xFE"
                                                "a\0 \0b\0",
                                                8));
    TextInputStream two(new wxMemoryInputStream("c d", 3));
    EXPECT_EQ(L"a", NextWord(one));
    EXPECT_EQ(L"c", NextWord(two));
    EXPECT_EQ(L"b", NextWord(one));
    EXPECT_EQ(L"d", NextWord(two));
}

TEST(TextInputStream, MayHoldNothing)
{
    TextInputStream stream(nullptr);
    EXPECT_EQ(L"", NextWord(stream));
}

TEST(TextInputStream, DeletesTheStreamThroughTheBase)
{
    bool destroyed = false;
    std::unique_ptr<Toolkit::InputStream> stream =
        std::make_unique<TextInputStream>(new SlowStream("a b", destroyed));
    EXPECT_FALSE(destroyed);
    stream.reset();
    EXPECT_TRUE(destroyed);
}

TEST(TextInputStream, ReadsFromAFile)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text"), "one \xC3\xA9\r\nthree");
    TextInputStream stream(new wxFFileInputStream(wxString::FromUTF8(folder.Path("text").c_str()), "rb"));
    for (const wchar_t* word : {L"one", L"\xE9", L"three", L""})
        EXPECT_EQ(word, NextWord(stream));
}

TEST(TextInputStream, UnusableStreamIsEmptyAndSilent)
{
    const TemporaryFolder folder;
    CapturedOutput captured(STDERR_FILENO);
    wxInputStream* missing = nullptr;
    wxInputStream* directory = nullptr;
    {
        const wxLogNull openingComplains;
        missing = new wxFFileInputStream(wxString::FromUTF8(folder.Path("missing").c_str()), "rb");
        directory = new wxFFileInputStream(wxString::FromUTF8(folder.Path().c_str()), "rb");
    }
    for (wxInputStream* source : {missing, directory})
    {
        TextInputStream stream(source);
        EXPECT_EQ(L"", NextWord(stream));
        EXPECT_EQ(L"", NextWord(stream));
    }
    EXPECT_EQ("", captured.Stop());
}

TEST(TextInputStream, ReadsALongWord)
{
    const std::string word(200000, 'x');
    EXPECT_EQ(Words({std::wstring(200000, L'x'), L"y"}), AllWords(word + " y"));
}

} // namespace
