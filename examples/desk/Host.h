// SPDX-License-Identifier: MIT
#ifndef DESK_HOST_H
#define DESK_HOST_H

#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

#include "Document.h"
#include "Reader.h"
#include "toolkit/core/Plugins.h"

namespace Desk
{

// The plug-ins, and what they do together. It knows nothing of how its results are shown.
class Host
{
public:
    // Loads what lies in the folder; what does not fit is refused, and desk goes on without it.
    explicit Host(const std::filesystem::path& folder);

    // In the order in which they were loaded.
    std::vector<std::shared_ptr<Reader>> Readers() const { return m_readers.All(); }
    // Why the others were not.
    const std::vector<Toolkit::Failure>& Refused() const { return m_refused; }

    // Hands the settings to every plug-in, and returns what is wrong with them.
    std::vector<Toolkit::Failure> Configure(const Toolkit::Settings& settings);

    // Lets the first plug-in that takes the file read it, and all of them hide what should not be seen. Any
    // thread may ask; one is served at a time.
    Toolkit::Result<Document> Read(const std::filesystem::path& file) const;

private:
    void Finish(Document& document) const;

    Toolkit::Plugins<Reader> m_readers;
    const std::vector<Toolkit::Failure> m_refused;
    // Guards the plug-ins' settings, and those below.
    mutable std::mutex m_mutex;
    bool m_bHides = true;
    std::size_t m_uPreview = 0;
};

} // namespace Desk

#endif
