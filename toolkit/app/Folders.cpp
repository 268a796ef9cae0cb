// SPDX-License-Identifier: MIT
#include "toolkit/app/Folders.h"

#include <algorithm>
#include <string>
#include <utility>

#include "toolkit/internal/folders/StandardFolders.h"
#include "toolkit/internal/system/BaseDirectories.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uLongestName = 255;

bool IsControl(char character)
{
    const unsigned char value = static_cast<unsigned char>(character);
    return value < 0x20 || value == 0x7F;
}

// What is wrong with a name; null when nothing is.
const char* FindFault(std::string_view name)
{
    if (name.empty())
        return "it is empty";
    if (name == "." || name == "..")
        return "it stands for another folder";
    if (name.find('/') != name.npos)
        return "it has a slash";
    if (std::any_of(name.begin(), name.end(), IsControl))
        return "it has a control character";
    return name.size() > s_uLongestName ? "it is longer than 255 bytes" : nullptr;
}

Failure BadName(std::string_view name, const char* fault)
{
    // A message is one line.
    std::string shown(name.substr(0, s_uLongestName));
    std::replace_if(shown.begin(), shown.end(), IsControl, '?');
    return Failure(std::make_error_code(std::errc::invalid_argument),
                   "cannot name a folder \"" + shown + "\": " + fault);
}

} // namespace

struct Folders::Paths
{
    std::filesystem::path m_config;
    std::filesystem::path m_data;
    std::filesystem::path m_state;
    std::filesystem::path m_cache;
    std::filesystem::path m_runtime;
};

Result<Folders> Folders::Of(std::string_view name)
{
    if (const char* const fault = FindFault(name))
        return BadName(name, fault);
    const auto paths = std::make_shared<Paths>();
    const struct
    {
        const char* variable;
        const char* inHome;
        std::filesystem::path& path;
    } rows[] = {
        {"XDG_CONFIG_HOME", ".config", paths->m_config},
        {"XDG_DATA_HOME", ".local/share", paths->m_data},
        {"XDG_STATE_HOME", ".local/state", paths->m_state},
        {"XDG_CACHE_HOME", ".cache", paths->m_cache},
    };
    for (const auto& row : rows)
    {
        const Result<std::filesystem::path> base = BaseDirectories::Of(row.variable, row.inHome);
        if (!base)
            return base.error();
        row.path = *base / name;
    }
    Result<std::filesystem::path> runtime = BaseDirectories::RuntimeOf(name);
    if (!runtime)
        return runtime.error();
    paths->m_runtime = *std::move(runtime);
    return Folders(paths);
}

Folders::Folders(std::shared_ptr<const Paths> paths) noexcept : m_pPaths(std::move(paths)) {}

Folders::Folders(const Folders& other) noexcept = default;
Folders& Folders::operator=(const Folders& other) noexcept = default;
Folders::~Folders() = default;

std::filesystem::path Folders::Config() const
{
    return m_pPaths->m_config;
}

std::filesystem::path Folders::Data() const
{
    return m_pPaths->m_data;
}

std::filesystem::path Folders::State() const
{
    return m_pPaths->m_state;
}

std::filesystem::path Folders::Cache() const
{
    return m_pPaths->m_cache;
}

std::filesystem::path Folders::Runtime() const
{
    return m_pPaths->m_runtime;
}

std::filesystem::path Folders::Executable()
{
    return StandardFolders::ExecutableBytes();
}

} // namespace Toolkit
