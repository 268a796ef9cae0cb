// SPDX-License-Identifier: MIT
// Writes its argument and becomes itself anew, with an inheritable descriptor and a blocked signal at hand;
// then it writes what it has become.
//   ReplaceItself first|wait

#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "toolkit/app/Process.h"

namespace
{

int InheritedDescriptors()
{
    int inherited = 0;
    for (int descriptor = 3; descriptor < 1024; ++descriptor)
        inherited += fcntl(descriptor, F_GETFD) != -1 ? 1 : 0;
    return inherited;
}

int Replace(const char* argument)
{
    std::printf("%s\n", argument);
    std::fflush(stdout);
    if (std::strcmp(argument, "wait") == 0)
        std::getchar();
    dup(STDIN_FILENO);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    const Toolkit::Result<void> never = Toolkit::Process::ReplaceSelf({"again", "a b", "", "\xFF"});
    std::printf("%s\n", never.error().Message().c_str());
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2)
        return Replace(argv[1]);
    for (int i = 0; i < argc; ++i)
        std::printf("[%s]\n", argv[i]);
    std::printf("%d %d descriptors\n", static_cast<int>(getpid()), InheritedDescriptors());
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    std::puts(sigismember(&blocked, SIGTERM) == 0 ? "nothing blocked" : "a signal is blocked");
    return 9;
}
