#include "bench/Bench.h"

#include <cstdlib>

#include <unistd.h>

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* memory, std::size_t size);

namespace
{
thread_local std::size_t t_uAllocations = 0;
}

// In front of the C library's, so that every library's requests are counted.
extern "C" void* malloc(std::size_t size) noexcept
{
    ++t_uAllocations;
    return __libc_malloc(size);
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    ++t_uAllocations;
    return __libc_calloc(count, size);
}

extern "C" void* realloc(void* memory, std::size_t size) noexcept
{
    ++t_uAllocations;
    return __libc_realloc(memory, size);
}

namespace ToolkitBench
{

std::size_t Allocations()
{
    return t_uAllocations;
}

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

} // namespace ToolkitBench

int main(int count, char** arguments)
{
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments))
        return 2;
    ToolkitBench::Folder();
    ToolkitBench::Register();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
