#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include <pcre.h>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/files/ZipInputStream.h"
#include "toolkit/regExp/RegExp.h"

// What the library makes of files that others wrote, printed for tests/corpora/compare to judge.
//   Corpora zip ARCHIVE    the number of entries, then each file: name, and its content in hexadecimal digits
//   or "-" Corpora text FILE      the number of lines, then each line: its number of characters and the line
//   Corpora fold FILE      compares RegExp with PCRE: each line holds a pattern and a subject, with a tab in
//   between

using namespace Toolkit;

namespace
{

std::string Hexadecimal(const std::string& bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes)
    {
        text += digits[static_cast<unsigned char>(byte) >> 4U];
        text += digits[static_cast<unsigned char>(byte) & 15U];
    }
    return text;
}

int ShowArchive(const TString<wchar_t>& path)
{
    const ToolkitTest::TemporaryFolder folder;
    ArchiveZip archive;
    std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>> entries;
    archive.Open(path);
    std::cout << archive.EntriesList(entries, L"", ArchiveEntriesFlags::Files) << '\n';
    for (const auto& [name, entry] : entries)
    {
        TString<wchar_t> target = folder.Wide("content");
        const bool whole = archive.UnZip(entry, target);
        const std::string extracted = ToolkitTest::ReadBytes(folder.Path("content"));
        std::vector<unsigned char> read;
        *archive.GetZipInputStream(entry) >> read;
        // Both ways of reading agree; an entry without content is extracted to nothing by a quirk.
        if (extracted != std::string(read.begin(), read.end()))
            std::cout << "the two ways of reading differ: ";
        const bool empty = entry->GetSize() == 0 && extracted.empty();
        std::cout << Hexadecimal(UTF8::ToUTF8(name)) << '\t'
                  << (whole || empty ? "x" + Hexadecimal(extracted) : "-") << '\n';
    }
    return 0;
}

int ShowText(const TString<wchar_t>& path)
{
    TextFile file;
    if (!file.Open(path))
    {
        std::cout << "not opened\n";
        return 0;
    }
    for (TString<wchar_t> line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
        std::cout << line.size() << '\t' << UTF8::ToUTF8(line) << '\n';
    return 0;
}

bool MatchesBare(const std::string& pattern, const std::string& subject)
{
    const char* error = nullptr;
    int offset = 0;
    pcre* const code = pcre_compile(pattern.c_str(), PCRE_UTF8, &error, &offset, nullptr);
    int offsets[60];
    const int result = code != nullptr ? pcre_exec(code, nullptr, subject.data(),
                                                   static_cast<int>(subject.size()), 0, 0, offsets, 60)
                                       : -1;
    pcre_free(code);
    return result > 0;
}

int CompareFolding(const std::string& path)
{
    std::ifstream file(path);
    unsigned long compared = 0;
    unsigned long matching = 0;
    for (std::string line; std::getline(file, line); ++compared)
    {
        const std::size_t tab = line.find('\t');
        const std::string pattern = line.substr(0, tab);
        const std::string subject = line.substr(tab + 1);
        const bool matches =
            RegExp(TString<char>(pattern), RegExpOptions::Default).IsMatch(TString<char>(subject));
        if (matches != MatchesBare(pattern, subject))
        {
            std::cout << "differs: " << line << '\n';
            return 1;
        }
        matching += matches ? 1 : 0;
    }
    std::cout << compared << '\t' << matching << '\n';
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const ToolkitSession session;
    const std::string command = argv[1];
    if (command == "zip")
        return ShowArchive(UTF8::ToUNICODE(argv[2]));
    return command == "text" ? ShowText(UTF8::ToUNICODE(argv[2])) : CompareFolding(argv[2]);
}
