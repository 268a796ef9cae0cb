// SPDX-License-Identifier: MIT
#ifndef CATALOG_CATALOG_H
#define CATALOG_CATALOG_H

#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include <toolkit/core/Plugins.h>
#include <toolkit/threading/Task.h>

#include "Importer.h"

namespace catalog
{

struct Entry
{
    std::filesystem::path file;
    Document document;
};

// The documents below a folder, which are read in the background. Any thread may call all of it.
class Catalog
{
public:
    // The importers must live as long.
    explicit Catalog(const Toolkit::Plugins<Importer>& importers);

    // Reads the folder anew; what was read before is forgotten, and a reading that is under way ends.
    void Read(const std::filesystem::path& folder, std::chrono::milliseconds pause);

    // The documents by their names, as far as they are read.
    std::vector<Entry> Entries() const;
    // How far the reading is, for people.
    std::string Progress() const;

private:
    int ReadAll(Toolkit::TaskContext& context, const std::filesystem::path& folder,
                std::chrono::milliseconds pause);
    void ReadOne(const std::filesystem::path& file);

    const Toolkit::Plugins<Importer>& m_importers;
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
    // Last: it is destroyed, and so waited for, before what it uses.
    Toolkit::Task<int> m_reading;
};

} // namespace catalog

#endif
