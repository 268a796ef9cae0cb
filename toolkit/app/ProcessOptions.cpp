// SPDX-License-Identifier: MIT
#include "toolkit/app/ProcessOptions.h"

#include <utility>

#include "toolkit/internal/process/ChildSettings.h"
#include "toolkit/internal/system/MovedFrom.h"

namespace Toolkit
{

ProcessOptions::ProcessOptions() : m_pSettings(std::make_unique<ChildSettings>()) {}

ProcessOptions::ProcessOptions(const ProcessOptions& other)
    : m_pSettings(MovedFrom::CopyOf(other.m_pSettings))
{
}

ProcessOptions::ProcessOptions(ProcessOptions&& other) noexcept = default;

ProcessOptions& ProcessOptions::operator=(ProcessOptions other) noexcept
{
    m_pSettings.swap(other.m_pSettings);
    return *this;
}

ProcessOptions::~ProcessOptions() = default;

ProcessOptions& ProcessOptions::Input(std::string bytes)
{
    MovedFrom::Renewed(m_pSettings).m_strInput = std::move(bytes);
    return *this;
}

ProcessOptions& ProcessOptions::Folder(std::filesystem::path folder)
{
    MovedFrom::Renewed(m_pSettings).m_folder = std::move(folder);
    return *this;
}

ProcessOptions& ProcessOptions::Environment(std::string name, std::string value)
{
    MovedFrom::Renewed(m_pSettings).m_environment.insert_or_assign(std::move(name), std::move(value));
    return *this;
}

ProcessOptions& ProcessOptions::ClearEnvironment()
{
    MovedFrom::Renewed(m_pSettings).m_bClearEnvironment = true;
    return *this;
}

ProcessOptions& ProcessOptions::MergeErrors()
{
    MovedFrom::Renewed(m_pSettings).m_bMergeErrors = true;
    return *this;
}

ProcessOptions& ProcessOptions::Timeout(std::chrono::nanoseconds time)
{
    MovedFrom::Renewed(m_pSettings).m_timeout = time;
    return *this;
}

ProcessOptions& ProcessOptions::MaxOutput(std::uint64_t bytes)
{
    MovedFrom::Renewed(m_pSettings).m_uMaxOutput = bytes;
    return *this;
}

} // namespace Toolkit
