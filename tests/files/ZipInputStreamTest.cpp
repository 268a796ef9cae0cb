// SPDX-License-Identifier: MIT
#include "toolkit/files/ZipInputStream.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/Archives.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/ArchiveZip.h"

namespace
{

using Toolkit::ArchiveZipEntry;
using Toolkit::smart_ptr;
using Toolkit::TString;
using Toolkit::ZipInputStream;
using ToolkitTest::ContentOf;
using ToolkitTest::MakeArchiveOfLengths;
using ToolkitTest::MakeSmallArchive;
using ToolkitTest::OpenArchive;
using ToolkitTest::RunIn;
using ToolkitTest::RunPython;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;
using Text = TString<wchar_t>;

// An archive of one entry "text" of that content, and the stream at its beginning.
struct OneEntry
{
    explicit OneEntry(const std::string& content) : open(Make(folder, content)), stream(Position()) {}

    static Text Make(const TemporaryFolder& folder, const std::string& content)
    {
        WriteBytes(folder.Path("text"), content);
        RunIn(folder, "zip -q a.zip text");
        return folder.Wide("a.zip");
    }

    smart_ptr<ZipInputStream> Position() { return open.archive.GetZipInputStream(open[L"text"]); }

    std::string Bytes()
    {
        std::vector<unsigned char> bytes;
        *stream >> bytes;
        return std::string(bytes.begin(), bytes.end());
    }

    std::vector<Text> Lines()
    {
        std::vector<Text> lines;
        Text line;
        while (stream->ReadLine(line))
            lines.push_back(line);
        EXPECT_EQ(line, L"");
        return lines;
    }

    std::vector<Text> Words()
    {
        std::vector<Text> words;
        Text word = L"x";
        while (!word.empty())
        {
            *stream >> word;
            words.push_back(word);
        }
        words.pop_back();
        return words;
    }

    TemporaryFolder folder;
    OpenArchive open;
    smart_ptr<ZipInputStream> stream;
};

using Lines = std::vector<Text>;

TEST(ZipInputStream, AppendsBytes)
{
    const OneEntry entry("content");
    std::vector<unsigned char> bytes = {'a', 'b'};
    *entry.stream >> bytes;
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "abcontent");
}

TEST(ZipInputStream, AppendsNothingAtTheEnd)
{
    OneEntry entry("content");
    entry.Bytes();
    EXPECT_EQ(entry.Bytes(), "");
    EXPECT_EQ(entry.Lines(), Lines());
    EXPECT_EQ(entry.Words(), Lines());
}

TEST(ZipInputStream, ReadsContentsOfEveryLengthAroundItsBlocks)
{
    const TemporaryFolder folder;
    MakeArchiveOfLengths(folder);
    OpenArchive open(folder.Wide("a.zip"));
    for (const auto& pair : open.entries)
    {
        const std::string number(pair.first.begin() + 1, pair.first.end());
        EXPECT_TRUE(open.Read(pair.first) == ToolkitTest::ReadBytes(folder.Path("plain" + number)))
            << std::wstring(pair.first);
    }
}

TEST(ZipInputStream, TakesMemoryOnceForContentOfAnyExpansion)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    add(z, 'zeros', b'\0' * (3 << 20), zipfile.ZIP_DEFLATED)
    add(z, 'text', 'as usual ' * 10000, zipfile.ZIP_DEFLATED)
    add(z, 'stored', 'as usual ' * 10000)
)");
    OpenArchive open(folder.Wide("a.zip"));
    for (const wchar_t* name : {L"zeros", L"text", L"stored"})
    {
        std::vector<unsigned char> bytes;
        *open.archive.GetZipInputStream(open[name]) >> bytes;
        EXPECT_EQ(bytes.size(), static_cast<std::size_t>(open[name]->GetSize()));
        EXPECT_LT(bytes.capacity(), bytes.size() + 4096);
    }
}

TEST(ZipInputStream, ReadsStreamedEntries)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile(Pipe('a.zip'), 'w') as z:
    add(z, 'stored', 'stored content')
    add(z, 'deflated', 'deflated content ' * 50, zipfile.ZIP_DEFLATED)
    add(z, 'empty', '')
    add(z, 'last', 'last content', zipfile.ZIP_DEFLATED)
)");
    OpenArchive open(folder.Wide("a.zip"));
    ASSERT_EQ(open[L"stored"]->GetFlags() & wxZIP_SUMS_FOLLOW, wxZIP_SUMS_FOLLOW);
    EXPECT_EQ(open.Read(L"stored"), "stored content");
    EXPECT_EQ(open.Read(L"deflated").size(), 850U);
    EXPECT_EQ(open.Read(L"empty"), "");
    EXPECT_EQ(open.Read(L"last"), "last content");
}

TEST(ZipInputStream, ReadsLines)
{
    using namespace std::string_literals;
    struct Row
    {
        std::string content;
        Lines lines;
    };
    const Row rows[] = {
        {"", {}},
        {"one", {L"one"}},
        {"one\n", {L"one"}},
        {"one\ntwo\n", {L"one", L"two"}},
        {"one\r\ntwo\rthree\nfour", {L"one", L"two", L"three", L"four"}},
        {"\n\n", {L"", L""}},
        {"\r\r\n\r", {L"", L"", L""}},
        {" a \tb \n", {L" a \tb "}},
        {"\xC3\xA9\n\xE2\x82\xAC\n\xF0\x9F\x98\x80", {L"\u00E9", L"\u20AC", L"\U0001F600"}},
        {"a\0b\nc"s, {L"a\0b"s, L"c"}},
        {"\xEF\xBB\xBF"
         "a\nb",
         {L"a", L"b"}},
        {"\xEF\xBB\xBF", {}},
        {"\xFF\xFE"
         "a\0\r\0\n\0b\0"s,
         {L"a", L"b"}},
        {"\xFE\xFF\0a\0\n\0b"s, {L"a", L"b"}},
        {"\xFF\xFE\0\0a\0\0\0\r\0\0\0b\0\0\0"s, {L"a", L"b"}},
        {"\0\0\xFE\xFF\0\0\0a\0\0\0\n"s, {L"a"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(OneEntry(row.content).Lines(), row.lines) << row.content;
}

TEST(ZipInputStream, ReadsWords)
{
    struct Row
    {
        const char* content;
        Lines words;
    };
    const Row rows[] = {
        {"", {}},
        {" \t\r\n ", {}},
        {"one", {L"one"}},
        {"one two\tthree\nfour\r\nfive\rsix ", {L"one", L"two", L"three", L"four", L"five", L"six"}},
        {"  \t one \t\n\n two", {L"one", L"two"}},
        {"a,b;c", {L"a,b;c"}},
        {"\xC3\xA9 \xE2\x82\xAC", {L"\u00E9", L"\u20AC"}},
        {"\xEF\xBB\xBF"
         "a b",
         {L"a", L"b"}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(OneEntry(row.content).Words(), row.words) << row.content;
}

TEST(ZipInputStream, EndsAWordAtANul)
{
    const OneEntry entry(std::string("a\0b c", 5));
    Text first;
    Text second;
    *entry.stream >> first >> second;
    EXPECT_EQ(first + L"|" + second, L"a|b");
}

TEST(ZipInputStream, ChainsItsOperators)
{
    const OneEntry entry("one two rest");
    Text one;
    Text two;
    std::vector<unsigned char> rest;
    *entry.stream >> one >> two >> rest;
    EXPECT_EQ(one + L"|" + two, L"one|two");
    EXPECT_EQ(std::string(rest.begin(), rest.end()), "rest");
}

TEST(ZipInputStream, GoesOnWithBytesWhereALineEnded)
{
    struct Row
    {
        const char* content;
        const char* rest;
    };
    for (const Row& row :
         {Row{"line\nrest\nmore", "rest\nmore"}, Row{"line\r\nrest", "rest"}, Row{"line\rrest", "rest"},
          Row{"line\r\r\nrest", "\r\nrest"}, Row{"line\n\nrest", "\nrest"}, Row{"line", ""},
          Row{"line\n\xFF\xFE", "\xFF\xFE"}, Row{"\xEF\xBB\xBFline\n\xEF\xBB\xBFrest", "\xEF\xBB\xBFrest"}})
    {
        OneEntry entry(row.content);
        Text line;
        EXPECT_TRUE(entry.stream->ReadLine(line)) << row.content;
        EXPECT_EQ(line, L"line") << row.content;
        EXPECT_EQ(entry.Bytes(), row.rest) << row.content;
    }
}

TEST(ZipInputStream, MixesWordsAndLines)
{
    OneEntry entry("one two three\nfour five\n\nsix\n");
    Text text;
    *entry.stream >> text;
    EXPECT_EQ(text, L"one");
    EXPECT_TRUE(entry.stream->ReadLine(text));
    EXPECT_EQ(text, L"two three");
    *entry.stream >> text;
    EXPECT_EQ(text, L"four");
    EXPECT_EQ(entry.Lines(), (Lines{L"five", L"", L"six"}));
}

TEST(ZipInputStream, FallsBackToNoOtherCharset)
{
    OneEntry entry("good\nb\xE9"
                   "d\nmore\n");
    Text line;
    EXPECT_TRUE(entry.stream->ReadLine(line));
    EXPECT_EQ(line, L"good");
    while (entry.stream->ReadLine(line))
        EXPECT_EQ(line, L"b");
    EXPECT_EQ(line, L"");
    EXPECT_FALSE(entry.stream->ReadLine(line));
}

TEST(ZipInputStream, EmptiesWhatItCannotSet)
{
    OneEntry entry("word");
    entry.Bytes();
    Text text = L"old";
    EXPECT_FALSE(entry.stream->ReadLine(text));
    EXPECT_EQ(text, L"");
    text = L"old";
    *entry.stream >> text;
    EXPECT_EQ(text, L"");
}

TEST(ZipInputStream, ReadsLongLines)
{
    std::string content;
    for (int i = 0; i < 3; ++i)
        content += std::string(100000, static_cast<char>('a' + i)) + "\n";
    const Lines lines = OneEntry(content).Lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[2], std::wstring(100000, L'c'));
}

TEST(ZipInputStream, BeginsAnewWhenPositionedAgain)
{
    OneEntry entry("\xEF\xBB\xBFone two");
    Text word;
    *entry.stream >> word;
    entry.Position();
    *entry.stream >> word;
    EXPECT_EQ(word, L"one");
    entry.Position();
    EXPECT_EQ(entry.Bytes(), "\xEF\xBB\xBFone two");
    entry.Position();
    EXPECT_EQ(entry.Lines(), Lines{L"one two"});
}

TEST(ZipInputStream, KeepsEntriesApart)
{
    const TemporaryFolder folder;
    MakeSmallArchive(folder, "a.zip");
    OpenArchive open(folder.Wide("a.zip"));
    Text text;
    for (int i = 0; i < 3; ++i)
    {
        const auto stream = open.archive.GetZipInputStream(open[L"two.txt"]);
        *stream >> text;
        EXPECT_EQ(text, L"again");
        EXPECT_EQ(open.Read(L"one.txt"), ContentOf("one.txt"));
        stream->ReadLine(text);
        EXPECT_EQ(text, L"");
        EXPECT_EQ(open.Read(L"two.txt"), ContentOf("two.txt"));
        EXPECT_EQ(open.Read(L"three.txt"), ContentOf("three.txt"));
    }
}

TEST(ZipInputStream, ReadsTheSameEntryAgainAndAgain)
{
    // An archive on which a decoder that was used before goes on with what it has left.
    OpenArchive open(L"" TOOLKIT_SOURCE_FOLDER "/tests/fuzz/seeds/Zip/again");
    const TemporaryFolder folder;
    ASSERT_EQ(open.count, 2);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(open.Read(open.entries.begin()->first).size(), 15U);
        EXPECT_TRUE(open.UnZip(open.entries.begin()->first, folder.Wide("out")));
        EXPECT_EQ(open.Read(L"l"), "long record");
    }
}

TEST(ZipInputStream, YieldsNothingOfAnEntryThatIsNotFound)
{
    OneEntry entry("content");
    entry.open.archive.GetZipInputStream(new ArchiveZipEntry(wxZipEntry("nowhere")));
    EXPECT_EQ(entry.Bytes(), "");
    EXPECT_EQ(entry.Lines(), Lines());
    EXPECT_EQ(entry.Words(), Lines());
}

TEST(ZipInputStream, YieldsNothingAfterAnExtraction)
{
    OneEntry entry("content");
    ASSERT_TRUE(entry.open.UnZip(L"text", entry.folder.Wide("out")));
    EXPECT_EQ(entry.Bytes(), "");
    EXPECT_EQ(entry.Lines(), Lines());
}

TEST(ZipInputStream, YieldsNothingOfAMissingFile)
{
    OneEntry entry("content");
    entry.open.archive.Open(entry.folder.Wide("missing.zip"));
    entry.stream = entry.Position();
    ASSERT_FALSE(entry.stream.IsNull());
    EXPECT_EQ(entry.Bytes(), "");
}

} // namespace
