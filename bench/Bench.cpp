// SPDX-License-Identifier: MIT
#include "bench/Bench.h"

#include <algorithm>
#include <cstdlib>

#include <unistd.h>

namespace ToolkitBench
{

const std::filesystem::path& Folder()
{
    static const struct Temporary
    {
        Temporary() : path(std::filesystem::temp_directory_path() / ("bench-" + std::to_string(getpid())))
        {
            std::filesystem::create_directories(path);
        }
        ~Temporary()
        {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
        std::filesystem::path path;
    } folder;
    return folder.path;
}

std::string Words(std::size_t length)
{
    static const char s_strWords[] = "the quick brown fox jumps over the lazy dog and runs on ";
    std::string text;
    while (text.size() < length)
        text += s_strWords;
    text.resize(length);
    return text;
}

std::wstring WideWords(std::size_t length)
{
    const std::string words = Words(length);
    return std::wstring(words.begin(), words.end());
}

bool IsBrief()
{
    return std::getenv("BENCH_BRIEF") != nullptr;
}

std::size_t Scaled(std::size_t count)
{
    return !IsBrief() ? count : std::max<std::size_t>(count / 1000, 16);
}

} // namespace ToolkitBench
