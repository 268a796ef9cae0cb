// SPDX-License-Identifier: MIT
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <sys/xattr.h>

#include "tests/faults/BrokenSystem.h"
#include "tests/plugins/Greeter.h"
#include "tests/support/Archives.h"
#include "tests/support/LogFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/Folders.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/Process.h"
#include "toolkit/app/SystemInfo.h"
#include "toolkit/core/Plugins.h"
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
#include "toolkit/files/Settings.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/files/ZipInputStream.h"
#include "toolkit/files/ZipReader.h"
#include "toolkit/files/ZipWriter.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/RunLog.h"

using namespace Toolkit;
using ToolkitTest::FailingSystem;
using ToolkitTest::Faults;
using ToolkitTest::ReadBytes;
using ToolkitTest::WaitUntil;
using ToolkitTest::WriteBytes;

namespace
{

const unsigned int s_uLarge = 1U << 30;
const TString<wchar_t> c_strText(L"a text of more than a few characters, \x20AC");

class BrokenSystem : public testing::Test
{
protected:
    TString<wchar_t> Path(const char* name) const { return m_folder.Wide(name); }
    std::string Content(const char* name) const { return ReadBytes(m_folder.Path(name)); }
    void Write(const char* name, const std::string& bytes) const { WriteBytes(m_folder.Path(name), bytes); }
    std::size_t CountFiles() const
    {
        const std::filesystem::directory_iterator files(m_folder.Path());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    void RemoveLeftBehind() const
    {
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path()))
            if (entry.path().filename().string()[0] == '.')
                std::filesystem::remove(entry.path());
    }

    const ToolkitTest::TemporaryFolder m_folder;
    const ToolkitSession m_session;
};

// What a logger wrote, by whichever name.
std::string Log(const ToolkitTest::LogFile& file)
{
    std::string whole = file.Bytes();
    for (const std::string& other : file.FallbackPaths())
        whole += ReadBytes(other);
    return whole;
}

// Expects whole lines in the log of a run, which are these in their order but for those that it counts as
// lost.
void ExpectLines(const std::filesystem::path& folder, const std::vector<std::string>& expected)
{
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files.insert(entry.path());
    std::string text;
    for (const std::filesystem::path& file : files)
        text += ReadBytes(file.string());
    static const std::regex s_line("\\S+ \\w+ \\d+ \\S+ (\\w+)(\\.*| lines? w\\w+ lost)");
    std::size_t next = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
    {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, s_line)) << text;
        const bool counts = match[2].str().find("lost") != std::string::npos;
        if (!counts)
        {
            ASSERT_LT(next, expected.size()) << text;
            EXPECT_EQ(expected[next], match[1]) << text;
        }
        next += counts ? std::stoul(match[1]) : 1;
    }
    EXPECT_EQ(expected.size(), next) << text;
    EXPECT_EQ('\n', text.empty() ? '\n' : text.back());
}

// True when `text` begins with `beginning`.
bool Begins(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

} // namespace

TEST_F(BrokenSystem, IsAnsweredByStreams)
{
    const TString<wchar_t> path = Path("stream");
    ToolkitTest::FailEachCall({
        {"FSStream, written",
         [&](const Faults& faults)
         {
             std::filesystem::remove(m_folder.Path("stream"));
             bool whole = false;
             faults(
                 [&]
                 {
                     FSStream stream(path, FSStream::ModeCreate);
                     whole = stream.Write(c_strText) == StreamResult::Ok &&
                             stream.Write(7U) == StreamResult::Ok &&
                             stream.Write("block", 5) == StreamResult::Ok;
                 });
             const std::string bytes = Content("stream");
             EXPECT_TRUE(!whole || bytes.size() == 4 + 4 * c_strText.size() + 4 + 5);
             // Later work goes on.
             FSStream again(path, FSStream::ModeWrite);
             EXPECT_EQ(StreamResult::Ok, again.Write(c_strText));
         }},
        {"FSStream, read",
         [&](const Faults& faults)
         {
             {
                 FSStream stream(path, FSStream::ModeWrite);
                 stream.Write(c_strText);
                 stream.Write(7U);
             }
             TString<wchar_t> text = L"before";
             unsigned int value = 1;
             StreamResult results[2] = {StreamResult::NotOpen, StreamResult::NotOpen};
             faults(
                 [&]
                 {
                     FSStream stream(path, FSStream::ModeRead);
                     results[0] = stream.Read(text);
                     results[1] = results[0] == StreamResult::Ok ? stream.Read(value) : StreamResult::NotOpen;
                     stream.Length();
                 });
             EXPECT_EQ(results[0] == StreamResult::Ok ? c_strText : TString<wchar_t>(L"before"), text);
             EXPECT_EQ(results[1] == StreamResult::Ok ? 7U : 1U, value);
             FSStream again(path, FSStream::ModeRead);
             EXPECT_EQ(StreamResult::Ok, again.Read(text));
         }},
        {"FSStream, read with a count that is no multiple of 4",
         [&](const Faults& faults)
         {
             Write("stream", std::string("\6\0\0\0x\0\0\0yz", 10));
             TString<wchar_t> text = L"before";
             StreamResult result = StreamResult::NotOpen;
             faults([&] { result = FSStream(path, FSStream::ModeRead).Read(text); });
             EXPECT_EQ(result == StreamResult::Ok ? L"x" : L"before", text);
             EXPECT_EQ(StreamResult::Ok, FSStream(path, FSStream::ModeRead).Read(text));
         }},
        {"FSOutputSerializer, FSInputSerializer, Bytes",
         [&](const Faults& faults)
         {
             const std::vector<unsigned char> data(3000, 'x');
             Bytes read;
             bool whole = false;
             faults(
                 [&]
                 {
                     {
                         FSOutputSerializer output(path);
                         whole = output.Serialize(Bytes(data.data(), 3000)) == StreamResult::Ok;
                     }
                     FSInputSerializer input(path);
                     whole = input.Deserialize(read) == StreamResult::Ok && whole;
                 });
             unsigned char* out = nullptr;
             unsigned int size = 0;
             read.GetBytes(&out, &size);
             EXPECT_TRUE(!whole || std::vector<unsigned char>(out, out + size) == data);
             delete[] out;
         }},
    });
}

TEST_F(BrokenSystem, IsAnsweredByFiles)
{
    const TString<wchar_t> path = Path("file");
    const std::string bytes = UTF8::ToUTF8(c_strText);
    ToolkitTest::FailEachCall({
        {"FFile, written",
         [&](const Faults& faults)
         {
             bool whole = false;
             faults(
                 [&]
                 {
                     FFile file;
                     whole = file.Open(path, L"wb");
                     file.Write(c_strText);
                     const bool flushed = file.Flush();
                     file.Write(c_strText);
                     whole = file.Close() && flushed && whole;
                 });
             // A second half that was not written is known from the length alone.
             EXPECT_TRUE(!whole || Begins(Content("file"), bytes));
             FFile again;
             EXPECT_TRUE(again.Open(path, L"wb"));
             again.Write(c_strText);
             EXPECT_TRUE(again.Close());
             EXPECT_EQ(bytes, Content("file"));
         }},
        {"FFile, read",
         [&](const Faults& faults)
         {
             Write("file", bytes);
             std::string got(100, '\0');
             long long length = 0;
             faults(
                 [&]
                 {
                     FFile file;
                     file.Open(path, L"rb");
                     got.resize(file.Read(got.data(), 100));
                     length = file.GetLength();
                     file.SeekEnd(0);
                     file.GetOffset();
                 });
             EXPECT_TRUE(Begins(bytes, got)) << got;
             EXPECT_THAT(length, testing::AnyOf(-1, static_cast<long long>(bytes.size())));
         }},
        {"TextFile::Open",
         [&](const Faults& faults)
         {
             Write("file", bytes + "\nlast");
             TextFile file;
             bool opened = false;
             faults([&] { opened = file.Open(path); });
             EXPECT_EQ(opened ? c_strText : TString<wchar_t>(), file.GetFirstLine());
             EXPECT_EQ(opened ? L"last" : L"", file.GetNextLine());
             EXPECT_TRUE(file.Open(path));
         }},
        {"TextFile::Write",
         [&](const Faults& faults)
         {
             Write("file", "before\n");
             const std::size_t count = CountFiles();
             TextFile file;
             ASSERT_TRUE(file.Open(path));
             file.AddLine(c_strText);
             bool written = false;
             faults([&] { written = file.Write(); });
             EXPECT_EQ(written ? "before\n" + bytes + "\n" : "before\n", Content("file"));
             // Where not even a removal works, the new file stays; no later one is hindered by it.
             EXPECT_EQ(count + (FailingSystem::HasFailed("unlink") ? 1 : 0), CountFiles());
             RemoveLeftBehind();
             EXPECT_TRUE(file.Write());
             EXPECT_EQ("before\n" + bytes + "\n", Content("file"));
         }},
        {"ReadFile",
         [&](const Faults& faults)
         {
             Write("file", bytes);
             std::string read;
             faults(
                 [&]
                 {
                     const Result<std::string> result = ReadFile(m_folder.Path("file"));
                     read = result ? *result : result.error().Message();
                 });
             EXPECT_TRUE(read == bytes || Begins(read, "cannot read " + m_folder.Path("file") + ": "))
                 << read;
         }},
        {"WriteFile",
         [&](const Faults& faults)
         {
             Write("file", "before");
             setxattr(m_folder.Path("file").c_str(), "user.note", "x", 1, 0);
             const std::size_t count = CountFiles();
             std::string wrong;
             faults(
                 [&]
                 {
                     const Result<void> result = WriteFile(m_folder.Path("file"), bytes);
                     wrong = result ? "" : result.error().Message();
                 });
             EXPECT_EQ(wrong.empty() ? bytes : "before", Content("file"));
             EXPECT_TRUE(wrong.empty() || Begins(wrong, "cannot write " + m_folder.Path("file") + ": "))
                 << wrong;
             EXPECT_EQ(count + (FailingSystem::HasFailed("unlink") ? 1 : 0), CountFiles());
             RemoveLeftBehind();
             EXPECT_TRUE(WriteFile(m_folder.Path("file"), bytes));
             EXPECT_EQ(bytes, Content("file"));
         }},
        {"WriteFile, with folders",
         [&](const Faults& faults)
         {
             std::filesystem::remove_all(m_folder.Path("a"));
             bool written = false;
             faults([&] { written = WriteFile(m_folder.Path("a/b/file"), bytes).has_value(); });
             EXPECT_EQ(written ? bytes : "", Content("a/b/file"));
             std::filesystem::remove_all(m_folder.Path("a"));
         }},
        {"IniFile",
         [&](const Faults& faults)
         {
             Write("file", "[section]\nkey=" + bytes + "\n");
             std::unique_ptr<IniFile> ini;
             faults([&] { ini = std::make_unique<IniFile>(path); });
             EXPECT_EQ(ini->IsLoaded(), ini->HasSection(L"section"));
             EXPECT_EQ(ini->IsLoaded() ? c_strText : TString<wchar_t>(),
                       ini->GetValue(L"section", L"key", L""));
             EXPECT_TRUE(ini->Parse(path));
         }},
        {"Settings::Load",
         [&](const Faults& faults)
         {
             Write("file", "[section]\nkey=" + bytes + "\n");
             std::string read;
             faults(
                 [&]
                 {
                     const Result<Settings> settings = Settings::LoadOrNew(m_folder.Path("file"));
                     read =
                         settings ? settings->Get("section", "key", "missing") : settings.error().Message();
                 });
             EXPECT_TRUE(read == bytes || Begins(read, "cannot read " + m_folder.Path("file") + ": "))
                 << read;
         }},
        {"Settings::Save",
         [&](const Faults& faults)
         {
             const std::string before = "[section]\nkey=" + bytes + "\n";
             Write("file", before);
             Settings settings = Settings::Load(m_folder.Path("file")).value();
             settings.Set("section", "key", 1).value();
             std::string wrong;
             faults(
                 [&]
                 {
                     const Result<void> saved = settings.Save();
                     wrong = saved ? "" : saved.error().Message();
                 });
             EXPECT_EQ(wrong.empty() ? "[section]\nkey=1\n" : before, Content("file"));
             EXPECT_TRUE(wrong.empty() || wrong.find(m_folder.Path("file")) != wrong.npos) << wrong;
             RemoveLeftBehind();
             EXPECT_TRUE(settings.Save());
             EXPECT_EQ("[section]\nkey=1\n", Content("file"));
         }},
        {"Directory",
         [&](const Faults& faults)
         {
             std::filesystem::remove_all(m_folder.Path("made"));
             Write("removed", "");
             const TString<wchar_t> made = Path("made/twice");
             const TString<wchar_t> gone = Path("removed");
             bool isMade = false;
             bool isGone = false;
             std::vector<TString<wchar_t>> names;
             faults(
                 [&]
                 {
                     isMade = Directory::Create(made);
                     isGone = Directory::RemoveFile(gone);
                     Directory(m_folder.Wide()).GetFiles(L"file", names);
                 });
             EXPECT_TRUE(!isMade || std::filesystem::exists(m_folder.Path("made/twice")));
             EXPECT_EQ(isGone, !std::filesystem::exists(m_folder.Path("removed")));
             EXPECT_GE(1U, names.size());
             EXPECT_TRUE(Directory::Create(made));
         }},
    });
}

// The calls that an operation makes, of those that a broken disk fails, one after the other.
std::vector<std::string> CallsOf(const std::function<void()>& operation)
{
    std::vector<std::string> calls;
    for (unsigned long call = 1;; ++call)
    {
        FailingSystem::Set(call, FailingSystem::Broken, false);
        ToolkitTest::Faults()(operation);
        if (!FailingSystem::HasFailed())
            return calls;
        calls.push_back(FailingSystem::GetFailed());
    }
}

// The content is on the disk before the name leads to it, and the name thereafter.
TEST_F(BrokenSystem, SeesEachNewFileOnTheDiskBeforeItTakesItsPlace)
{
    const std::string file = m_folder.Path("file");
    int value = 0;
    const std::vector<std::pair<const char*, std::function<void()>>> writers = {
        {"TextFile",
         [&]
         {
             TextFile text;
             text.Open(Path("file"));
             text.AddLine(c_strText);
             text.Write();
         }},
        {"WriteFile", [&] { static_cast<void>(WriteFile(file, "new")); }},
        {"Settings",
         [&]
         {
             Result<Settings> settings = Settings::LoadOrNew(file);
             if (settings && settings->Set("section", "key", ++value))
                 static_cast<void>(settings->Save());
         }},
        {"ZipWriter",
         [&]
         {
             Result<ZipWriter> archive = ZipWriter::Create(file);
             if (archive && archive->Add("name", "bytes"))
                 static_cast<void>(archive->Finish());
         }},
    };
    for (const auto& [name, write] : writers)
    {
        Write("file", "");
        std::vector<std::string> calls;
        for (const std::string& call : CallsOf(write))
            if (call == "fsync" || call == "rename" ||
                (call == "write" && (calls.empty() || calls.back() != call)))
                calls.push_back(call);
        EXPECT_EQ((std::vector<std::string>{"write", "fsync", "rename", "fsync"}), calls) << name;
    }
}

TEST_F(BrokenSystem, IsAnsweredByArchives)
{
    ToolkitTest::MakeSmallArchive(m_folder, "zip");
    const TString<wchar_t> path = Path("zip");
    TString<wchar_t> target = Path("target");
    const std::string content = ToolkitTest::ContentOf("two.txt");
    using Entries = std::map<TString<wchar_t>, smart_ptr<ArchiveZipEntry>>;
    ToolkitTest::FailEachCall({
        {"ArchiveZip::Open, EntriesList",
         [&](const Faults& faults)
         {
             ArchiveZip archive;
             Entries entries;
             int count = 0;
             faults(
                 [&]
                 {
                     archive.Open(path);
                     count = archive.EntriesList(entries, L"", ArchiveEntriesFlags::All);
                 });
             EXPECT_EQ(entries.size(), static_cast<std::size_t>(std::max(count, 0)));
             archive.Open(path);
             EXPECT_EQ(3, archive.EntriesList(entries, L"", ArchiveEntriesFlags::All));
         }},
        {"ArchiveZip::UnZip",
         [&](const Faults& faults)
         {
             std::filesystem::remove(m_folder.Path("target"));
             ToolkitTest::OpenArchive open(path);
             const smart_ptr<ArchiveZipEntry> entry = open[L"two.txt"];
             bool whole = false;
             faults([&] { whole = open.archive.UnZip(entry, target); });
             const std::string bytes = Content("target");
             EXPECT_TRUE(whole ? bytes == content : Begins(content, bytes)) << bytes;
             EXPECT_TRUE(open.archive.UnZip(entry, target));
             EXPECT_EQ(content, Content("target"));
         }},
        {"ZipReader",
         [&](const Faults& faults)
         {
             std::filesystem::remove_all(m_folder.Path("out"));
             Write("target", "before");
             std::string read;
             bool extracted = false;
             std::size_t count = 0;
             faults(
                 [&]
                 {
                     const Result<ZipReader> zip = ZipReader::Open(m_folder.Path("zip"));
                     const std::optional<ZipEntry> entry = zip ? zip->Find("two.txt") : std::nullopt;
                     if (!entry)
                         return;
                     read = zip->Read(*entry).value_or(content);
                     extracted = zip->Extract(*entry, m_folder.Path("target")).has_value();
                     if (const Result<ZipReport> report = zip->ExtractAll(m_folder.Path("out")))
                         count = report->Extracted().size();
                 });
             EXPECT_TRUE(read.empty() || read == content) << read;
             EXPECT_EQ(extracted ? content : "before", Content("target"));
             EXPECT_LE(count, 3U);
             EXPECT_TRUE(count < 3 || Content("out/two.txt") == content);
         }},
        {"ZipWriter",
         [&](const Faults& faults)
         {
             Write("written", "before");
             bool finished = false;
             faults(
                 [&]
                 {
                     Result<ZipWriter> zip = ZipWriter::Create(m_folder.Path("written"));
                     finished = zip && zip->Add("one", content) &&
                                zip->AddFile("two", m_folder.Path("zip")) && zip->Finish();
                 });
             EXPECT_TRUE(finished || Content("written") == "before");
             const Result<ZipReader> back = ZipReader::Open(m_folder.Path("written"));
             EXPECT_EQ(finished, back && back->Read(*back->Find("one")).value_or("") == content);
             RemoveLeftBehind();
         }},
        {"ZipInputStream, read",
         [&](const Faults& faults)
         {
             ToolkitTest::OpenArchive open(path);
             std::string got;
             faults([&] { got = open.Read(L"two.txt"); });
             EXPECT_THAT(got, testing::AnyOf("", content));
             EXPECT_EQ(content, open.Read(L"two.txt"));
         }},
    });
}

TEST_F(BrokenSystem, IsAnsweredByTheApplication)
{
    const TString<wchar_t> path = Path("data/folder");
    ToolkitTest::FailEachCall({
        {"SystemInfo::StartProcess",
         [&](const Faults& faults)
         {
             int answer = 0;
             faults([&] { answer = SystemInfo::StartProcess(L"/bin/true", L"-an argument", true); });
             EXPECT_LT(0, answer);
             EXPECT_LT(0, SystemInfo::StartProcess(L"/bin/true", L"", true));
         }},
        {"PathManager",
         [&](const Faults& faults)
         {
             std::filesystem::remove_all(m_folder.Path("data"));
             faults([&] { PathManager().SetApplicationDataPath(path); });
             PathManager().SetApplicationDataPath(path);
             EXPECT_TRUE(PathManager::DirExists(path));
         }},
    });
}

// A child that cannot be watched by a descriptor is looked after; one that cannot be started is told of.
TEST_F(BrokenSystem, IsAnsweredByProcesses)
{
    const auto run = [this](const Faults& faults)
    {
        const std::vector<std::string> arguments = {"/bin/cat", "-"};
        const ProcessOptions options = ProcessOptions().Input("text").Folder(m_folder.Path());
        Result<ProcessResult> result = Failure(Errc::Refused, "");
        faults([&] { result = Process::Run(arguments, options); });
        EXPECT_EQ("text", result ? result->Output() : "text");
        EXPECT_TRUE(result || !result.error().Message().empty());
        EXPECT_TRUE(result || FailingSystem::GetFault() != FailingSystem::Interrupted);
        EXPECT_TRUE(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD);
    };
    ToolkitTest::FailEachCall({
        {"Process::Run", run},
        {"Process::Run, by a host that ignores its children",
         [&run](const Faults& faults)
         {
             const sighandler_t before = std::signal(SIGCHLD, SIG_IGN);
             run(faults);
             std::signal(SIGCHLD, before);
         }},
        {"Process::Start, Write, ReadLine, Terminate",
         [](const Faults& faults)
         {
             std::string line;
             Result<ProcessResult> result = Failure(Errc::Refused, "");
             faults(
                 [&]
                 {
                     Result<Process> process = Process::Start({"/bin/cat"});
                     if (!process || !process->Write("line\n"))
                         return;
                     line = process->ReadLine().value_or("");
                     process->Terminate(std::chrono::minutes(1));
                     result = process->Wait();
                 });
             EXPECT_EQ(result ? "line" : "", line);
             EXPECT_EQ(SIGTERM, result ? result->Signal() : SIGTERM);
             EXPECT_TRUE(result || FailingSystem::GetFault() != FailingSystem::Interrupted);
             EXPECT_TRUE(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD);
         }},
    });
}

TEST_F(BrokenSystem, IsAnsweredByReplaceSelf)
{
    ToolkitTest::FailEachCall({
        {"Process::ReplaceSelf",
         [](const Faults& faults)
         {
             const std::vector<std::string> tooLong = {std::string(std::size_t{1} << 20, 'a')};
             faults([&] { EXPECT_FALSE(Process::ReplaceSelf(tooLong)); });
         }},
    });
}

// Whatever fails costs no line but those that are counted in the file, and all is well once it has passed.
TEST_F(BrokenSystem, IsAnsweredByRunLog)
{
    const std::filesystem::path folder = m_folder.Path("runs");
    // One line fills a file.
    const RunLogOptions options = RunLogOptions("run").Folder(folder).Keep(0).MaxSize(80);
    const auto run = [&](const Faults& faults, const RunLogOptions& how, bool onOtherThreads)
    {
        std::filesystem::remove_all(folder);
        const std::shared_ptr<RunLog> log = RunLog::Open(how).value();
        LogRecord record;
        const auto write = [&]
        {
            for (const char* message : {"one", "two", "three"})
            {
                record.message = message + std::string(40, '.');
                log->Write(record);
                EXPECT_TRUE(log->Flush());
            }
        };
        if (onOtherThreads)
            faults.OnOtherThreads(write);
        else
            faults(write);
        record.message = "after";
        log->Write(record);
        EXPECT_TRUE(log->Flush());
        ExpectLines(folder, {"one", "two", "three", "after"});
    };
    ToolkitTest::FailEachCall({
        {"RunLog::Open",
         [&](const Faults& faults)
         {
             std::filesystem::remove_all(folder);
             std::string message;
             faults(
                 [&]
                 {
                     const Result<std::shared_ptr<RunLog>> log = RunLog::Open(options);
                     message = log ? "" : log.error().Message();
                 });
             EXPECT_TRUE(message.empty() || Begins(message, "cannot write a log in " + folder.string()))
                 << message;
             EXPECT_TRUE(RunLog::Open(options));
         }},
        {"RunLog::Write", [&](const Faults& faults) { run(faults, options, false); }},
        {"RunLog's thread",
         [&](const Faults& faults) { run(faults, RunLogOptions(options).Background(), true); }},
        {"RunLog::Write, its file taken away",
         [&](const Faults& faults)
         {
             std::filesystem::remove_all(folder);
             const std::shared_ptr<RunLog> log = RunLog::Open(options).value();
             std::filesystem::remove_all(folder);
             LogRecord record;
             record.message = "one";
             faults([&] { log->Write(record); });
             record.message = "after";
             log->Write(record);
             ExpectLines(folder, {"one", "after"});
         }},
    });
}

TEST_F(BrokenSystem, IsAnsweredByFolders)
{
    ToolkitTest::FailEachCall({
        {"Folders::Of, Config, State, Executable",
         [](const Faults& faults)
         {
             std::string message;
             faults(
                 [&]
                 {
                     const Result<Folders> folders = Folders::Of("watch");
                     message = folders ? "" : folders.error().Message();
                     EXPECT_TRUE(!folders || folders->Config().filename() == "watch");
                     EXPECT_TRUE(!folders || folders->State().filename() == "watch");
                     static_cast<void>(Folders::Executable());
                 });
             EXPECT_TRUE(message.empty() || FailingSystem::HasFailed()) << message;
             EXPECT_TRUE(Folders::Of("watch"));
             EXPECT_FALSE(Folders::Executable().empty());
         }},
    });
}

TEST_F(BrokenSystem, IsAnsweredByPlugins)
{
#ifdef TOOLKIT_COUNTERS
    GTEST_SKIP() << "a plug-in that is unloaded while calls fail cannot write its counters";
#endif
    const ToolkitTest::TemporaryFolder folder;
    for (const char* const name : {"loadable_a.so", "loadable_b.so"})
        WriteBytes(folder.Path(name), ReadBytes(TOOLKIT_TEST_PLUGINS + std::string("/") + name));
    ToolkitTest::FailEachCall({
        {"Plugins::LoadFolder, Load, Unload",
         [&](const Faults& faults)
         {
             Plugins<ToolkitTest::Greeter> greeters;
             std::vector<Failure> failures;
             bool isLoaded = false;
             faults(
                 [&]
                 {
                     failures = greeters.LoadFolder(folder.Path());
                     isLoaded = greeters.Load(folder.Path("loadable_a.so")).has_value();
                     static_cast<void>(greeters.Unload("b"));
                 });
             EXPECT_TRUE((failures.empty() && !isLoaded) || FailingSystem::HasFailed());
             for (const Failure& failure : failures)
                 EXPECT_EQ(0U, failure.Message().find("cannot load ")) << failure.Message();
             EXPECT_EQ(nullptr, greeters.Find("b"));
             greeters.LoadFolder(folder.Path());
             EXPECT_EQ(2U, greeters.All().size());
         }},
    });
}

// The other name of the log is tried every 10 ms, so that a fault that passes costs nothing but the name.
TEST_F(BrokenSystem, IsAnsweredByTheFileLogger)
{
    ToolkitTest::FailEachCall({
        {"FileLogger",
         [](const Faults& faults)
         {
             const ToolkitTest::LogFile file;
             faults.OnOtherThreads(
                 [&]
                 {
                     FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
                     logger.Write(L"one,");
                     logger.Write(L"two,");
                     // A logger that goes before it has a file loses what is queued.
                     EXPECT_TRUE(FailingSystem::IsOnwards() || WaitUntil([&] { return !Log(file).empty(); }));
                 });
             const std::string whole = Log(file);
             // Of each piece there is nothing, half or all; one fault costs no more than one piece.
             EXPECT_THAT(whole, testing::MatchesRegex("(on|one,)?(tw|two,)?"));
             const bool goesOn = whole.find("one,") != whole.npos || whole.find("two,") != whole.npos;
             EXPECT_TRUE(goesOn || FailingSystem::IsOnwards()) << whole;
             EXPECT_TRUE(whole == "one,two," || FailingSystem::GetFault() != FailingSystem::Interrupted);
         }},
    });
}
