// SPDX-License-Identifier: MIT
// Reads a settings file: settings <file>

#include <toolkit/Toolkit.h>

#include <iostream>
#include <vector>

using namespace Toolkit;

int main(int argumentCount, char** arguments)
{
    const ToolkitSession session;
    if (argumentCount != 2)
    {
        std::cerr << "usage: settings <file>\n";
        return 2;
    }

    const IniFile settings(UTF8::ToUNICODE(TString<char>(arguments[1])));
    if (!settings.IsLoaded())
    {
        std::cerr << "cannot be read: " << arguments[1] << '\n';
        return 1;
    }

    // Every question comes with the answer for a key that is missing.
    const TString<wchar_t> untitled = L"untitled";
    std::cout << "title: " << UTF8::ToUTF8(settings.GetValue(L"window", L"title", untitled)) << '\n'
              << "width: " << settings.GetUint32(L"window", L"width", 800) << '\n'
              << "height: " << settings.GetUint32(L"window", L"height", 600) << '\n'
              << "maximised: " << settings.GetBool(L"window", L"maximised", false) << '\n';

    std::vector<TString<wchar_t>> keys;
    settings.GetKeyList(L"recent", keys);
    for (const TString<wchar_t>& key : keys)
        std::cout << "recent " << UTF8::ToUTF8(key) << ": "
                  << UTF8::ToUTF8(settings.GetValue(L"recent", key, TString<wchar_t>::Empty())) << '\n';
}
