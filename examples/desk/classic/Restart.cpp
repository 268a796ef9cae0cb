// SPDX-License-Identifier: MIT
#include "classic/Restart.h"

#include <string>
#include <vector>

#include "Text.h"
#include "toolkit/app/CmdLineOption.h"
#include "toolkit/app/CmdLineParser.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/core/smart_ptr.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

int StartAgain(const std::vector<TString<wchar_t>>& texts)
{
    std::vector<const wchar_t*> arguments;
    for (const TString<wchar_t>& text : texts)
        arguments.push_back(text.c_str());
    PrintLine("ends, and starts again");
    return RestartManagment::ActivateRestartProcess(static_cast<int>(arguments.size()), arguments.data()) ? 0
                                                                                                          : 1;
}

int TakeOver()
{
    RestartManagment::WaitingForPreviousProcessFinish();
    const bool locked = RestartManagment::IsLocked();
    RestartManagment::RemoveLock();
    const bool removed = !RestartManagment::IsLocked();
    RestartManagment::RestartProcessFinish();
    PrintLine(!locked   ? "started as a restart, but there is no lock"
              : removed ? "restarted: the lock was there and is removed"
                        : "restarted: the lock cannot be removed");
    return locked && removed ? 0 : 1;
}

} // namespace

int RestartOnce(int argc, char** argv)
{
    const ToolkitSession session;
    const smart_ptr<CmdLineOption> restart(new CmdLineOption(L"restart", false));
    CmdLineParser parser(argc, const_cast<const char**>(argv));
    parser.AddOption(restart);
    parser.Parse();
    RestartManagment::s_strExecutableFilename = (*PathManager::s_pInstance)->GetApplicationName();
    return restart->IsFound() ? TakeOver() : StartAgain(parser.GetArguments());
}

} // namespace Desk
