// SPDX-License-Identifier: MIT
#ifndef DESK_PREFERENCES_H
#define DESK_PREFERENCES_H

#include <filesystem>
#include <string>

#include "toolkit/core/Result.h"
#include "toolkit/files/Settings.h"

namespace Desk
{

// What desk goes by: the settings of its bundle, and the user's own, which count first. What the user changes
// is written to the user's file at once, and the bundle is never written. It belongs to one thread.
class Preferences
{
public:
    // Either file may be missing.
    static Toolkit::Result<Preferences> Load(const std::filesystem::path& bundle,
                                             const std::filesystem::path& user);

    // All that count, as a snapshot that any thread may keep.
    const Toolkit::Settings& Current() const { return m_current; }

    // Changes one and saves it. Nothing is changed when it fails.
    Toolkit::Result<void> Set(const std::string& section, const std::string& key, const std::string& value);

private:
    Preferences(const Toolkit::Settings& bundle, const Toolkit::Settings& user,
                const std::filesystem::path& file);

    Toolkit::Result<void> Save(const std::string& section, const std::string& key, const std::string& value);

    std::filesystem::path m_file;
    Toolkit::Settings m_user;
    Toolkit::Settings m_current;
};

} // namespace Desk

#endif
