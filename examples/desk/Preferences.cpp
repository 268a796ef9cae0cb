// SPDX-License-Identifier: MIT
#include "Preferences.h"

#include <utility>

#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

Settings Merged(Settings settings, const Settings& over)
{
    for (const std::string& section : over.Sections())
        for (const std::string& key : over.Keys(section))
            if (const Result<void> set = settings.Set(section, key, over.Get(section, key, "")); !set)
                TOOLKIT_LOG(LogSeverity::Warning) << set.error().Message();
    return settings;
}

} // namespace

Result<Preferences> Preferences::Load(const std::filesystem::path& bundle, const std::filesystem::path& user)
{
    const Result<Settings> given = Settings::LoadOrNew(bundle);
    if (!given)
        return given.error();
    const Result<Settings> own = Settings::LoadOrNew(user);
    if (!own)
        return own.error();
    return Preferences(*given, *own, user);
}

Preferences::Preferences(const Settings& bundle, const Settings& user, const std::filesystem::path& file)
    : m_file(file), m_user(user), m_current(Merged(bundle, user))
{
}

Result<void> Preferences::Set(const std::string& section, const std::string& key, const std::string& value)
{
    Result<void> saved = Save(section, key, value);
    if (!saved && saved.error().Code() == Errc::ChangedByOther)
    {
        // The user edits the file, too: what was written there stays, and this is added.
        Result<Settings> fresh = Settings::LoadOrNew(m_file);
        if (!fresh)
            return fresh.error();
        m_user = *std::move(fresh);
        saved = Save(section, key, value);
    }
    if (saved)
        m_current = Merged(std::move(m_current), m_user);
    return saved;
}

Result<void> Preferences::Save(const std::string& section, const std::string& key, const std::string& value)
{
    Settings changed = m_user;
    if (const Result<void> set = changed.Set(section, key, std::string_view(value)); !set)
        return set;
    if (const Result<void> saved = changed.Save(); !saved)
        return saved;
    m_user = std::move(changed);
    return Result<void>();
}

} // namespace Desk
