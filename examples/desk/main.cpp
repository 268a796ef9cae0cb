// SPDX-License-Identifier: MIT
// desk: an application that stands on the toolkit. The first start runs until it is told to quit; a later one
// hands its command to the first.
//   desk [-data FOLDER] [-open FILE] [-log NAME] [-paused]     runs over the bundle in FOLDER
//   desk -send COMMAND                                         hands over a command (see Application.h)
//   desk -tour -data FOLDER [-log NAME]                        plays the tour over the bundle in FOLDER
//   desk -child FILE -text TEXT                                what the tour starts as a child process

#include <clocale>
#include <cstdio>

#include "Console.h"
#include "Tour.h"
#include "toolkit/app/CmdLineOption.h"
#include "toolkit/app/CmdLineParser.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/files/FFile.h"

namespace
{

using Desk::Text;

int WriteText(const Text& path, const Text& text)
{
    Toolkit::FFile file;
    if (!file.Open(path, L"wb"))
        return 1;
    file.Write(text + L"\n");
    return file.Close() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    // The texts for AM and PM are the C library's.
    std::setlocale(LC_TIME, "");

    using Option = Toolkit::smart_ptr<Toolkit::CmdLineOption>;
    const Option tour(new Toolkit::CmdLineOption(L"tour", false));
    const Option child(new Toolkit::CmdLineOption(L"child", false));
    const Option text(new Toolkit::CmdLineOption(L"text", false));

    Toolkit::CmdLineParser parser(argc, const_cast<const char**>(argv));
    for (const Option& option : {tour, child, text})
        parser.AddOption(option);
    parser.Parse();

    if (child->IsFound())
        return WriteText(child->GetValue(), text->GetValue());
    const Desk::Options options(argc, argv);
    if (!tour->IsFound())
        return Desk::Console().Run(options);
    if (!options.m_strData.empty())
        return Desk::Tour(options.m_strData, options.m_strLog).Play() ? 0 : 1;
    std::fputs("usage: desk -tour -data FOLDER [-log NAME]\n", stderr);
    return 2;
}
