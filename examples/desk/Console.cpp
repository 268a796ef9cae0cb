// SPDX-License-Identifier: MIT
#include "Console.h"

#include <iostream>

#include "Application.h"
#include "Text.h"

namespace Desk
{

int Console::Run(const Options& options, const Toolkit::Folders& folders)
{
    Application application(options, folders, *this);
    if (const std::optional<Application::Answer> answer = application.Begin())
    {
        std::cout << answer->Text();
        return answer->Code();
    }
    m_loop.Run();
    application.End();
    return 0;
}

void Console::Tell(const std::string& line)
{
    PrintLine(line);
}

void Console::Show(const Document& document)
{
    m_strShown = document.title;
    if (document.file.empty())
        PrintLine(document.title + '\n' + document.text);
    else
        PrintLine("opened " + document.file.filename().string() + ": \"" + document.title + "\", " +
                  std::to_string(document.hidden) + " places hidden");
}

std::string Console::Describe() const
{
    return "shown: " + m_strShown + '\n';
}

} // namespace Desk
