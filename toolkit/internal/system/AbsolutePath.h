// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_ABSOLUTEPATH_H
#define TOOLKIT_INTERNAL_SYSTEM_ABSOLUTEPATH_H

#include <filesystem>
#include <system_error>

namespace Toolkit
{

// The path from the root on, which leads to the same place when the process works in another folder by then.
// An empty path, and one whose folder the system cannot tell, stays as it is.
inline std::filesystem::path AbsolutePath(const std::filesystem::path& path)
{
    std::error_code failed;
    std::filesystem::path absolute = std::filesystem::absolute(path, failed);
    if (failed || path.empty())
        return path;
    return absolute;
}

} // namespace Toolkit

#endif
