// SPDX-License-Identifier: MIT
#include "Catalog.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include <toolkit/log/Log.h>

namespace catalog
{

using namespace Toolkit;

namespace
{

std::vector<std::filesystem::path> FilesBelow(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator next(folder, error), end; !error && next != end;
         next.increment(error))
        if (next->is_regular_file(error))
            files.push_back(next->path());
    if (error)
        TOOLKIT_LOG(LogSeverity::Warning) << "cannot list " << folder << ": " << error.message();
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

Catalog::Catalog(const Plugins<Importer>& importers) : m_importers(importers) {}

void Catalog::Read(const std::filesystem::path& folder, std::chrono::milliseconds pause)
{
    // Not the one and then the other: the old reading must end before its entries are forgotten.
    m_reading = Task<int>();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.clear();
    }
    m_reading = Task<int>::Start([this, folder, pause](TaskContext& context)
                                 { return ReadAll(context, folder, pause); });
    m_reading.OnChange(
        [](const TaskProgress& progress)
        { TOOLKIT_LOG(LogSeverity::Debug) << "read " << progress.Done() << " of " << progress.All(); });
}

std::vector<Entry> Catalog::Entries() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_entries;
}

std::string Catalog::Progress() const
{
    const TaskProgress progress = m_reading.Progress();
    const std::string count = std::to_string(progress.Done()) + " of " + std::to_string(progress.All());
    return m_reading.IsRunning() ? "reading " + progress.Text() + ", " + count : "read " + count;
}

int Catalog::ReadAll(TaskContext& context, const std::filesystem::path& folder,
                     std::chrono::milliseconds pause)
{
    const std::vector<std::filesystem::path> files = FilesBelow(folder);
    const auto all = static_cast<int>(files.size());
    int done = 0;
    for (const std::filesystem::path& file : files)
    {
        context.Report(done, all, file.filename().string());
        if (!context.SleepFor(pause))
            break;
        ReadOne(file);
        ++done;
    }
    context.Report(done, all);
    TOOLKIT_LOG(LogSeverity::Info) << "read " << done << " of " << all << " files below " << folder;
    return done;
}

void Catalog::ReadOne(const std::filesystem::path& file)
{
    for (const std::shared_ptr<Importer>& importer : m_importers.All())
    {
        if (!importer->Takes(file))
            continue;
        Result<Document> document = importer->Import(file);
        if (document)
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_entries.push_back({file, std::move(*document)});
        }
        else
            TOOLKIT_LOG(LogSeverity::Warning)
                << importer->Info().Name() << ": " << document.error().Message();
        return;
    }
}

} // namespace catalog
