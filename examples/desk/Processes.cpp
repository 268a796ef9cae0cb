// SPDX-License-Identifier: MIT
#include "Processes.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <functional>

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "toolkit/core/TString.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/Directory.h"
#include "toolkit/threading/Thread.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

const unsigned int s_uPatience = 60 * 1000;
const unsigned int s_uTryInterval = 20;

bool WaitUntil(const std::function<bool()>& condition)
{
    for (unsigned int waited = 0; !condition(); waited += s_uTryInterval)
    {
        if (waited > s_uPatience)
            return false;
        Thread::Sleep(s_uTryInterval);
    }
    return true;
}

// This process's environment with another home and temporary folder.
std::vector<std::string> EnvironmentIn(const std::string& folder)
{
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable)
        variables.emplace_back(*variable);
    const auto isReplaced = [](const std::string& variable)
    { return variable.rfind("HOME=", 0) == 0 || variable.rfind("TMPDIR=", 0) == 0; };
    variables.erase(std::remove_if(variables.begin(), variables.end(), isReplaced), variables.end());
    variables.push_back("HOME=" + folder);
    variables.push_back("TMPDIR=" + folder);
    return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// True when a process has ended; its exit code is 0 or makes `good` false.
bool Reap(pid_t process, int options, bool& good)
{
    int status = 0;
    pid_t reaped = 0;
    do
        reaped = waitpid(process, &status, options);
    while (reaped == -1 && errno == EINTR);
    if (reaped > 0)
        good = good && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return reaped > 0;
}

} // namespace

Processes::Processes(const Text& executable, const Text& folder)
    : m_strExecutable(executable), m_strFolder(folder)
{
    Directory::Create(folder);
    // What a process leaves behind when it restarts itself comes here.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

Processes::~Processes()
{
    // With children left, at least one of the groups is still theirs.
    bool good = true;
    while (Reap(-1, WNOHANG, good))
    {
    }
    if (waitpid(-1, nullptr, WNOHANG) == 0)
        for (const pid_t group : m_groups)
            kill(-group, SIGKILL);
    while (Reap(-1, 0, good))
    {
    }
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

bool Processes::Start(const Text& name, const std::vector<Text>& arguments)
{
    return Spawn(name, arguments) > 0;
}

bool Processes::Run(const Text& name, const std::vector<Text>& arguments)
{
    const pid_t process = Spawn(name, arguments);
    bool good = process > 0;
    return good && WaitUntil([process, &good] { return Reap(process, WNOHANG, good); }) && good;
}

std::vector<Text> Processes::GetLines(const Text& name) const
{
    std::vector<Text> lines;
    ReadLines(Join(m_strFolder, name), lines);
    return lines;
}

bool Processes::WaitForLines(const Text& name, const Text& beginning, int count) const
{
    const auto begins = [&beginning](const Text& line) { return line.rfind(beginning, 0) == 0; };
    return WaitUntil(
        [this, &name, &begins, count]
        {
            const std::vector<Text> lines = GetLines(name);
            return std::count_if(lines.begin(), lines.end(), begins) >= count;
        });
}

bool Processes::WaitForEnd(unsigned int count)
{
    bool good = true;
    for (; count > 0 && good; --count)
        good = WaitUntil([&good] { return Reap(-1, WNOHANG, good); }) && good;
    return good;
}

pid_t Processes::Spawn(const Text& name, const std::vector<Text>& arguments)
{
    const TString<char> executable = UTF8::ToUTF8(m_strExecutable);
    const TString<char> output = UTF8::ToUTF8(Join(m_strFolder, name));
    std::vector<std::string> texts = {executable};
    for (const Text& argument : arguments)
        texts.push_back(UTF8::ToUTF8(argument));
    std::vector<std::string> variables = EnvironmentIn(UTF8::ToUTF8(m_strFolder));

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                     0600);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    pid_t process = -1;
    const int error = posix_spawn(&process, executable.c_str(), &actions, &attributes, Pointers(texts).data(),
                                  Pointers(variables).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        return -1;
    m_groups.push_back(process);
    return process;
}

} // namespace Desk
