// SPDX-License-Identifier: MIT
#include "Console.h"

#include "Application.h"
#include "toolkit/threading/Mutex.h"

namespace Desk
{

int Console::Run(const Options& options)
{
    Application application(options, *this);
    switch (application.Begin())
    {
    case Application::Start::HandedOver:
        PrintLine(!options.m_strSend.empty() ? L"handed to the first desk: " + options.m_strSend
                  : !options.m_strOpen.empty()
                      ? L"handed to the first desk: open " + FileName(options.m_strOpen)
                      : Text(L"desk runs already"));
        return 0;
    case Application::Start::Failed:
        PrintLine(L"no desk takes the command");
        return 1;
    case Application::Start::First:
        break;
    }
    const bool ran = m_pump.Run(Toolkit::Mutex::s_uInfinite);
    application.End();
    return ran ? 0 : 1;
}

void Console::Tell(const Text& line)
{
    PrintLine(line);
}

void Console::Show(const Document& document)
{
    m_strShown = document.m_strTitle;
    PrintLine(L"opened " + FileName(document.m_strPath) + L": \"" + document.m_strTitle + L"\", " +
              ToText(document.m_uHidden) + L" places hidden");
}

void Console::Describe(std::vector<Text>& lines) const
{
    lines.push_back(L"shown: " + m_strShown);
}

void Console::Leave()
{
    m_pump.Stop();
}

} // namespace Desk
