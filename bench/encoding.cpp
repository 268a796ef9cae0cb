// SPDX-License-Identifier: MIT
#include <cstring>
#include <vector>

#include <wx/base64.h>
#include <wx/string.h>

#include "bench/Bench.h"
#include "toolkit/encoding/B64.h"
#include "toolkit/encoding/Base64.h"
#include "toolkit/encoding/QP.h"
#include "toolkit/encoding/QuotedPrintable.h"
#include "toolkit/encoding/UTF8.h"

#ifdef BENCH_QT
#include <QByteArray>
#include <QString>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_NOWIDE
#include <boost/nowide/convert.hpp>
#endif
#ifdef BENCH_ABSEIL
#include <absl/strings/escaping.h>
#endif
#ifdef BENCH_POCO
#include <sstream>

#include <Poco/Base64Decoder.h>
#include <Poco/Base64Encoder.h>
#include <Poco/Net/QuotedPrintableDecoder.h>
#include <Poco/Net/QuotedPrintableEncoder.h>
#include <Poco/StreamCopier.h>
#endif
#ifdef BENCH_GMIME
#include <gmime/gmime-encodings.h>
#endif

using namespace Toolkit;

namespace
{

// As many whole characters as that many bytes of UTF-8 hold.
TString<wchar_t> Repeated(const std::wstring& part, std::size_t bytes)
{
    TString<wchar_t> text;
    std::size_t length = 0;
    for (std::size_t i = 0;; ++i)
    {
        const wchar_t character = part[i % part.size()];
        length += UTF8::ToUTF8(TString<wchar_t>(std::wstring(1, character))).size();
        if (length > bytes)
            return text;
        text += character;
    }
}

void RegisterUtf8(const std::string& kind, const TString<wchar_t>& wide)
{
    const TString<char> narrow = UTF8::ToUTF8(wide);
    const std::string encode = "Utf8Encode" + kind + "/";
    const std::string decode = "Utf8Decode" + kind + "/";
    ToolkitBench::Operation(encode + "Toolkit", [wide] { benchmark::DoNotOptimize(UTF8::ToUTF8(wide)); });
    ToolkitBench::Operation(decode + "Toolkit",
                            [narrow] { benchmark::DoNotOptimize(UTF8::ToUNICODE(narrow)); });
    ToolkitBench::Operation(encode + "limit", [narrow] { benchmark::DoNotOptimize(std::string(narrow)); });
    ToolkitBench::Operation(decode + "limit", [wide] { benchmark::DoNotOptimize(std::wstring(wide)); });
    ToolkitBench::Operation(encode + "wx", [text = wxString(wide)]
                            { benchmark::DoNotOptimize(text.mb_str(wxConvUTF8).data()); });
    ToolkitBench::Operation(decode + "wx",
                            [narrow] { benchmark::DoNotOptimize(wxString::FromUTF8(narrow)); });
#ifdef BENCH_QT
    ToolkitBench::Operation(encode + "Qt", [text = QString::fromStdWString(wide)]
                            { benchmark::DoNotOptimize(text.toUtf8().data()); });
    ToolkitBench::Operation(decode + "Qt",
                            [narrow] {
                                benchmark::DoNotOptimize(
                                    QString::fromUtf8(narrow.data(), static_cast<int>(narrow.size())).data());
                            });
#endif
#ifdef BENCH_GLIB
    ToolkitBench::Operation(encode + "GLib",
                            [wide]
                            {
                                g_free(g_ucs4_to_utf8(reinterpret_cast<const gunichar*>(wide.data()),
                                                      static_cast<glong>(wide.size()), nullptr, nullptr,
                                                      nullptr));
                            });
    ToolkitBench::Operation(decode + "GLib",
                            [narrow] {
                                g_free(g_utf8_to_ucs4(narrow.data(), static_cast<glong>(narrow.size()),
                                                      nullptr, nullptr, nullptr));
                            });
#endif
#ifdef BENCH_NOWIDE
    ToolkitBench::Operation(encode + "Boost",
                            [wide] { benchmark::DoNotOptimize(boost::nowide::narrow(wide)); });
    ToolkitBench::Operation(decode + "Boost",
                            [narrow] { benchmark::DoNotOptimize(boost::nowide::widen(narrow)); });
#endif
}

const std::size_t s_uBytes = 65536;

// The limits and the peers of a conversion to Base64, `encode`, and back, `decode`.
void RegisterBase64Peers(const std::string& encode, const std::string& decode, const std::string& bytes,
                         const std::string& text)
{
    ToolkitBench::Operation(encode + "limit", [bytes] { benchmark::DoNotOptimize(std::string(bytes)); });
    ToolkitBench::Operation(encode + "wx", [bytes]
                            { benchmark::DoNotOptimize(wxBase64Encode(bytes.data(), bytes.size())); });
    ToolkitBench::Operation(decode + "limit", [text] { benchmark::DoNotOptimize(std::string(text)); });
#ifdef BENCH_ABSEIL
    ToolkitBench::Operation(encode + "Abseil",
                            [bytes] { benchmark::DoNotOptimize(absl::Base64Escape(bytes)); });
    ToolkitBench::Operation(decode + "Abseil",
                            [text]
                            {
                                std::string out;
                                benchmark::DoNotOptimize(absl::Base64Unescape(text, &out));
                            });
#endif
#ifdef BENCH_GLIB
    ToolkitBench::Operation(
        encode + "GLib",
        [bytes] { g_free(g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size())); });
    ToolkitBench::Operation(decode + "GLib",
                            [text]
                            {
                                gsize size = 0;
                                g_free(g_base64_decode(text.c_str(), &size));
                            });
#endif
#ifdef BENCH_QT
    ToolkitBench::Operation(encode + "Qt", [bytes = QByteArray::fromStdString(bytes)]
                            { benchmark::DoNotOptimize(bytes.toBase64().data()); });
    ToolkitBench::Operation(decode + "Qt", [text = QByteArray::fromStdString(text)]
                            { benchmark::DoNotOptimize(QByteArray::fromBase64(text).data()); });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation(encode + "POCO",
                            [bytes]
                            {
                                std::ostringstream out;
                                Poco::Base64Encoder encoder(out);
                                encoder << bytes;
                                encoder.close();
                                benchmark::DoNotOptimize(out);
                            });
    ToolkitBench::Operation(decode + "POCO",
                            [text]
                            {
                                std::istringstream in(text);
                                Poco::Base64Decoder decoder(in);
                                std::string out;
                                Poco::StreamCopier::copyToString(decoder, out, 65536);
                                benchmark::DoNotOptimize(out.data());
                            });
#endif
#ifdef BENCH_GMIME
    ToolkitBench::Operation(encode + "gmime",
                            [bytes]
                            {
                                std::vector<unsigned char> out(bytes.size() * 2);
                                int state = 0;
                                guint32 save = 0;
                                benchmark::DoNotOptimize(g_mime_encoding_base64_encode_close(
                                    reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                                    out.data(), &state, &save));
                            });
    ToolkitBench::Operation(
        decode + "gmime",
        [text]
        {
            std::vector<unsigned char> out(text.size());
            int state = 0;
            guint32 save = 0;
            benchmark::DoNotOptimize(g_mime_encoding_base64_decode_step(
                reinterpret_cast<const unsigned char*>(text.data()), text.size(), out.data(), &state, &save));
        });
#endif
}

void RegisterBase64()
{
    const std::string bytes = ToolkitBench::Words(s_uBytes);
    const std::string text = Base64::Encode(bytes);
    ToolkitBench::Operation("Base64Encode/Toolkit",
                            [bytes]
                            {
                                unsigned char* out = nullptr;
                                unsigned int size = 0;
                                b64_decode_binary(reinterpret_cast<const unsigned char*>(bytes.data()),
                                                  static_cast<unsigned int>(bytes.size()), &out, &size);
                                benchmark::DoNotOptimize(out);
                                delete[] out;
                            });
    ToolkitBench::Operation("Base64Decode/Toolkit",
                            [text]
                            {
                                unsigned char* out = nullptr;
                                unsigned int size = 0;
                                b64_encode_binary(reinterpret_cast<const unsigned char*>(text.data()),
                                                  static_cast<unsigned int>(text.size()), &out, &size);
                                benchmark::DoNotOptimize(out);
                                delete[] out;
                            });
    RegisterBase64Peers("Base64Encode/", "Base64Decode/", bytes, text);
    ToolkitBench::Operation("StrictBase64Encode/Toolkit",
                            [bytes] { benchmark::DoNotOptimize(Base64::Encode(bytes)); });
    ToolkitBench::Operation("StrictBase64Decode/Toolkit",
                            [text] { benchmark::DoNotOptimize(Base64::Decode(text)); });
}

void RegisterQuotedPrintablePeers(const std::string& encode, const std::string& decode,
                                  const std::string& bytes, const std::string& codedBytes)
{
    ToolkitBench::Operation(encode + "limit", [bytes] { benchmark::DoNotOptimize(std::string(bytes)); });
    ToolkitBench::Operation(decode + "limit",
                            [codedBytes] { benchmark::DoNotOptimize(std::string(codedBytes)); });
#ifdef BENCH_GMIME
    ToolkitBench::Operation(encode + "gmime",
                            [bytes]
                            {
                                std::vector<char> out(bytes.size() * 4);
                                int state = 0;
                                guint32 save = 0;
                                benchmark::DoNotOptimize(g_mime_encoding_quoted_encode_close(
                                    reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                                    reinterpret_cast<unsigned char*>(out.data()), &state, &save));
                            });
    ToolkitBench::Operation(decode + "gmime",
                            [codedBytes]
                            {
                                std::vector<unsigned char> out(codedBytes.size());
                                int state = 0;
                                guint32 save = 0;
                                benchmark::DoNotOptimize(g_mime_encoding_quoted_decode_step(
                                    reinterpret_cast<const unsigned char*>(codedBytes.data()),
                                    codedBytes.size(), out.data(), &state, &save));
                            });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation(encode + "POCO",
                            [bytes]
                            {
                                std::ostringstream out;
                                Poco::Net::QuotedPrintableEncoder encoder(out);
                                encoder << bytes;
                                encoder.close();
                                benchmark::DoNotOptimize(out);
                            });
    ToolkitBench::Operation(decode + "POCO",
                            [codedBytes]
                            {
                                std::istringstream in(codedBytes);
                                Poco::Net::QuotedPrintableDecoder decoder(in);
                                std::string out;
                                Poco::StreamCopier::copyToString(decoder, out, 65536);
                                benchmark::DoNotOptimize(out.data());
                            });
#endif
}

void RegisterQuotedPrintable()
{
    const TString<wchar_t> text = Repeated(L"plain words with an \u00E4 = now and then ", s_uBytes);
    const TString<char> bytes = UTF8::ToUTF8(text);
    const TString<wchar_t> coded = QP::ToQP(text, 76, 76);
    const TString<char> codedBytes = UTF8::ToUTF8(coded);
    ToolkitBench::Operation("QuotedPrintable/Toolkit",
                            [text] { benchmark::DoNotOptimize(QP::ToQP(text, 76, 76)); });
    ToolkitBench::Operation("QuotedPrintableDecode/Toolkit",
                            [coded] { benchmark::DoNotOptimize(QP::ToUNICODE(coded)); });
    RegisterQuotedPrintablePeers("QuotedPrintable/", "QuotedPrintableDecode/", bytes, codedBytes);
    const std::string mail = QuotedPrintable::Encode(bytes);
    ToolkitBench::Operation("MailQuotedPrintable/Toolkit",
                            [bytes] { benchmark::DoNotOptimize(QuotedPrintable::Encode(bytes)); });
    ToolkitBench::Operation("MailQuotedPrintableDecode/Toolkit",
                            [mail] { benchmark::DoNotOptimize(QuotedPrintable::Decode(mail)); });
    RegisterQuotedPrintablePeers("MailQuotedPrintable/", "MailQuotedPrintableDecode/", bytes, mail);
}

} // namespace

void ToolkitBench::Register()
{
    const struct
    {
        const char* name;
        const wchar_t* part;
    } kinds[] = {{"Ascii", L"plain words "},
                 {"Latin", L"gr\u00FC\u00DFe \u00E0 la carte "},
                 {"Cjk", L"\u65E5\u672C\u8A9E\u6587"}};
    for (const auto& kind : kinds)
    {
        RegisterUtf8(std::string(kind.name) + "24", Repeated(kind.part, 24));
        RegisterUtf8(std::string(kind.name) + "64K", Repeated(kind.part, 65536));
    }
    RegisterBase64();
    RegisterQuotedPrintable();
}
