#include "Text.h"

#include <iostream>

namespace Desk
{

Text ToText(unsigned long long number)
{
    return Text(std::to_wstring(number));
}

Text Join(const Text& folder, const Text& name)
{
    Text path;
    Toolkit::PathManager::AppendPath(path, folder, name);
    return path;
}

void PrintLine(const Text& line)
{
    std::cout << Toolkit::UTF8::ToUTF8(line) << std::endl;
}

} // namespace Desk
