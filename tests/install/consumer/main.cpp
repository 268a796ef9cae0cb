// SPDX-License-Identifier: MIT
#include <toolkit/Toolkit.h>

#include <iostream>

using namespace Toolkit;

namespace
{
// Derives from a class of wxWidgets, whose symbols the program then needs itself.
class Counter : public Thread
{
public:
    ~Counter() override { StopAndWait(); }

    int count = 0;

protected:
    ExitCode DoWork() override
    {
        count = 3;
        return nullptr;
    }
};

int CountOnAThread()
{
    Counter counter;
    counter.Run();
    counter.Wait();
    return counter.count;
}

bool CatchesTheException()
{
    try
    {
        return RegExp(TString<char>("("), RegExpOptions::Default).IsMatch(TString<char>("("));
    }
    catch (const smart_ptr<RegExpException>&)
    {
        return true;
    }
}
} // namespace

int main()
{
    const ToolkitSession session;
    std::cout << "version " << UTF8::ToUTF8((*Version::s_pInstance)->ToString()) << '\n';

    const RegExp expression(TString<char>("(?<word>[a-z]+)"), RegExpOptions::Default);
    const smart_ptr<MatchResult> match = expression.Match(TString<char>("... toolkit ..."));
    std::cout << "found " << match->Find("word")->GetValue() << '\n';
    std::cout << "caught " << CatchesTheException() << '\n';
    std::cout << "counted " << CountOnAThread() << '\n';
}
