// SPDX-License-Identifier: MIT
#include "toolkit/internal/zones/ZoneName.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace Toolkit
{

namespace
{

using View = std::string_view;

const char* const c_strSystemsZone = "/etc/localtime";
const View s_strFolder = "/zoneinfo/";
// The database's own names have less than 40.
const std::size_t s_uMostName = 100;

bool IsOfName(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '+' || c == '/';
}

// Takes away the folder of the database, and that of its zones with or without leap seconds.
View WithoutFolders(View path)
{
    const std::size_t folder = path.find(s_strFolder);
    if (folder != View::npos)
        path.remove_prefix(folder + s_strFolder.size());
    for (const View part : {View("posix/"), View("right/")})
        if (path.substr(0, part.size()) == part)
            path.remove_prefix(part.size());
    return path;
}

std::string NameOf(View zone)
{
    zone = WithoutFolders(zone);
    if (zone.empty() || zone.size() > s_uMostName || zone.front() == '/' ||
        !std::all_of(zone.begin(), zone.end(), IsOfName))
        return std::string();
    return std::string(zone);
}

} // namespace

std::string ZoneName::Local()
{
    if (const char* const variable = std::getenv("TZ"))
    {
        const View zone = *variable == ':' ? variable + 1 : variable;
        return zone.empty() ? "UTC" : NameOf(zone);
    }
    char path[4096];
    const ssize_t length = readlink(c_strSystemsZone, path, sizeof(path));
    return length < 0 ? std::string() : NameOf(View(path, static_cast<std::size_t>(length)));
}

} // namespace Toolkit
