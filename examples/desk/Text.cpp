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

bool HasExtension(const Text& fileName, const Text& extension)
{
    return fileName.size() > extension.size() &&
           Text(fileName.substr(fileName.size() - extension.size())).compareNoCase(extension) == 0;
}

void PrintLine(const Text& line)
{
    std::cout << Toolkit::UTF8::ToUTF8(line) << std::endl;
}

} // namespace Desk
