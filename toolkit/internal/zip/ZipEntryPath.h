// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPENTRYPATH_H
#define TOOLKIT_INTERNAL_ZIP_ZIPENTRYPATH_H

#include <string_view>
#include <vector>

namespace Toolkit
{

// What is wrong with a name that an archive gives one of its entries, for whoever makes a file of it: nothing
// (null), or why it is no relative path that stays in its folder on every system.
const char* WrongInZipPath(std::string_view name);

// The parts of such a name between its slashes; that of a folder ends with one.
std::vector<std::string_view> PartsOfZipPath(std::string_view name);

} // namespace Toolkit

#endif
