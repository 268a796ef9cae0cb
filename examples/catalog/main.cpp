// SPDX-License-Identifier: MIT
// A catalog of the mails and notes below a folder. The first start reads them in the background and executes
// what later starts ask it for: catalog [read FOLDER | status | list [PATTERN] | show NAME | set KEY VALUE |
// quit]

#include <csignal>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include <toolkit/app/Folders.h>
#include <toolkit/app/Instance.h>
#include <toolkit/core/Plugins.h>
#include <toolkit/files/Settings.h>
#include <toolkit/log/Log.h>
#include <toolkit/log/RunLog.h>
#include <toolkit/threading/Event.h>

#include "Catalog.h"
#include "Commands.h"

using namespace Toolkit;

namespace
{

Event s_end;

extern "C" void EndBySignal(int)
{
    s_end.Set();
}

int Fail(const Failure& failure)
{
    std::cerr << failure.Message() << '\n';
    return 1;
}

int Ask(const Instance& instance, const std::vector<std::string>& words)
{
    const Result<Instance::Answer> answer = instance.Ask(words, std::chrono::seconds(30));
    if (!answer)
        return Fail(answer.error());
    std::cout << answer->Text();
    return answer->Code();
}

// One log for each run, and what is serious on the console, too.
void InstallLog(const Folders& folders)
{
    std::vector<std::shared_ptr<LogSink>> sinks{Log::Console(LogSeverity::Warning)};
    if (const Result<std::shared_ptr<RunLog>> file =
            RunLog::Open(RunLogOptions("catalog").Folder(folders.State() / "logs")))
        sinks.push_back(*file);
    else
        std::cerr << "there will be no log: " << file.error().Message() << '\n';
    Log::Install(sinks);
}

void LoadPlugins(Plugins<catalog::Importer>& importers)
{
    for (const Failure& refused : importers.LoadFolder(Folders::Executable().parent_path() / "plugins"))
        TOOLKIT_LOG(LogSeverity::Warning) << refused.Message();
    for (const std::shared_ptr<catalog::Importer>& importer : importers.All())
        TOOLKIT_LOG(LogSeverity::Info)
            << "plug-in " << importer->Info().Name() << ' ' << importer->Info().Version();
}

int Serve(Instance instance, const Folders& folders, const std::vector<std::string>& words)
{
    InstallLog(folders);
    Result<Settings> settings = Settings::LoadOrNew(folders.Config() / "catalog.ini");
    if (!settings)
        return Fail(settings.error());
    Plugins<catalog::Importer> importers;
    LoadPlugins(importers);

    catalog::Catalog documents(importers);
    catalog::Commands commands(documents, *settings, s_end);
    if (!words.empty())
        std::cout << commands.Execute(Instance::Command(words, std::filesystem::current_path())).Text();
    // Destroyed before what its commands use.
    Instance first(std::move(instance));
    first.Serve([&commands](const Instance::Command& command) { return commands.Execute(command); });
    std::cout << "the catalog is open" << std::endl;
    s_end.Wait();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> words(argv + 1, argv + argc);
    const Result<Folders> folders = Folders::Of("catalog");
    if (!folders)
        return Fail(folders.error());
    Result<Instance> instance = Instance::Claim("org.example.catalog");
    if (!instance)
        return Fail(instance.error());
    if (!instance->IsFirst())
        return Ask(*instance, words);
    std::signal(SIGINT, EndBySignal);
    std::signal(SIGTERM, EndBySignal);
    return Serve(std::move(*instance), *folders, words);
}
