// SPDX-License-Identifier: MIT
#include "toolkit/internal/log/KeptName.h"

#include <cstddef>
#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace Toolkit
{

namespace
{

const std::size_t s_uMost = 10000;

std::mutex s_mutex;
std::set<std::string, std::less<>> s_names;

} // namespace

std::string_view KeptName(std::string_view name)
{
    const std::lock_guard<std::mutex> lock(s_mutex);
    auto kept = s_names.find(name);
    if (kept == s_names.end() && s_names.size() < s_uMost)
        kept = s_names.emplace(name).first;
    return kept == s_names.end() ? std::string_view() : std::string_view(*kept);
}

} // namespace Toolkit
