// desk: an application that stands on the toolkit.
//   desk -data FOLDER [-log NAME]     plays the tour over the files in FOLDER
//   desk -child FILE -text TEXT       what the tour starts as a child process: writes TEXT to FILE

#include <clocale>
#include <cstdio>

#include "Tour.h"

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
    const Option data(new Toolkit::CmdLineOption(L"data", false));
    const Option log(new Toolkit::CmdLineOption(L"log", false));
    const Option child(new Toolkit::CmdLineOption(L"child", false));
    const Option text(new Toolkit::CmdLineOption(L"text", false));

    Toolkit::CmdLineParser parser(argc, const_cast<const char**>(argv));
    for (const Option& option : {data, log, child, text})
        parser.AddOption(option);
    parser.Parse();

    if (child->IsFound())
        return WriteText(child->GetValue(), text->GetValue());
    if (!data->IsFound())
    {
        std::fputs("usage: desk -data FOLDER [-log NAME]\n", stderr);
        return 2;
    }
    return Desk::Tour(data->GetValue(), log->IsFound() ? log->GetValue() : Text(L"desk")).Play() ? 0 : 1;
}
