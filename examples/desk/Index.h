// SPDX-License-Identifier: MIT
#ifndef DESK_INDEX_H
#define DESK_INDEX_H

#include <atomic>
#include <filesystem>
#include <functional>
#include <mutex>
#include <vector>

#include "Host.h"
#include "toolkit/files/Settings.h"
#include "toolkit/threading/Task.h"

namespace Desk
{

// The mails of a bundle, those of its folder and those of its archive, which a task reads in the background.
// Its owner starts it; any thread may do the rest.
class Index
{
public:
    using Executor = Toolkit::TaskBase::Executor;
    using Changed = std::function<void(const Toolkit::TaskProgress&)>;

    // The host must live as long. What is extracted goes into the cache.
    Index(const Host& host, const std::filesystem::path& bundle, const std::filesystem::path& cache);

    // Reads the bundle anew by these settings; a reading that is under way ends first. The executor calls
    // `changed` with the progress, and in the end. A paused index waits before its first mail.
    void Start(const Toolkit::Settings& settings, bool paused, Changed changed, Executor executor);

    void Pause() { m_bPaused = true; }
    void Resume() { m_bPaused = false; }
    // It ends early, and tells so.
    void Cancel() { m_task.Cancel(); }
    // The same, but nobody is told any more.
    void End();

    Toolkit::TaskProgress Progress() const { return m_task.Progress(); }
    bool IsRunning() const { return m_task.IsRunning(); }
    // True once all is read.
    bool IsComplete() const { return m_bComplete; }
    // What is read so far.
    std::vector<Document> Documents() const;

private:
    void ReadAll(Toolkit::TaskContext& context, const Toolkit::Settings& settings);
    void Read(const std::filesystem::path& file);
    std::vector<std::filesystem::path> FindMails(const Toolkit::Settings& settings) const;
    bool MayGoOn(Toolkit::TaskContext& context) const;

    const Host& m_host;
    const std::filesystem::path m_bundle;
    const std::filesystem::path m_cache;
    std::atomic<bool> m_bPaused{false};
    std::atomic<bool> m_bComplete{false};
    mutable std::mutex m_mutex;
    std::vector<Document> m_documents;
    // Last: it is destroyed, and so waited for, before what it uses.
    Toolkit::Task<void> m_task;
};

} // namespace Desk

#endif
