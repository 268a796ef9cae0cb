// SPDX-License-Identifier: MIT
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/reference/BareRegex.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/encoding/B64.h"
#include "toolkit/encoding/Base64.h"
#include "toolkit/encoding/EncodedWords.h"
#include "toolkit/encoding/QP.h"
#include "toolkit/encoding/QuotedPrintable.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/files/ZipInputStream.h"
#include "toolkit/regExp/RegExp.h"

// Prints what the library makes of files that others wrote, for compare and compare-texts to judge.
// Texts and bytes are "x" and hexadecimal digits.
//   Corpora zip ARCHIVE          the number of entries; for each file its name, and its content or "-"
//   Corpora text FILE            each line of a text file, or "unreadable"
//   Corpora utf8 FILE            the code points of each line, and whether they make the same bytes again
//   Corpora qp FILE              the quoted-printable form of each line, and whether it decodes to the same
//   Corpora base64 FILE          the Base64 form of the whole file
//   Corpora mail FILE            of lines of a kind ("base64", "quoted-printable" or "words") and "x" and a
//   text of a mail in hexadecimal digits: what that decodes to, or "-" Corpora match FILE PATTERN   where the
//   first match in each line begins and ends, or "none" Corpora fold FILE            of lines of a pattern, a
//   tab and a subject: whether RegExp and the bare library agree

using namespace Toolkit;
using ToolkitTest::ReadBytes;

namespace
{

std::string Hexadecimal(const std::string& bytes)
{
    std::string digits = "x";
    for (const char byte : bytes)
    {
        digits += HEX[static_cast<unsigned char>(byte) >> 4U];
        digits += HEX[static_cast<unsigned char>(byte) & 15U];
    }
    return digits;
}

void ForEachLine(const std::string& path, const std::function<void(const std::string&)>& use)
{
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);)
        use(line);
}

void ShowArchive(const std::string& path)
{
    const ToolkitTest::TemporaryFolder folder;
    ArchiveZip archive;
    std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>> entries;
    archive.Open(UTF8::ToUNICODE(path));
    std::printf("%d\n", archive.EntriesList(entries, L"", ArchiveEntriesFlags::Files));
    for (const auto& [name, entry] : entries)
    {
        TString<wchar_t> target = folder.Wide("content");
        const bool whole = archive.UnZip(entry, target);
        const std::string extracted = ReadBytes(folder.Path("content"));
        std::vector<unsigned char> read;
        *archive.GetZipInputStream(entry) >> read;
        // Both ways of reading agree; an entry without content is extracted to nothing by a quirk.
        if (extracted != std::string(read.begin(), read.end()))
            std::fputs("the two ways of reading differ: ", stdout);
        const bool empty = entry->GetSize() == 0 && extracted.empty();
        std::printf("%s\t%s\n", Hexadecimal(UTF8::ToUTF8(name)).c_str(),
                    whole || empty ? Hexadecimal(extracted).c_str() : "-");
    }
}

void ShowText(const std::string& path)
{
    TextFile file;
    if (!file.Open(UTF8::ToUNICODE(path)))
        std::puts("unreadable");
    for (TString<wchar_t> line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
        std::puts(Hexadecimal(UTF8::ToUTF8(line)).c_str());
}

void ShowCodePoints(const std::string& line)
{
    const TString<wchar_t> text = UTF8::ToUNICODE(line);
    if (text.empty() && !line.empty())
        std::fputs("broken", stdout);
    for (const wchar_t character : text)
        std::printf("%X ", static_cast<unsigned int>(character));
    std::puts(UTF8::ToUTF8(text) == TString<char>(line) ? "same" : "changed");
}

void ShowQuotedPrintable(const std::string& line)
{
    const TString<wchar_t> text = UTF8::ToUNICODE(line);
    const TString<wchar_t> encoded = QP::ToQP(text);
    std::printf("%s %s\n", Hexadecimal(UTF8::ToUTF8(encoded)).c_str(),
                QP::ToUNICODE(encoded) == text ? "same" : "changed");
}

void ShowBase64(const std::string& path)
{
    const std::string content = ReadBytes(path);
    unsigned char* encoded = nullptr;
    unsigned int size = 0;
    b64_decode_binary(reinterpret_cast<const unsigned char*>(content.data()),
                      static_cast<unsigned int>(content.size()), &encoded, &size);
    std::printf("%.*s\n", static_cast<int>(size), reinterpret_cast<const char*>(encoded));
    delete[] encoded;
}

std::string FromHexadecimal(const std::string& digits)
{
    std::string bytes;
    for (std::size_t i = 1; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

void ShowMail(const std::string& line)
{
    const std::size_t space = line.find(' ');
    const std::string kind = line.substr(0, space);
    const std::string text = FromHexadecimal(line.substr(space + 1));
    if (kind == "quoted-printable")
        std::puts(Hexadecimal(QuotedPrintable::Decode(text)).c_str());
    else if (kind == "words")
        std::puts(Hexadecimal(EncodedWords::Decode(text)).c_str());
    else
    {
        const Result<std::string> bytes = Base64::DecodeMime(text);
        std::puts(bytes ? Hexadecimal(*bytes).c_str() : "-");
    }
}

void ShowMatches(const std::string& path, const std::string& pattern)
{
    const RegExp expression(TString<char>(pattern), RegExpOptions::Default);
    ForEachLine(path,
                [&expression](const std::string& line)
                {
                    const smart_ptr<MatchResult> result = expression.Match(TString<char>(line));
                    if (result->GetResult() < 0)
                        std::puts("none");
                    else
                        std::printf("%d %d\n", result->GetOffsets()[0], result->GetOffsets()[1]);
                });
}

bool MatchesBare(const std::string& pattern, const std::string& subject)
{
    const ToolkitTest::BareRegex regex(pattern);
    int offsets[ToolkitTest::BareRegex::s_iVectorSize];
    return regex.IsCompiled() && regex.Execute(subject, offsets) > 0;
}

void CompareFolding(const std::string& line)
{
    const std::size_t tab = line.find('\t');
    const std::string pattern = line.substr(0, tab);
    const std::string subject = line.substr(tab + 1);
    const bool matches =
        RegExp(TString<char>(pattern), RegExpOptions::Default).IsMatch(TString<char>(subject));
    std::puts(matches == MatchesBare(pattern, subject) ? "agree" : "differ");
}

} // namespace

int main(int argc, char** argv)
{
    const std::string command = argc > 2 ? argv[1] : "";
    const std::string path = argc > 2 ? argv[2] : "";
    const ToolkitSession session;
    if (command == "zip")
        ShowArchive(path);
    else if (command == "text")
        ShowText(path);
    else if (command == "utf8")
        ForEachLine(path, ShowCodePoints);
    else if (command == "qp")
        ForEachLine(path, ShowQuotedPrintable);
    else if (command == "base64")
        ShowBase64(path);
    else if (command == "mail")
        ForEachLine(path, ShowMail);
    else if (command == "match" && argc == 4)
        ShowMatches(path, argv[3]);
    else if (command == "fold")
        ForEachLine(path, CompareFolding);
    else
        return 2;
    return 0;
}
