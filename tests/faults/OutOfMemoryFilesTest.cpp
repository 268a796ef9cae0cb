// SPDX-License-Identifier: MIT
#include <filesystem>
#include <map>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <wx/mstream.h>

#include "tests/faults/OutOfMemory.h"
#include "tests/support/Archives.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/encoding/Bytes.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/Directory.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/FSInputSerializer.h"
#include "toolkit/files/FSOutputSerializer.h"
#include "toolkit/files/FSStream.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/files/TextInputStream.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/files/ZipInputStream.h"
#include "toolkit/files/ZipReader.h"
#include "toolkit/files/ZipWriter.h"

using namespace Toolkit;
using ToolkitTest::Attempt;
using ToolkitTest::TemporaryFolder;

namespace
{

const TString<wchar_t> c_strLine(L"a line that is too long for the string object itself, \x20AC");

// Files of every kind, which each test finds as they were made.
class OutOfMemoryFiles : public testing::Test
{
protected:
    OutOfMemoryFiles()
    {
        const TString<char> line = UTF8::ToUTF8(c_strLine);
        ToolkitTest::WriteBytes(m_folder.Path("text"), line + "\n" + line + "\nlast");
        ToolkitTest::WriteBytes(m_folder.Path("ini"), "[a section of a long name]\nkey = " + line +
                                                          "\nnumber=7\n[other]\nkey=value\n");
        ToolkitTest::MakeSmallArchive(m_folder, "zip");
        FSStream stream(m_folder.Wide("stream"), FSStream::ModeWrite);
        stream.Write(c_strLine);
        stream.Write(7U);
    }

    TString<wchar_t> Path(const char* name) const { return m_folder.Wide(name); }
    std::string Content(const char* name) const { return ToolkitTest::ReadBytes(m_folder.Path(name)); }

    const TemporaryFolder m_folder;
    const ToolkitSession m_session;
};

} // namespace

TEST_F(OutOfMemoryFiles, IsSurvivedByStreams)
{
    const TString<wchar_t> source = Path("stream");
    const TString<wchar_t> target = Path("target");
    const unsigned char data[300] = {};
    ToolkitTest::FailEachAllocation({
        {"FSStream::FSStream", [&](const Attempt& attempt)
         { attempt([&] { const FSStream stream(source, FSStream::ModeRead); }); }},
        {"FSStream::Write",
         [&](const Attempt& attempt)
         {
             FSStream stream(target, FSStream::ModeWrite);
             attempt([&] { EXPECT_EQ(StreamResult::Ok, stream.Write(c_strLine)); });
             attempt([&] { EXPECT_EQ(StreamResult::Ok, stream.Write(7U)); });
             attempt([&] { EXPECT_EQ(StreamResult::Ok, stream.Write(data, sizeof(data))); });
             EXPECT_EQ(StreamResult::Ok, stream.Write(c_strLine));
         }},
        {"FSStream::Read",
         [&](const Attempt& attempt)
         {
             FSStream stream(source, FSStream::ModeRead);
             TString<wchar_t> text;
             const bool read = attempt([&] { EXPECT_EQ(StreamResult::Ok, stream.Read(text)); });
             EXPECT_EQ(read ? c_strLine : TString<wchar_t>(), text);
             unsigned int value = 0;
             attempt([&] { stream.Read(value); });
             attempt([&] { EXPECT_NE(0U, stream.Length()); });
             FSStream again(source, FSStream::ModeRead);
             EXPECT_EQ(StreamResult::Ok, again.Read(text));
         }},
        {"FSOutputSerializer, Serializer::Serialize",
         [&](const Attempt& attempt)
         {
             const Bytes bytes(data, sizeof(data));
             attempt(
                 [&]
                 {
                     FSOutputSerializer serializer(target);
                     EXPECT_EQ(StreamResult::Ok, serializer.Serialize(bytes));
                 });
         }},
        {"FSInputSerializer, Serializer::Deserialize",
         [&](const Attempt& attempt)
         {
             Bytes bytes;
             {
                 FSOutputSerializer serializer(target);
                 EXPECT_EQ(StreamResult::Ok, serializer.Serialize(Bytes(data, sizeof(data))));
             }
             attempt(
                 [&]
                 {
                     FSInputSerializer serializer(target);
                     EXPECT_EQ(StreamResult::Ok, serializer.Deserialize(bytes));
                 });
         }},
    });
}

TEST_F(OutOfMemoryFiles, IsSurvivedByFiles)
{
    const TString<wchar_t> text = Path("text");
    const TString<wchar_t> target = Path("target");
    ToolkitTest::FailEachAllocation({
        {"FFile::FFile", [](const Attempt& attempt) { attempt([] { const FFile file; }); }},
        {"FFile::Open",
         [&](const Attempt& attempt)
         {
             FFile file;
             attempt([&] { EXPECT_TRUE(file.Open(text, L"rb")); });
             EXPECT_TRUE(file.Open(text, L"rb"));
         }},
        {"FFile::Write",
         [&](const Attempt& attempt)
         {
             FFile file;
             file.Open(target, L"wb");
             const bool written = attempt([&] { file.Write(c_strLine); });
             file.Write(L"after");
             EXPECT_TRUE(file.Close());
             EXPECT_EQ((written ? UTF8::ToUTF8(c_strLine) : "") + "after", Content("target"));
         }},
        {"FFile::Read, Flush, GetLength, GetOffset, Seek, SeekEnd, IsEOF, Close",
         [&](const Attempt& attempt)
         {
             FFile file;
             file.Open(text, L"rb");
             char buffer[100];
             attempt([&] { EXPECT_EQ(sizeof(buffer), file.Read(buffer, sizeof(buffer))); });
             attempt([&] { EXPECT_TRUE(file.Flush()); });
             attempt([&] { EXPECT_LT(0, file.GetLength() + file.GetOffset()); });
             attempt([&] { EXPECT_TRUE(file.Seek(1, true) && file.SeekEnd(0) && !file.IsEOF()); });
             attempt([&] { EXPECT_TRUE(file.Close()); });
         }},
        {"FFile::Exists",
         [&](const Attempt& attempt) { attempt([&] { EXPECT_TRUE(FFile::Exists(text)); }); }},
        {"TextFile::Open",
         [&](const Attempt& attempt)
         {
             TextFile file;
             const bool opened = attempt([&] { EXPECT_TRUE(file.Open(text)); });
             EXPECT_EQ(opened ? c_strLine : TString<wchar_t>(), file.GetFirstLine());
             EXPECT_EQ(opened, file.Write());
             EXPECT_TRUE(file.Open(text));
             EXPECT_EQ(c_strLine, file.GetFirstLine());
         }},
        {"ReadFile",
         [&](const Attempt& attempt)
         {
             attempt([&] { EXPECT_TRUE(ReadFile(m_folder.Path("text"))); });
             attempt([&] { EXPECT_FALSE(ReadFile(m_folder.Path("missing"))); });
         }},
        {"WriteFile",
         [&](const Attempt& attempt)
         {
             const std::string path = m_folder.Path("whole");
             ToolkitTest::WriteBytes(path, "before");
             const bool written = attempt([&] { EXPECT_TRUE(WriteFile(path, "after")); });
             EXPECT_EQ(written ? "after" : "before", ToolkitTest::ReadBytes(path));
             attempt([&] { EXPECT_FALSE(WriteFile(m_folder.Path(), "after")); });
             EXPECT_TRUE(WriteFile(path, "at last"));
             std::filesystem::remove(path);
         }},
        {"TextFile::GetFirstLine, GetNextLine, Eof",
         [&](const Attempt& attempt)
         {
             TextFile file;
             file.Open(text);
             attempt([&] { EXPECT_EQ(c_strLine, file.GetFirstLine()); });
             attempt([&] { EXPECT_EQ(c_strLine, file.GetNextLine()); });
             attempt([&] { EXPECT_FALSE(file.Eof()); });
             EXPECT_EQ(c_strLine, file.GetFirstLine());
             EXPECT_EQ(c_strLine, file.GetNextLine());
         }},
        {"TextFile::AddLine",
         [&](const Attempt& attempt)
         {
             TextFile file;
             TString<wchar_t> first;
             if (attempt([&] { file.AddLine(c_strLine); }))
                 first = c_strLine;
             file.AddLine(L"after");
             EXPECT_EQ(first.empty() ? L"after" : c_strLine, file.GetFirstLine());
             EXPECT_EQ(first.empty() ? L"" : L"after", file.GetNextLine());
             EXPECT_EQ(first.empty(), file.Eof());
         }},
        {"TextFile::AddLine(behind an unterminated line)",
         [&](const Attempt& attempt)
         {
             TextFile file;
             file.Open(text);
             const bool added = attempt([&] { file.AddLine(c_strLine); });
             file.GetFirstLine();
             file.GetNextLine();
             EXPECT_EQ(L"last", file.GetNextLine());
             EXPECT_EQ(added ? c_strLine : TString<wchar_t>(), file.GetNextLine());
             EXPECT_EQ(!added, file.Eof());
         }},
        {"TextFile::Clear, Close",
         [&](const Attempt& attempt)
         {
             TextFile file;
             file.Open(text);
             attempt([&] { file.Clear(); });
             EXPECT_TRUE(file.Eof());
             attempt([&] { file.Close(); });
             EXPECT_FALSE(file.Write());
         }},
        {"TextFile::Write",
         [&](const Attempt& attempt)
         {
             ToolkitTest::WriteBytes(m_folder.Path("target"), "before\n");
             TextFile file;
             file.Open(target);
             file.AddLine(c_strLine);
             const bool written = attempt([&] { EXPECT_TRUE(file.Write()); });
             EXPECT_EQ(written ? "before\n" + UTF8::ToUTF8(c_strLine) + "\n" : "before\n", Content("target"));
             EXPECT_TRUE(file.Write());
             std::vector<TString<wchar_t>> names;
             Directory(m_folder.Wide()).GetFiles(L"", names);
             EXPECT_GE(5U, names.size());
         }},
        {"TextInputStream",
         [&](const Attempt& attempt)
         {
             attempt(
                 []
                 {
                     TextInputStream stream(new wxMemoryInputStream("\xEF\xBB\xBFone two\n", 11));
                     TString<wchar_t> word;
                     stream >> word >> word;
                     EXPECT_EQ(L"two", word);
                 });
         }},
    });
}

TEST_F(OutOfMemoryFiles, IsSurvivedByFolders)
{
    const TString<wchar_t> folder = m_folder.Wide();
    const TString<wchar_t> made = Path("made/of/several/parts");
    const TString<wchar_t> file = Path("text");
    ToolkitTest::FailEachAllocation({
        {"Directory::Directory",
         [&](const Attempt& attempt) { attempt([&] { const Directory directory(folder); }); }},
        {"Directory::Exist", [&](const Attempt& attempt) { attempt([&] { Directory::Exist(folder); }); }},
        {"Directory::Create",
         [&](const Attempt& attempt)
         {
             attempt([&] { EXPECT_TRUE(Directory::Create(made)); });
             EXPECT_TRUE(Directory::Create(made));
         }},
        {"Directory::RemoveFile",
         [&](const Attempt& attempt)
         {
             ToolkitTest::WriteBytes(m_folder.Path("removed"), "");
             const TString<wchar_t> path = Path("removed");
             const bool removed = attempt([&] { EXPECT_TRUE(Directory::RemoveFile(path)); });
             EXPECT_EQ(!removed, Directory::RemoveFile(path));
         }},
        {"Directory::GetFiles",
         [&](const Attempt& attempt)
         {
             const Directory directory(folder);
             std::vector<TString<wchar_t>> names;
             attempt([&] { directory.GetFiles(L"*t*", names); });
             directory.GetFiles(L"text", names);
             EXPECT_EQ(1U, names.size());
         }},
        {"Directory::GetDirectories",
         [&](const Attempt& attempt)
         {
             const Directory directory(folder);
             std::vector<TString<wchar_t>> names;
             attempt([&] { directory.GetDirectories(L"", names); });
         }},
        {"Directory::EnumFilePaths",
         [&](const Attempt& attempt)
         {
             std::vector<TString<wchar_t>> names;
             attempt([&] { Directory::EnumFilePaths(names, folder, L""); });
         }},
    });
}

TEST_F(OutOfMemoryFiles, IsSurvivedBySettings)
{
    const TString<wchar_t> path = Path("ini");
    const TString<wchar_t> section = L"a section of a long name";
    ToolkitTest::FailEachAllocation({
        {"IniFile::IniFile",
         [&](const Attempt& attempt) { attempt([&] { EXPECT_TRUE(IniFile(path).IsLoaded()); }); }},
        {"IniFile::Parse",
         [&](const Attempt& attempt)
         {
             IniFile ini(path);
             attempt([&] { EXPECT_TRUE(ini.Parse(path)); });
             EXPECT_TRUE(ini.Parse(path));
             EXPECT_EQ(c_strLine, ini.GetValue(section, L"key", L""));
         }},
        {"IniFile::IniFile(const IniFile&), operator=",
         [&](const Attempt& attempt)
         {
             const IniFile ini(path);
             IniFile other(Path("text"));
             attempt([&] { EXPECT_TRUE(IniFile(ini).HasSection(section)); });
             const bool assigned = attempt([&] { other = ini; });
             EXPECT_EQ(assigned, other.HasSection(section));
             other = ini;
             EXPECT_EQ(c_strLine, other.GetValue(section, L"key", L""));
         }},
        {"IniFile::HasSection, HasValue, GetValue, GetUint32, GetInt32, GetBool",
         [&](const Attempt& attempt)
         {
             const IniFile ini(path);
             attempt([&] { EXPECT_TRUE(ini.HasSection(section) && ini.HasValue(section, L"key")); });
             attempt([&] { EXPECT_EQ(7U, ini.GetUint32(section, L"number", 0)); });
             attempt([&] { EXPECT_EQ(7, ini.GetInt32(section, L"number", 0)); });
             attempt([&] { EXPECT_FALSE(ini.GetBool(section, L"number", true)); });
             attempt([&] { EXPECT_EQ(c_strLine, ini.GetValue(section, L"key", path)); });
         }},
        {"IniFile::GetKeyList",
         [&](const Attempt& attempt)
         {
             const IniFile ini(path);
             std::vector<TString<wchar_t>> keys;
             attempt([&] { ini.GetKeyList(section, keys); });
             ini.GetKeyList(section, keys);
             EXPECT_EQ(2U, keys.size());
         }},
    });
}

TEST_F(OutOfMemoryFiles, IsSurvivedByArchives)
{
    const TString<wchar_t> path = Path("zip");
    using Entries = std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>>;
    ToolkitTest::FailEachAllocation({
        {"ArchiveZip::Open",
         [&](const Attempt& attempt)
         {
             ArchiveZip archive;
             Entries entries;
             attempt([&] { archive.Open(path); });
             archive.Open(path);
             EXPECT_EQ(3, archive.EntriesList(entries, L"", ArchiveEntriesFlags::All));
         }},
        {"ArchiveZip::EntriesList",
         [&](const Attempt& attempt)
         {
             ArchiveZip archive;
             archive.Open(path);
             Entries entries;
             attempt([&] { archive.EntriesList(entries, L"", ArchiveEntriesFlags::All); });
             archive.Open(path);
             EXPECT_EQ(3, archive.EntriesList(entries, L"", ArchiveEntriesFlags::All));
         }},
        {"ArchiveZip::UnZip",
         [&](const Attempt& attempt)
         {
             ToolkitTest::OpenArchive open(path);
             const smart_ptr<ArchiveZipEntry> entry = open[L"two.txt"];
             TString<wchar_t> target = Path("target");
             attempt([&] { EXPECT_TRUE(open.archive.UnZip(entry, target)); });
             EXPECT_TRUE(open.archive.UnZip(entry, target));
             EXPECT_EQ(ToolkitTest::ContentOf("two.txt"), Content("target"));
         }},
        {"ZipReader",
         [&](const Attempt& attempt)
         {
             const std::string archive = UTF8::ToUTF8(path);
             attempt([&] { EXPECT_TRUE(ZipReader::Open(archive)); });
             const Result<ZipReader> zip = ZipReader::Open(archive);
             const ZipEntry entry = *zip->Find("two.txt");
             attempt([&] { EXPECT_TRUE(zip->Read(entry)); });
             attempt([&] { EXPECT_TRUE(zip->Extract(entry, m_folder.Path("target"))); });
             attempt([&] { EXPECT_TRUE(zip->ExtractAll(m_folder.Path("out"))); });
             EXPECT_EQ(ToolkitTest::ContentOf("two.txt"), zip->Read(entry).value_or("none"));
         }},
        {"ZipReader::Read of long content",
         [&](const Attempt& attempt)
         {
             const std::string archive = m_folder.Path("long");
             const std::string content(std::size_t{1} << 20, 'x');
             Result<ZipWriter> writer = ZipWriter::Create(archive);
             ASSERT_TRUE(writer && writer->Add("long", content) && writer->Finish());
             const Result<ZipReader> zip = ZipReader::Open(archive);
             const ZipEntry entry = *zip->Find("long");
             attempt([&] { EXPECT_TRUE(zip->Read(entry)); });
             EXPECT_EQ(content, zip->Read(entry).value_or("none"));
         }},
        {"ZipWriter",
         [&](const Attempt& attempt)
         {
             const std::string archive = m_folder.Path("written");
             ToolkitTest::WriteBytes(archive, "before");
             const bool written = attempt(
                 [&]
                 {
                     Result<ZipWriter> zip = ZipWriter::Create(archive);
                     EXPECT_TRUE(zip && zip->Add("one", "content") && zip->Finish());
                 });
             EXPECT_EQ(!written, ToolkitTest::ReadBytes(archive) == "before");
         }},
        {"ArchiveZip::GetZipInputStream, ZipInputStream::ReadLine",
         [&](const Attempt& attempt)
         {
             ToolkitTest::OpenArchive open(path);
             const smart_ptr<ArchiveZipEntry> entry = open[L"two.txt"];
             TString<wchar_t> line;
             attempt([&] { EXPECT_TRUE(open.archive.GetZipInputStream(entry)->ReadLine(line)); });
             EXPECT_TRUE(open.archive.GetZipInputStream(entry)->ReadLine(line));
         }},
        {"ZipInputStream::operator>>(bytes)",
         [&](const Attempt& attempt)
         {
             ToolkitTest::OpenArchive open(path);
             const smart_ptr<ArchiveZipEntry> entry = open[L"one.txt"];
             std::vector<unsigned char> bytes;
             attempt([&] { *open.archive.GetZipInputStream(entry) >> bytes; });
             EXPECT_EQ(ToolkitTest::ContentOf("two.txt"), open.Read(L"two.txt"));
         }},
        {"ZipInputStream::operator>>(word)",
         [&](const Attempt& attempt)
         {
             ToolkitTest::OpenArchive open(path);
             const smart_ptr<ArchiveZipEntry> entry = open[L"one.txt"];
             TString<wchar_t> word;
             attempt([&] { *open.archive.GetZipInputStream(entry) >> word; });
             EXPECT_EQ(ToolkitTest::ContentOf("two.txt"), open.Read(L"two.txt"));
         }},
        {"ZipInputStream::ZipInputStream",
         [&](const Attempt& attempt) { attempt([&] { const ZipInputStream stream(path); }); }},
        {"ArchiveZip::Close",
         [&](const Attempt& attempt)
         {
             ArchiveZip archive;
             archive.Open(path);
             attempt([&] { archive.Close(); });
             archive.Close();
         }},
    });
}
