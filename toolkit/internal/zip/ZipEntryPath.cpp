// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipEntryPath.h"

#include <cstddef>

namespace Toolkit
{

const char* WrongInZipPath(std::string_view name)
{
    if (name.empty())
        return "it has no name";
    if (name.find('\0') != name.npos)
        return "its name holds a NUL";
    if (name.find('\\') != name.npos)
        return "its name holds a backslash";
    if (name.front() == '/' || (name.size() > 1 && name[1] == ':'))
        return "its name is absolute";
    for (const std::string_view part : PartsOfZipPath(name))
        if (part.empty() || part == "." || part == "..")
            return "its name leads elsewhere";
    return nullptr;
}

std::vector<std::string_view> PartsOfZipPath(std::string_view name)
{
    std::vector<std::string_view> parts;
    if (!name.empty() && name.back() == '/')
        name.remove_suffix(1);
    for (std::size_t begin = 0; begin <= name.size();)
    {
        const std::size_t slash = name.find('/', begin);
        const std::size_t end = slash == name.npos ? name.size() : slash;
        parts.push_back(name.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

} // namespace Toolkit
