// SPDX-License-Identifier: MIT
#include "Index.h"

#include <algorithm>

#include "Archive.h"
#include "toolkit/files/Directory.h"
#include "toolkit/threading/MutexLock.h"

namespace Desk
{

using namespace Toolkit;

Index::Index(Host& host, const Text& dataFolder, const IniFile& settings, bool paused)
    : BackgroundOperation(0),
      m_host(host),
      m_strDataFolder(dataFolder),
      m_strArchive(settings.GetValue(L"archive", L"file", Text::Empty())),
      m_strPattern(settings.GetValue(L"archive", L"pattern", Text::Empty())),
      m_bPaused(paused)
{
    if (!paused)
        GetOwnEvent()->Signal();
}

void Index::DoOperation()
{
    if (!MayGoOn())
        return;
    for (const Text& path : FindMails())
    {
        if (!MayGoOn())
            return;
        Document document;
        if (m_host.Read(path, document))
        {
            const MutexLock lock(m_documentsMutex);
            m_documents.push_back(document);
        }
        UpdateLastOperationDate();
    }
    m_bComplete = true;
}

void Index::Pause()
{
    m_bPaused = true;
    GetOwnEvent()->Reset();
}

void Index::Resume()
{
    m_bPaused = false;
    GetOwnEvent()->Signal();
}

void Index::Stop()
{
    m_bStopped = true;
    Resume();
}

std::vector<Document> Index::GetDocuments() const
{
    const MutexLock lock(m_documentsMutex);
    return m_documents;
}

std::vector<Text> Index::FindMails() const
{
    const Text folder = Join(m_strDataFolder, L"mails");
    std::vector<Text> paths;
    Directory(folder).GetFiles(L"*.eml", paths);
    std::sort(paths.begin(), paths.end());
    for (Text& path : paths)
        path = Join(folder, path);
    std::vector<Text> report;
    if (!m_strArchive.empty())
        ExtractFiles(Join(m_strDataFolder, m_strArchive), m_strPattern, m_host.GetOutputFolder(), paths,
                     report);
    return paths;
}

bool Index::MayGoOn() const
{
    return GetOwnEvent()->Wait(Mutex::s_uInfinite) && !m_bStopped;
}

IndexThread::~IndexThread()
{
    m_index.Stop();
    StopAndWait();
}

Thread::ExitCode IndexThread::DoWork()
{
    m_index.SendOperationStarted();
    m_index.DoOperation();
    m_index.SendOperationEnded();
    return nullptr;
}

} // namespace Desk
