// SPDX-License-Identifier: MIT
// Does what its arguments say, one after the other, and prints a line for each.
//   AskIcu <step>...
// session: starts and ends one; maps: whether the part and ICU are mapped; folder=<path>: goes there;
// short, full: memory for 8 MiB more, or for all; copy=<from>=<to>: copies a file; date, pattern, charset,
// names: what needs ICU; threads: 8 of them ask for a date at once.

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

#include "toolkit/core/ToolkitSession.h"
#include "toolkit/datetime/Locales.h"
#include "toolkit/datetime/Timestamp.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ZipReader.h"
#include "toolkit/files/ZipWriter.h"

using namespace Toolkit;

namespace
{

// How often the code of the part is mapped, and whether ICU's is.
std::string Maps()
{
    std::ifstream maps("/proc/self/maps");
    int parts = 0;
    bool isIcu = false;
    for (std::string line; std::getline(maps, line);)
        if (line.find(" r-xp ") != line.npos)
        {
            parts += line.find("/libtoolkit-icu.so") != line.npos ? 1 : 0;
            isIcu = isIcu || line.find("/libicuuc.so") != line.npos;
        }
    return std::to_string(parts) + (isIcu ? " with ICU" : " without ICU");
}

std::string Date()
{
    return Timestamp::Parse("2026-03-02T14:05:09.250Z")->Format(Timestamp::Style::Long, "de_DE");
}

std::string Pattern()
{
    TString<wchar_t> pattern;
    Locales::GetCurrentDateFormat(pattern);
    return UTF8::ToUTF8(pattern);
}

std::string Charset()
{
    const Result<std::string> text = Text::FromCharset("gr\xFCn", "iso-8859-1");
    if (text)
        return *text;
    return (text.error().Code() == std::errc::not_supported ? "not supported: " : "another code: ") +
           text.error().Message();
}

// Extracts an archive in the working folder, one name of which is not ASCII.
std::string Names()
{
    ZipWriter zip = ZipWriter::Create("names.zip").value();
    zip.Add("a/Plain.txt", "text").value();
    zip.Add("gr\u00FCn.txt", "text").value();
    zip.Finish().value();
    const ZipReport report = ZipReader::Open("names.zip")->ExtractAll("names").value();
    std::string text = std::to_string(report.Extracted().size());
    for (const Failure& failure : report.Refused())
        text += " " + failure.Message();
    return text;
}

std::string OnThreads()
{
    std::atomic<int> waiting{8};
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back(
            [&]
            {
                for (--waiting; waiting != 0;)
                    std::this_thread::yield();
                right += Date() == "2. M\u00E4rz 2026 um 14:05:09 UTC" ? 1 : 0;
            });
    for (std::thread& thread : threads)
        thread.join();
    return std::to_string(right);
}

void LimitMemory(bool isShort)
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    struct rlimit limit = {};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur =
        isShort ? pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + (8U << 20) : limit.rlim_max;
    setrlimit(RLIMIT_AS, &limit);
}

std::string Do(const std::string& step)
{
    const std::string given = step.substr(step.find('=') + 1);
    if (step == "date")
        return Date();
    if (step == "pattern")
        return Pattern();
    if (step == "charset")
        return Charset();
    if (step == "names")
        return Names();
    if (step == "threads")
        return OnThreads();
    if (step == "maps")
        return Maps();
    if (step == "session")
        const ToolkitSession session;
    else if (step == "short" || step == "full")
        LimitMemory(step == "short");
    else if (step.find("folder=") == 0)
        std::filesystem::current_path(given);
    else if (step.find("copy=") == 0)
        std::filesystem::copy_file(given.substr(0, given.find('=')), given.substr(given.find('=') + 1),
                                   std::filesystem::copy_options::overwrite_existing);
    else
        return "what?";
    return "done";
}

} // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        std::cout << Do(argv[i]) << std::endl;
}
