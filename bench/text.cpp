// SPDX-License-Identifier: MIT
#include <cstring>

#include <wx/string.h>

#include "bench/Bench.h"
#include "toolkit/core/TString.h"

#ifdef BENCH_QT
#include <QString>
#endif
#ifdef BENCH_POCO
#include <Poco/String.h>
#endif
#ifdef BENCH_ABSEIL
#include <absl/strings/match.h>
#include <absl/strings/str_replace.h>
#endif

using Toolkit::TString;

namespace
{

const std::size_t s_uLength = 4096;

std::string Upper(std::string text)
{
    for (char& character : text)
        if (character >= 'a' && character <= 'z')
            character = static_cast<char>(character - 'a' + 'A');
    return text;
}

void RegisterCompare()
{
    const std::string a = ToolkitBench::Words(s_uLength);
    const std::string b = Upper(a);
    ToolkitBench::Operation("CompareNoCase/Toolkit", [a = TString<char>(a), b = TString<char>(b)]
                            { benchmark::DoNotOptimize(a.compareNoCase(b)); });
    ToolkitBench::Operation("CompareNoCase/libc",
                            [a, b] { benchmark::DoNotOptimize(strcasecmp(a.c_str(), b.c_str())); });
    ToolkitBench::Operation("CompareNoCase/wx",
                            [a = wxString(a), b = wxString(b)] { benchmark::DoNotOptimize(a.CmpNoCase(b)); });
#ifdef BENCH_QT
    ToolkitBench::Operation("CompareNoCase/Qt", [a = QString::fromStdString(a), b = QString::fromStdString(b)]
                            { benchmark::DoNotOptimize(a.compare(b, Qt::CaseInsensitive)); });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation("CompareNoCase/POCO", [a, b] { benchmark::DoNotOptimize(Poco::icompare(a, b)); });
#endif
#ifdef BENCH_ABSEIL
    ToolkitBench::Operation("CompareNoCase/Abseil",
                            [a, b] { benchmark::DoNotOptimize(absl::EqualsIgnoreCase(a, b)); });
#endif
}

void RegisterSubstring()
{
    const std::string text = ToolkitBench::Words(s_uLength) + "NEEDLE";
    const std::string part = "needle";
    ToolkitBench::Operation("HasSubstring/Toolkit", [text = TString<char>(text), part = TString<char>(part)]
                            { benchmark::DoNotOptimize(text.HasSubstring(part)); });
    ToolkitBench::Operation("HasSubstring/libc", [text, part]
                            { benchmark::DoNotOptimize(strcasestr(text.c_str(), part.c_str())); });
    ToolkitBench::Operation("HasSubstring/wx", [text = wxString(text), part = wxString(part)]
                            { benchmark::DoNotOptimize(text.Lower().Contains(part.Lower())); });
#ifdef BENCH_QT
    ToolkitBench::Operation("HasSubstring/Qt",
                            [text = QString::fromStdString(text), part = QString::fromStdString(part)]
                            { benchmark::DoNotOptimize(text.contains(part, Qt::CaseInsensitive)); });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation("HasSubstring/POCO", [text, part]
                            { benchmark::DoNotOptimize(Poco::toLower(text).find(Poco::toLower(part))); });
#endif
}

void RegisterReplace()
{
    const std::string text = ToolkitBench::Words(s_uLength);
    ToolkitBench::Operation("Replace/Toolkit",
                            [text = TString<wchar_t>(ToolkitBench::WideWords(s_uLength)),
                             what = TString<wchar_t>(L"the"), with = TString<wchar_t>(L"every")]
                            {
                                TString<wchar_t> copy(text);
                                copy.Replace(what, with);
                                benchmark::DoNotOptimize(copy.data());
                            });
    ToolkitBench::Operation("Replace/wx",
                            [text = wxString(text)]
                            {
                                wxString copy(text.c_str().AsWChar());
                                copy.Replace("the", "every");
                                benchmark::DoNotOptimize(copy);
                            });
#ifdef BENCH_QT
    ToolkitBench::Operation(
        "Replace/Qt",
        [text = QString::fromStdString(text), what = QString("the"), with = QString("every")]
        {
            QString copy(text);
            copy.replace(what, with);
            benchmark::DoNotOptimize(copy);
        });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation("Replace/POCO", [text, what = std::string("the"), with = std::string("every")]
                            { benchmark::DoNotOptimize(Poco::replace(text, what, with)); });
#endif
#ifdef BENCH_ABSEIL
    ToolkitBench::Operation("Replace/Abseil",
                            [text] {
                                benchmark::DoNotOptimize(absl::StrReplaceAll(text, {{"the", "every"}}));
                            });
#endif
}

} // namespace

void ToolkitBench::Register()
{
    RegisterCompare();
    RegisterSubstring();
    RegisterReplace();
}
