// SPDX-License-Identifier: MIT
#ifndef DESK_INDEX_H
#define DESK_INDEX_H

#include <atomic>
#include <vector>

#include "Host.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/threading/BackgroundOperation.h"
#include "toolkit/threading/Mutex.h"
#include "toolkit/threading/Thread.h"

namespace Desk
{

// Reads all mails of a bundle: those of its folder and those of its archive. A background operation that runs
// on whatever thread calls DoOperation; any other may pause, resume, stop and ask for what is read so far.
class Index : public Toolkit::BackgroundOperation
{
public:
    // The bundle is the folder `dataFolder` with its `settings`. A paused index begins with the first mail
    // when it is resumed.
    Index(Host& host, const Text& dataFolder, const Toolkit::IniFile& settings, bool paused);

    // Ends early when it is stopped.
    void DoOperation() override;

    void Pause();
    void Resume();
    void Stop();
    bool IsPaused() const { return m_bPaused; }
    // True once every mail is read.
    bool IsComplete() const { return m_bComplete; }

    std::vector<Document> GetDocuments() const;

private:
    std::vector<Text> FindMails() const;
    bool MayGoOn() const;

    Host& m_host;
    const Text m_strDataFolder;
    const Text m_strArchive;
    const Text m_strPattern;
    std::vector<Document> m_documents;
    mutable Toolkit::Mutex m_documentsMutex;
    std::atomic<bool> m_bPaused;
    std::atomic<bool> m_bStopped{false};
    std::atomic<bool> m_bComplete{false};
};

// Runs the index, with its announcements. Waits for it when it goes.
class IndexThread : public Toolkit::Thread
{
public:
    explicit IndexThread(Index& index) : m_index(index) {}
    ~IndexThread() override;

protected:
    ExitCode DoWork() override;

private:
    Index& m_index;
};

} // namespace Desk

#endif
