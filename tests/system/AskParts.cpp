// SPDX-License-Identifier: MIT
// Does what its arguments say, one after the other, and prints a line for each.
//   AskParts <step>...
// session: starts and ends one; maps: which parts are mapped, and what they are linked with; folder=<path>:
// goes there; short, full: memory for 8 MiB more, or for all; copy=<from>=<to>: copies a file; date, format,
// charset, names: what needs ICU; find, classic, record: what needs PCRE2; server: what needs wxWidgets'
// net library; dates, finds: 8 threads ask at once for a date, or find a pattern; child: a forked
// child finds a pattern.

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "toolkit/app/IPCServer.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/datetime/Locales.h"
#include "toolkit/datetime/Timestamp.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ZipReader.h"
#include "toolkit/files/ZipWriter.h"
#include "toolkit/log/CallbackLog.h"
#include "toolkit/log/Log.h"
#include "toolkit/regExp/Pattern.h"
#include "toolkit/regExp/RegExp.Exceptions"
#include "toolkit/regExp/RegExp.h"

using namespace Toolkit;

namespace
{

// The names of the parts and of their libraries, each as often as code of it is mapped.
std::string Maps()
{
    std::ifstream maps("/proc/self/maps");
    std::vector<std::string> found;
    for (std::string line; std::getline(maps, line);)
        for (const char* const name : {"libtoolkit-icu", "libicuuc", "libtoolkit-regex", "libpcre2-8",
                                       "libtoolkit-net", "libwx_baseu_net-3.2"})
            if (line.find(" r-xp ") != line.npos && line.find("/" + std::string(name) + ".so") != line.npos)
                found.push_back(name);
    std::sort(found.begin(), found.end());
    std::string text = found.empty() ? "no part" : "";
    for (const std::string& name : found)
        text += (text.empty() ? "" : " ") + name;
    return text;
}

std::string Date()
{
    return Timestamp::Parse("2026-03-02T14:05:09.250Z")->Format(Timestamp::Style::Long, "de_DE");
}

std::string Format()
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

std::string Find()
{
    const Result<Pattern> pattern = Pattern::Compile("(?<key>[a-z]+)=(\\d+)");
    if (pattern)
        return std::string(pattern->Find("a line with key=42")["key"]);
    return (pattern.error().Code() == std::errc::not_supported ? "not supported: " : "another code: ") +
           pattern.error().Message();
}

// What the work returns, or the message of the exception of an expression.
template <class Work>
std::string Caught(const Work& work)
{
    try
    {
        return work();
    }
    catch (const smart_ptr<RegExpException>& exception)
    {
        return exception->GetMessage();
    }
}

std::string Classic()
{
    const RegExp regExp("([a-z]+)=(\\d+)", RegExpOptions::Default);
    const TString<char> subject("a line with key=42");
    const auto match = [&]() -> std::string { return regExp.Match(subject)->operator[](1)->GetValue(); };
    const auto isMatch = [&]() -> std::string { return regExp.IsMatch(subject) ? "yes" : "no"; };
    const auto replace = [&]() -> std::string { return regExp.Replace("-", subject, 0); };
    return Caught(match) + "; " + Caught(isMatch) + "; " + Caught(replace);
}

// A record that nothing was compiled for.
std::string Record()
{
    return Caught(
        []() -> std::string
        {
            smart_ptr<MatchResult> record(new MatchResult);
            RegExp("a", RegExpOptions::Default).RegExp_exec(record, 0);
            return "executed";
        });
}

// A server is made, and listens twice; what it logs.
std::string Server()
{
    std::string text;
    const auto note = [&text](const LogRecord& record) { text += "; " + std::string(record.message); };
    const ToolkitSession session;
    Log::Install({std::make_shared<CallbackLog>(LogSeverity::Error, note)});
    IPCServer server(L"channel");
    const bool first = server.Run();
    const bool second = server.Run();
    Log::Install({});
    return (first && second ? "listens" : "does not listen") + text;
}

std::string OnThreads(std::string (*work)())
{
    const std::string expected = work == &Date ? "2. M\u00E4rz 2026 um 14:05:09 UTC" : "key";
    std::atomic<int> waiting{8};
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back(
            [&]
            {
                for (--waiting; waiting != 0;)
                    std::this_thread::yield();
                right += work() == expected ? 1 : 0;
            });
    for (std::thread& thread : threads)
        thread.join();
    return std::to_string(right);
}

std::string InChild()
{
    const pid_t child = fork();
    if (child == 0)
        _exit(Find() == "key" ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0 ? "found" : "status " + std::to_string(status);
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
    if (step == "format")
        return Format();
    if (step == "charset")
        return Charset();
    if (step == "names")
        return Names();
    if (step == "find")
        return Find();
    if (step == "classic")
        return Classic();
    if (step == "record")
        return Record();
    if (step == "server")
        return Server();
    if (step == "dates" || step == "finds")
        return OnThreads(step == "dates" ? &Date : &Find);
    if (step == "child")
        return InChild();
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
