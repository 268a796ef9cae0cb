// SPDX-License-Identifier: MIT
// Writes what it was started with into the file that its first argument names: its argument vector, the
// descriptors that it has inherited beyond the standard ones, and the variable TOOLKIT_TEST, a line each.
//   WriteArguments <file> [<argument>...]

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>

int main(int argc, char** argv)
{
    if (argc < 2)
        return argc;
    int inherited = 0;
    for (int descriptor = 3; descriptor < 1024; ++descriptor)
        inherited += fcntl(descriptor, F_GETFD) != -1 ? 1 : 0;
    std::FILE* const file = std::fopen(argv[1], "w");
    if (file == nullptr)
        return 1;
    for (int i = 0; i < argc; ++i)
        std::fprintf(file, "[%s]\n", argv[i]);
    const char* const variable = std::getenv("TOOLKIT_TEST");
    std::fprintf(file, "%d\n%s\n", inherited, variable != nullptr ? variable : "");
    return std::fclose(file);
}
