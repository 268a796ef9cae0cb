// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDSETTINGS_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDSETTINGS_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace Toolkit
{

// What is said of a child beside its arguments.
struct ChildSettings
{
    std::string m_strInput;
    std::optional<std::filesystem::path> m_folder;
    std::map<std::string, std::string, std::less<>> m_environment;
    bool m_bClearEnvironment = false;
    bool m_bMergeErrors = false;
    std::optional<std::chrono::nanoseconds> m_timeout;
    // Bytes of output, and of errors, that are kept.
    std::uint64_t m_uMaxOutput = std::uint64_t{1} << 30;
};

} // namespace Toolkit

#endif
