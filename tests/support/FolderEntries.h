// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_FOLDERENTRIES_H
#define TOOLKIT_TESTS_SUPPORT_FOLDERENTRIES_H

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace ToolkitTest
{

// How many entries a folder has.
inline std::size_t CountEntries(const std::filesystem::path& folder)
{
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

// The paths from a folder of all that lies below it, in their order.
inline std::vector<std::string> NamesBelow(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        names.push_back(entry.path().lexically_relative(folder).string());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace ToolkitTest

#endif
