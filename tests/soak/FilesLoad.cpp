// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/soak/Loads.h"
#include "tests/support/Archives.h"
#include "toolkit/encoding/Bytes.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/Directory.h"
#include "toolkit/files/FSInputSerializer.h"
#include "toolkit/files/FSOutputSerializer.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/TextFile.h"

using Toolkit::Bytes;
using Toolkit::Directory;
using Toolkit::IniFile;
using Toolkit::StreamResult;
using Toolkit::TextFile;
using Toolkit::TString;

namespace ToolkitTest
{

namespace
{

using Lines = std::vector<std::wstring>;

Lines LinesOf(unsigned long number)
{
    Lines lines{L"; \u00e4\u20ac\U0001f600", L"[section]", L"number = " + std::to_wstring(number)};
    for (unsigned long i = 0; i < number % 40; ++i)
        lines.push_back(L"key" + std::to_wstring(i) + L"=" + std::wstring(i, L'\u6253'));
    return lines;
}

// A text file written line by line and read again.
void WriteText(const TString<wchar_t>& path, const std::string& bytePath, unsigned long number)
{
    WriteBytes(bytePath, "");
    const Lines lines = LinesOf(number);
    TextFile written;
    EXPECT_TRUE(written.Open(path));
    for (const std::wstring& line : lines)
        written.AddLine(line);
    EXPECT_TRUE(written.Write());
    Lines read;
    TextFile file;
    EXPECT_TRUE(file.Open(path));
    for (TString<wchar_t> line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
        read.push_back(line);
    EXPECT_EQ(lines, read);
}

// The same lines as settings.
void ReadSettings(const TString<wchar_t>& path, unsigned long number)
{
    const IniFile settings(path);
    EXPECT_TRUE(settings.IsLoaded());
    EXPECT_EQ(static_cast<unsigned int>(number), settings.GetUint32(L"section", L"number", 0));
    std::vector<TString<wchar_t>> keys;
    settings.GetKeyList(L"section", keys);
    EXPECT_EQ(LinesOf(number).size() - 2, keys.size());
    EXPECT_FALSE(settings.HasSection(L"other"));
    EXPECT_FALSE(IniFile(path + L"-missing").IsLoaded());
}

// Bytes serialized into a file and read back.
void Serialize(const TString<wchar_t>& path, unsigned long number)
{
    const std::vector<unsigned char> content(1 + number % 5000, static_cast<unsigned char>(number));
    const Bytes object(content.data(), static_cast<unsigned int>(content.size()));
    EXPECT_EQ(StreamResult::Ok, Toolkit::FSOutputSerializer(path).Serialize(object));
    Bytes read;
    EXPECT_EQ(StreamResult::Ok, Toolkit::FSInputSerializer(path).Deserialize(read));
    unsigned char* copy = nullptr;
    unsigned int size = 0;
    EXPECT_TRUE(read.GetBytes(&copy, &size));
    EXPECT_TRUE(std::equal(content.begin(), content.end(), copy, copy + size));
    delete[] copy;
}

} // namespace

FilesLoad::FilesLoad()
{
    MakeSmallArchive(m_folder, "a.zip");
    WriteBytes(m_folder.Path("broken.zip"), ReadBytes(m_folder.Path("a.zip")).substr(0, 100));
}

void FilesLoad::Do(unsigned long files) const
{
    const TemporaryFolder work;
    for (unsigned long number = 0; number < files; number += 4)
    {
        WriteText(work.Wide("text"), work.Path("text"), number);
        ReadSettings(work.Wide("text"), number);
        Serialize(work.Wide("object"), number);
        ReadArchive(work);
        std::vector<TString<wchar_t>> names;
        Directory::EnumFilePaths(names, work.Wide(), L"*");
        EXPECT_EQ(3U, names.size());
        for (const TString<wchar_t>& name : names)
            EXPECT_TRUE(Directory::RemoveFile(work.Wide() + L"/" + name));
    }
    EXPECT_TRUE(std::filesystem::is_empty(work.Path()));
}

void FilesLoad::ReadArchive(const TemporaryFolder& work) const
{
    OpenArchive archive(m_folder.Wide("a.zip"));
    EXPECT_EQ(3, archive.count);
    for (const char* const name : {"one.txt", "two.txt", "three.txt"})
    {
        const TString<wchar_t> entry = Toolkit::UTF8::ToUNICODE(name);
        EXPECT_EQ(ContentOf(name), archive.Read(entry));
        EXPECT_TRUE(archive.UnZip(entry, work.Wide("extracted")));
        EXPECT_EQ(ContentOf(name), ReadBytes(work.Path("extracted")));
    }
    EXPECT_GT(1, OpenArchive(m_folder.Wide("broken.zip")).count);
}

} // namespace ToolkitTest
