// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_DOCS_GIVEN_H
#define TOOLKIT_TESTS_DOCS_GIVEN_H

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <wx/sstream.h>

#include <toolkit/Toolkit.h>
#include <toolkit/app/Folders.h>
#include <toolkit/app/Instance.h>
#include <toolkit/app/Process.h>
#include <toolkit/core/LibraryVersion.h>
#include <toolkit/core/Plugin.h>
#include <toolkit/core/Plugins.h>
#include <toolkit/datetime/Timestamp.h>
#include <toolkit/encoding/Base64.h>
#include <toolkit/encoding/EncodedWords.h>
#include <toolkit/encoding/QuotedPrintable.h>
#include <toolkit/encoding/Text.h>
#include <toolkit/files/Settings.h>
#include <toolkit/files/WholeFile.h>
#include <toolkit/files/ZipReader.h>
#include <toolkit/files/ZipWriter.h>
#include <toolkit/log/CallbackLog.h>
#include <toolkit/log/Log.h>
#include <toolkit/log/RunLog.h>
#include <toolkit/log/TeeLogger.h>
#include <toolkit/regExp/Pattern.h>
#include <toolkit/threading/Event.h>
#include <toolkit/threading/Task.h>

namespace desk
{

struct Importer : Toolkit::Plugin
{
    virtual std::string Import(const std::filesystem::path& file) = 0;
};
TOOLKIT_PLUGIN_INTERFACE(Importer, "org.example.desk.Importer", 3);

struct MailImporter : Importer
{
    std::string Import(const std::filesystem::path& file) override;
};

} // namespace desk

// What the samples of the headers take for given. It is declared and nowhere defined: they are compiled
// alone.
namespace Given
{

struct MailModule : Toolkit::LibModule
{
    void Initialize() override;
    void Release() override;
};

struct Work : Toolkit::Threading::IRunnable
{
    void Run() override;
};

struct Commands : Toolkit::IPCConnectionEvent
{
    void OnExecuteEvent(const Toolkit::TString<wchar_t>& command) override;
};

int Fail(const std::string& message);
int Print(const Toolkit::Result<Toolkit::Instance::Answer>& answer);
std::string Execute(const std::vector<std::string>& arguments, const std::filesystem::path& folder);
int Index(Toolkit::TaskContext& context);
void LookForWork();
void Show(std::string_view text);
void use(const std::string& text);

extern const std::filesystem::path path;
extern const std::filesystem::path folder;
extern const std::filesystem::path logs;
extern const std::string file;
extern const std::string text;
extern const std::string bytes;
extern const std::string line;
extern std::map<std::string, std::string> settings;
extern const std::function<void(std::function<void()>)> executor;
extern const std::shared_ptr<desk::Importer> mails;
extern const Toolkit::Result<Toolkit::Folders> folders;
extern const Toolkit::Result<Toolkit::Pattern> pattern;
extern const Toolkit::Result<Toolkit::ProcessResult> result;
extern const Toolkit::Result<Toolkit::ZipReader> zip;
extern const Toolkit::Result<Toolkit::ZipReport> report;
extern Toolkit::Task<int> task;
extern Toolkit::ArchiveZip archive;
extern const Toolkit::smart_ptr<Toolkit::ArchiveZipEntry> entry;
extern const std::map<Toolkit::TString<wchar_t>, Toolkit::smart_ptr<Toolkit::ArchiveZipEntry>> entries;
extern const Toolkit::smart_ptr<Toolkit::MatchResult> match;

} // namespace Given

using namespace Given;
using namespace std::chrono_literals;

#endif
