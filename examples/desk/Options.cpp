// SPDX-License-Identifier: MIT
#include "Options.h"

#include "toolkit/app/CmdLineOption.h"
#include "toolkit/app/CmdLineParser.h"
#include "toolkit/core/smart_ptr.h"

namespace Desk
{

using namespace Toolkit;

Options::Options(int argc, char** argv)
{
    using Option = smart_ptr<CmdLineOption>;
    const Option data(new CmdLineOption(L"data", false));
    const Option log(new CmdLineOption(L"log", false));
    const Option open(new CmdLineOption(L"open", false));
    const Option send(new CmdLineOption(L"send", false));
    const Option paused(new CmdLineOption(L"paused", false));
    const Option restart(new CmdLineOption(L"restart", false));

    CmdLineParser parser(argc, const_cast<const char**>(argv));
    for (const Option& option : {data, log, open, send, paused, restart})
        parser.AddOption(option);
    parser.Parse();

    m_arguments = parser.GetArguments();
    m_strData = data->GetValue();
    m_strLog = log->IsFound() ? log->GetValue() : Text(L"desk");
    // The first desk may run in another folder than this one.
    m_strOpen = open->GetValue().empty() ? Text() : Absolute(open->GetValue());
    m_strSend = send->GetValue();
    m_bPaused = paused->IsFound();
    m_bRestart = restart->IsFound();
}

} // namespace Desk
