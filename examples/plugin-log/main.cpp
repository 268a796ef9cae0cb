// SPDX-License-Identifier: MIT
// A host and a plug-in that write to one log: plugin-log <plug-in> <name of the log>

#include <toolkit/Toolkit.h>

#include <iostream>

using namespace Toolkit;

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
    {
        std::cerr << "usage: plugin-log <plug-in> <name of the log>\n";
        return 2;
    }

    const ToolkitSession session;
    // The file is <name>.vxlog in the temporary folder. The session's end writes out what is queued.
    const TString<wchar_t> name = UTF8::ToUNICODE(TString<char>(arguments[2]));
    ILogger::SetLogger(new FileLogger(LogSeverity::Info, name, 1024 * 1024));
    TOOLKIT_LOG(LogSeverity::Info) << L"the host is up";

    DynamicLibrary library(UTF8::ToUNICODE(TString<char>(arguments[1])));
    void* const load = library.GetSymbol(L"LoadPlugin");
    if (load == nullptr)
    {
        TOOLKIT_LOG(LogSeverity::Error) << L"no plug-in: " << library.GetPath();
        std::cerr << "no plug-in: " << arguments[1] << '\n';
        return 1;
    }

    // The plug-in registers its module, which is brought up at once and goes down with the session. It must
    // then still be in memory: the library is given up, not unloaded.
    reinterpret_cast<void (*)()>(load)();
    library.Detach();
    TOOLKIT_LOG(LogSeverity::Info) << L"the plug-in is in";
}
