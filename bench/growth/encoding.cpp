// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include "toolkit/encoding/B64.h"
#include "toolkit/encoding/Bytes.h"
#include "toolkit/encoding/QP.h"
#include "toolkit/encoding/UTF7.h"
#include "toolkit/encoding/UTF8.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

// Every width of UTF-8, line ends, and what quoted-printable escapes.
TString<wchar_t> MixedText(std::size_t length)
{
    static const wchar_t s_strPart[] = L"plain, \u00E4 = \u20AC \U0001F600 ?\n";
    std::wstring text;
    while (text.size() < length)
        text += s_strPart;
    text.resize(length);
    return TString<wchar_t>(text);
}

// `convert` of a text of that many characters.
template <class Convert>
void AddWide(const std::string& operation, Convert convert)
{
    Add(operation, s_vecMany,
        [convert](std::size_t size)
        { return [convert, text = MixedText(size)] { benchmark::DoNotOptimize(convert(text)); }; });
}

// The same of its UTF-8.
template <class Convert>
void AddNarrow(const std::string& operation, Convert convert)
{
    Add(operation, s_vecMany,
        [convert](std::size_t size) {
            return [convert, text = UTF8::ToUTF8(MixedText(size))]
            { benchmark::DoNotOptimize(convert(text)); };
        });
}

using Code = int (*)(const unsigned char*, unsigned int, unsigned char**, unsigned int*);

void AddBase64(const std::string& operation, Code code)
{
    Add(operation, s_vecMany,
        [code](std::size_t size)
        {
            return [code, bytes = ToolkitBench::Words(size)]
            {
                unsigned char* out = nullptr;
                unsigned int outSize = 0;
                code(reinterpret_cast<const unsigned char*>(bytes.data()),
                     static_cast<unsigned int>(bytes.size()), &out, &outSize);
                benchmark::DoNotOptimize(out);
                delete[] out;
            };
        });
}

smart_ptr<Bytes> BytesOf(const std::string& text)
{
    return smart_ptr<Bytes>(new Bytes(reinterpret_cast<const unsigned char*>(text.data()),
                                      static_cast<unsigned int>(text.size())));
}

void AddBytes()
{
    Add("B64BytesToText", s_vecMany,
        [](std::size_t size)
        {
            return [bytes = BytesOf(ToolkitBench::Words(size))]
            { benchmark::DoNotOptimize(B64::ToUNICODE(bytes)); };
        });
    Add("B64TextToBytes", s_vecMany,
        [](std::size_t size)
        { return [text = WideText(size)] { benchmark::DoNotOptimize(B64::ToB64(text).get()); }; });
    Add("BytesSetAndGet", s_vecMany,
        [](std::size_t size)
        {
            return [text = ToolkitBench::Words(size)]
            {
                Bytes bytes;
                bytes.SetBytes(reinterpret_cast<const unsigned char*>(text.data()),
                               static_cast<unsigned int>(text.size()));
                unsigned char* out = nullptr;
                unsigned int outSize = 0;
                bytes.GetBytes(&out, &outSize);
                benchmark::DoNotOptimize(out);
                delete[] out;
            };
        });
}

} // namespace

void AddEncoding()
{
    AddWide("Utf8Encode", [](const TString<wchar_t>& text) { return UTF8::ToUTF8(text); });
    AddNarrow("Utf8Decode", [](const TString<char>& text) { return UTF8::ToUNICODE(text); });
    Add("Utf8IsNeeded", s_vecMany,
        [](std::size_t size)
        { return [text = WideText(size)] { benchmark::DoNotOptimize(UTF8::HasToBeUTF8(text)); }; });
    AddWide("Utf7Encode", [](const TString<wchar_t>& text) { return UTF7::ToUTF7(text); });
    AddNarrow("Utf7Decode", [](const TString<char>& text) { return UTF7::ToUNICODE(text); });
    AddWide("QuotedPrintable", [](const TString<wchar_t>& text) { return QP::ToQP(text); });
    AddWide("QuotedPrintableLines", [](const TString<wchar_t>& text) { return QP::ToQP(text, 76, 76); });
    Add("QuotedPrintableDecode", s_vecMany,
        [](std::size_t size) {
            return [text = QP::ToQP(MixedText(size), 76, 76)]
            { benchmark::DoNotOptimize(QP::ToUNICODE(text)); };
        });
    Add("QuotedPrintableIsNeeded", s_vecMany,
        [](std::size_t size)
        {
            const std::wstring text(size, L'a');
            return [wide = TString<wchar_t>(text)]
            { benchmark::DoNotOptimize(QP::HasToBeQP(wide, 0, 4294967295U, false)); };
        });
    AddBase64("Base64Encode", &b64_decode_binary);
    AddBase64("Base64Decode", &b64_encode_binary);
    AddBytes();
}

} // namespace ToolkitGrowth
