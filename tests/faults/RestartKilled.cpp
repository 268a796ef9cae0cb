// SPDX-License-Identifier: MIT
// A host that restarts itself once and is killed meanwhile, before the call of the system of that number; 0
// lets it be. The new process writes what it saw into a file, and that at once.
//   RestartKilled <number for the old process> <number for the new process> <file>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/faults/FailingSystem.h"
#include "toolkit/Toolkit.h"

using Toolkit::RestartManagment;
using Toolkit::TString;
using Toolkit::UTF8;
using ToolkitTest::FailingSystem;

namespace
{

void KillAtCall(const char* number)
{
    FailingSystem::Set(std::strtoul(number, nullptr, 10), FailingSystem::Killed, false);
    FailingSystem::Arm();
}

void TakeOver(const std::string& file)
{
    RestartManagment::WaitingForPreviousProcessFinish();
    const bool locked = RestartManagment::IsLocked();
    RestartManagment::RemoveLock();
    const bool stillLocked = RestartManagment::IsLocked();
    RestartManagment::RestartProcessFinish();
    FailingSystem::Disarm();
    std::ofstream(file + ".part") << (locked ? "locked" : "not locked")
                                  << (stillLocked ? ", still locked" : "");
    std::filesystem::rename(file + ".part", file);
}

void Restart(int argc, char** argv)
{
    std::vector<TString<wchar_t>> arguments;
    std::vector<const wchar_t*> vector;
    for (int i = 0; i < argc; ++i)
        arguments.push_back(UTF8::ToUNICODE(TString<char>(argv[i])));
    for (const TString<wchar_t>& argument : arguments)
        vector.push_back(argument.c_str());
    KillAtCall(argv[1]);
    RestartManagment::ActivateRestartProcess(argc, vector.data());
    FailingSystem::Disarm();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4)
        return 1;
    RestartManagment::s_strExecutableFilename = UTF8::ToUNICODE(TString<char>(argv[0]));
    const Toolkit::ToolkitSession session;
    if (std::strcmp(argv[argc - 1], "-restart") != 0)
    {
        Restart(argc, argv);
        return 0;
    }
    KillAtCall(argv[2]);
    TakeOver(argv[3]);
    return 0;
}
