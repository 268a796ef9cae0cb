// SPDX-License-Identifier: MIT
#include "toolkit/core/Plugin.h"

#include <atomic>
#include <cstddef>
#include <utility>

namespace Toolkit
{

namespace
{

thread_local const PluginInfo* s_pMade = nullptr;

const std::string& NoText() noexcept
{
    static const std::string s_strNone;
    return s_strNone;
}

const std::filesystem::path& NoFile() noexcept
{
    static const std::filesystem::path s_none;
    return s_none;
}

} // namespace

struct PluginInfo::Content
{
    Content(const char* name, const char* version, const std::filesystem::path& file)
        : m_strName(name), m_strVersion(version), m_file(file)
    {
    }

    std::atomic<std::size_t> m_uHolders{1};
    const std::string m_strName;
    const std::string m_strVersion;
    const std::filesystem::path m_file;
};

PluginInfo::PluginInfo() noexcept = default;

PluginInfo::PluginInfo(const char* name, const char* version, const std::filesystem::path& file)
    : m_pContent(new Content(name, version, file))
{
}

PluginInfo::PluginInfo(const PluginInfo& other) noexcept : m_pContent(other.m_pContent)
{
    if (m_pContent != nullptr)
        m_pContent->m_uHolders.fetch_add(1, std::memory_order_relaxed);
}

PluginInfo& PluginInfo::operator=(const PluginInfo& other) noexcept
{
    PluginInfo copy(other);
    std::swap(m_pContent, copy.m_pContent);
    return *this;
}

PluginInfo::~PluginInfo()
{
    if (m_pContent != nullptr && m_pContent->m_uHolders.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete m_pContent;
}

const std::string& PluginInfo::Name() const noexcept
{
    return m_pContent != nullptr ? m_pContent->m_strName : NoText();
}

const std::string& PluginInfo::Version() const noexcept
{
    return m_pContent != nullptr ? m_pContent->m_strVersion : NoText();
}

const std::filesystem::path& PluginInfo::File() const noexcept
{
    return m_pContent != nullptr ? m_pContent->m_file : NoFile();
}

// One pointer beside that to the virtual functions, now and later: interfaces are laid out after it.
static_assert(sizeof(Plugin) == 2 * sizeof(void*));

Plugin::Plugin() noexcept : m_info(s_pMade != nullptr ? *s_pMade : PluginInfo()) {}

Plugin::~Plugin() = default;

const PluginInfo& Plugin::Info() const noexcept
{
    return m_info;
}

const PluginInfo* Plugin::Exchange(const PluginInfo* info) noexcept
{
    return std::exchange(s_pMade, info);
}

} // namespace Toolkit
