// SPDX-License-Identifier: MIT
#include "Index.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include "Archive.h"
#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;
using namespace std::chrono_literals;

namespace
{

std::vector<std::filesystem::path> MailsIn(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (entry.path().extension() == ".eml")
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

Index::Index(const Host& host, const std::filesystem::path& bundle, const std::filesystem::path& cache)
    : m_host(host), m_bundle(bundle), m_cache(cache)
{
}

void Index::Start(const Settings& settings, bool paused, Changed changed, Executor executor)
{
    End();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_documents.clear();
    }
    m_bPaused = paused;
    m_bComplete = false;
    m_task = Task<void>::Start([this, settings](TaskContext& context) { ReadAll(context, settings); });
    m_task.OnChange(std::move(changed), std::move(executor));
}

void Index::End()
{
    m_task = Task<void>();
}

std::vector<Document> Index::Documents() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_documents;
}

void Index::ReadAll(TaskContext& context, const Settings& settings)
{
    const std::vector<std::filesystem::path> files = FindMails(settings);
    // Whoever shares a slow disk with others may want some time between two mails.
    const std::chrono::milliseconds rest(settings.Get("index", "rest", 0));
    const auto all = static_cast<std::int64_t>(files.size());
    std::int64_t done = 0;
    context.Report(done, all);
    for (const std::filesystem::path& file : files)
    {
        if (!context.SleepFor(rest) || !MayGoOn(context))
            return;
        Read(file);
        context.Report(++done, all, file.filename().string());
    }
    m_bComplete = true;
}

void Index::Read(const std::filesystem::path& file)
{
    Result<Document> document = m_host.Read(file);
    if (!document)
    {
        TOOLKIT_LOG(LogSeverity::Warning) << document.error().Message();
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_documents.push_back(*std::move(document));
}

std::vector<std::filesystem::path> Index::FindMails(const Settings& settings) const
{
    std::vector<std::filesystem::path> files = MailsIn(m_bundle / "mails");
    const std::string archive = settings.Get("archive", "file", "");
    if (archive.empty())
        return files;
    const Result<std::vector<std::filesystem::path>> extracted =
        ExtractFiles(m_bundle / archive, settings.Get("archive", "entries", ""), m_cache);
    if (extracted)
        files.insert(files.end(), extracted->begin(), extracted->end());
    else
        TOOLKIT_LOG(LogSeverity::Warning) << extracted.error().Message();
    return files;
}

bool Index::MayGoOn(TaskContext& context) const
{
    while (m_bPaused)
        if (!context.SleepFor(20ms))
            return false;
    return !context.IsCancelled();
}

} // namespace Desk
