// SPDX-License-Identifier: MIT
// Prints, a line each, what the path manager knows in this process: "name=value" as UTF-8.
//   ShowPaths [started] [named] [deleted] [user id]
// started: with wxWidgets started; named: as an application of that name, which needs it started;
// deleted: after its own executable was deleted; user id: as that user.

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include <unistd.h>
#include <wx/app.h>
#include <wx/init.h>

#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::PathManager;
using Toolkit::TString;

namespace
{

void Show(const char* name, const TString<wchar_t>& value)
{
    std::cout << name << "=" << Toolkit::UTF8::ToUTF8(value) << "\n";
}

void ShowAll(const PathManager& paths)
{
    Show("name", paths.GetApplicationName());
    Show("application", paths.GetApplicationPath());
    Show("configuration", paths.GetConfigurationPath());
    Show("data", paths.GetApplicationDataPath());
    Show("resources", paths.GetApplicationRessourcesPath());
    Show("appearances", paths.GetAppearancesPath());
    Show("plugins", paths.GetPluginsPath());
    Show("documents", paths.GetDocumentsPath());
    Show("unique", paths.GetUniqueInstanceName());
    std::cout << "exists=" << PathManager::DirExists(paths.GetApplicationDataPath()) << "\n";
}

} // namespace

int main(int argc, char** argv)
{
    bool start = false;
    bool hasName = false;
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "started") == 0)
            start = true;
        else if (std::strcmp(argv[i], "named") == 0)
            hasName = true;
        else if (std::strcmp(argv[i], "deleted") == 0)
            unlink(argv[0]);
        else if (std::isdigit(argv[i][0]) != 0 && setuid(static_cast<uid_t>(std::atoi(argv[i]))) != 0)
            return 1;
    if (start && !wxInitialize())
        return 1;
    if (hasName)
        wxAppConsole::GetInstance()->SetAppName("named");
    ShowAll(PathManager());
    if (start)
        wxUninitialize();
    return 0;
}
