// SPDX-License-Identifier: MIT
#include "Host.h"

#include "Text.h"
#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;

Host::Host(const std::filesystem::path& folder) : m_refused(m_readers.LoadFolder(folder))
{
    for (const std::shared_ptr<Reader>& reader : Readers())
        TOOLKIT_LOG(LogSeverity::Info)
            << "plug-in " << reader->Info().Name() << ' ' << reader->Info().Version() << " is loaded";
    for (const Failure& failure : m_refused)
        TOOLKIT_LOG(LogSeverity::Warning) << failure.Message();
}

std::vector<Failure> Host::Configure(const Settings& settings)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bHides = settings.Get("view", "hide", true);
    m_uPreview = settings.Get("view", "preview", std::size_t{60});
    std::vector<Failure> problems;
    for (const std::shared_ptr<Reader>& reader : Readers())
        for (const Failure& problem : reader->Configure(settings))
        {
            TOOLKIT_LOG(LogSeverity::Warning) << reader->Info().Name() << ": " << problem.Message();
            problems.push_back(problem);
        }
    return problems;
}

Result<Document> Host::Read(const std::filesystem::path& file) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const std::shared_ptr<Reader>& reader : Readers())
    {
        if (!reader->Takes(file))
            continue;
        Result<Document> document = reader->Read(file);
        if (document)
            Finish(*document);
        return document;
    }
    return Failure(Errc::Refused, "cannot open " + file.string() + ": no plug-in reads such files");
}

void Host::Finish(Document& document) const
{
    if (m_bHides)
        for (const std::shared_ptr<Reader>& reader : Readers())
            document.hidden += reader->Hide(document.text);
    document.preview = Preview(document.text, m_uPreview);
    TOOLKIT_LOG(LogSeverity::Info) << "read " << document.file << ", " << document.hidden << " places hidden";
}

} // namespace Desk
