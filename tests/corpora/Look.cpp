// Prints what the library makes of a file, one result a line, for tests/corpora/compare-texts to hold against
// its oracles.
//   Look zip <archive> <target folder>   "<name> <folder or content> <answer of UnZip> <target>" for each
//   entry Look text <file>                     each line of a text file, or "unreadable" Look utf8 <file> the
//   code points of each line of bytes, and whether they make the same bytes again Look match <pattern> <file>
//   the offsets of the first match in each line of bytes, or "none" Look qp <file>                       each
//   line's quoted-printable form Look base64 <file>                   the Base64 form of the whole file
// Texts and bytes are printed in hexadecimal digits.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <toolkit/Toolkit.h>

using namespace Toolkit;

namespace
{

TString<wchar_t> Wide(const char* text)
{
    return UTF8::ToUNICODE(text);
}

std::string Hex(const std::string& bytes)
{
    std::string digits = "x";
    for (const char byte : bytes)
    {
        digits += HEX[static_cast<unsigned char>(byte) >> 4];
        digits += HEX[static_cast<unsigned char>(byte) & 15];
    }
    return digits;
}

std::string Content(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

template <class Use>
void ForEachLine(const char* path, const Use& use)
{
    const std::string content = Content(path);
    for (std::size_t begin = 0; begin < content.size();)
    {
        const std::size_t end = content.find('\n', begin);
        use(content.substr(begin, end - begin));
        if (end == std::string::npos)
            return;
        begin = end + 1;
    }
}

void Text(const char* path)
{
    TextFile file;
    if (!file.Open(Wide(path)))
    {
        std::puts("unreadable");
        return;
    }
    for (TString<wchar_t> line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
        std::puts(Hex(UTF8::ToUTF8(line)).c_str());
}

void Utf8(const char* path)
{
    ForEachLine(path,
                [](const std::string& line)
                {
                    const TString<wchar_t> text = UTF8::ToUNICODE(line);
                    if (text.empty() && !line.empty())
                        std::fputs("broken", stdout);
                    for (const wchar_t c : text)
                        std::printf("%X ", static_cast<unsigned int>(c));
                    std::puts(UTF8::ToUTF8(text) == TString<char>(line) ? "same" : "changed");
                });
}

void Match(const char* pattern, const char* path)
{
    const RegExp expression(TString<char>(pattern), RegExpOptions::Default);
    ForEachLine(path,
                [&](const std::string& line)
                {
                    const smart_ptr<MatchResult> result = expression.Match(TString<char>(line));
                    if (result->GetResult() < 0)
                        std::puts("none");
                    else
                        std::printf("%d %d\n", result->GetOffsets()[0], result->GetOffsets()[1]);
                });
}

void QuotedPrintable(const char* path)
{
    ForEachLine(path,
                [](const std::string& line)
                {
                    const TString<wchar_t> text = UTF8::ToUNICODE(line);
                    const TString<wchar_t> encoded = QP::ToQP(text);
                    std::printf("%s %s\n", Hex(UTF8::ToUTF8(encoded)).c_str(),
                                QP::ToUNICODE(encoded) == text ? "same" : "changed");
                });
}

void Base64(const char* path)
{
    const std::string content = Content(path);
    unsigned char* encoded = nullptr;
    unsigned int size = 0;
    b64_decode_binary(reinterpret_cast<const unsigned char*>(content.data()),
                      static_cast<unsigned int>(content.size()), &encoded, &size);
    std::printf("%.*s\n", static_cast<int>(size), reinterpret_cast<const char*>(encoded));
    delete[] encoded;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string what = argc > 2 ? argv[1] : "";
    const ToolkitSession session;
    if (what == "text")
        Text(argv[2]);
    else if (what == "utf8")
        Utf8(argv[2]);
    else if (what == "qp")
        QuotedPrintable(argv[2]);
    else if (what == "base64")
        Base64(argv[2]);
    else if (what == "match" && argc > 3)
        Match(argv[2], argv[3]);
    else
        return EXIT_FAILURE;
    return EXIT_SUCCESS;
}
