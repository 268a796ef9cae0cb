// SPDX-License-Identifier: MIT
// Counts the words of text files, with headers for new code alone: newcode <file>...
// How long a word must be is a setting, and what was counted goes into a report and a log of the user's own.
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <toolkit/app/Folders.h>
#include <toolkit/core/Failure.h>
#include <toolkit/core/LibraryVersion.h>
#include <toolkit/core/Result.h>
#include <toolkit/encoding/Text.h>
#include <toolkit/files/Settings.h>
#include <toolkit/files/WholeFile.h>
#include <toolkit/log/CallbackLog.h>
#include <toolkit/log/Log.h>
#include <toolkit/log/LogStatement.h>
#include <toolkit/log/RunLog.h>

namespace fs = std::filesystem;
using namespace Toolkit;

namespace
{

Result<void> StartLog(const Folders& folders)
{
    Result<std::shared_ptr<RunLog>> file =
        RunLog::Open(RunLogOptions("words").Folder(folders.State() / "logs").Keep(3));
    if (!file)
        return file.error();
    const auto show = [](const LogRecord& record) { std::cout << "log: " << record.message << '\n'; };
    Log::Install({*file, std::make_shared<CallbackLog>(LogSeverity::Warning, show)});
    return {};
}

// What is no UTF-8 is taken for Latin-1, and said so.
Result<std::string> ReadText(const fs::path& path)
{
    Result<std::string> text = ReadFile(path, std::size_t{16} << 20);
    if (!text || Text::IsUtf8(*text))
        return text;
    TOOLKIT_LOG(LogSeverity::Warning) << path.filename() << " is no UTF-8";
    return Text::FromCharset(*text, "iso-8859-1");
}

Result<std::size_t> CountWords(const fs::path& path, std::size_t shortest)
{
    const Result<std::string> text = ReadText(path);
    if (!text)
        return text.error();
    std::istringstream words(*text);
    std::size_t count = 0;
    for (std::string word; words >> word;)
        if (const Result<std::wstring> letters = Text::ToWide(word); letters && letters->size() >= shortest)
            ++count;
    return count;
}

Result<void> Run(const std::vector<std::string>& files)
{
    const Result<Folders> folders = Folders::Of("words");
    if (!folders)
        return folders.error();
    if (Result<void> log = StartLog(*folders); !log)
        return log;
    Result<Settings> settings = Settings::LoadOrNew(folders->Config() / "words.ini");
    if (!settings)
        return settings.error();
    const Result<std::optional<unsigned int>> shortest = settings->Read<unsigned int>("count", "shortest");
    if (!shortest)
        return shortest.error();
    std::string report;
    for (const std::string& file : files)
    {
        const Result<std::size_t> count = CountWords(file, shortest->value_or(1));
        if (count)
            report += fs::path(file).filename().string() + ": " + std::to_string(*count) + '\n';
        else if (count.error().Code() == std::errc::no_such_file_or_directory)
            TOOLKIT_LOG(LogSeverity::Error) << fs::path(file).filename() << " is not there";
        else
            return count.error();
    }
    if (Result<void> done = WriteFile(folders->Data() / "reports" / "last.txt", report); !done)
        return done;
    if (Result<void> set = settings->Set("count", "runs", settings->Get("count", "runs", 0) + 1); !set)
        return set;
    std::cout << report << "run " << settings->Get("count", "runs", "none") << '\n';
    return settings->Save();
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::cout << "version " << LibraryVersion() << '\n';
    const Result<void> done = Run(std::vector<std::string>(arguments + 1, arguments + argumentCount));
    if (!done)
        std::cout << done.error().Message() << '\n';
    return done ? 0 : 1;
}
