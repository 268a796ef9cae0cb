// SPDX-License-Identifier: MIT
#include "Text.h"

#include <filesystem>
#include <iostream>

#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/TextFile.h"

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

Text FileName(const Text& path)
{
    return Text(path.substr(path.rfind(L'/') + 1));
}

Text Absolute(const Text& path)
{
    std::error_code error;
    const std::filesystem::path absolute =
        std::filesystem::absolute(std::string(Toolkit::UTF8::ToUTF8(path)), error).lexically_normal();
    return error ? path : Toolkit::UTF8::ToUNICODE(Toolkit::TString<char>(absolute.string()));
}

bool ReadLines(const Text& path, std::vector<Text>& lines)
{
    Toolkit::TextFile file;
    if (!file.Open(path))
        return false;
    for (Text line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
        lines.push_back(line);
    return true;
}

void PrintLine(const Text& line)
{
    // In one piece, so that the lines of two threads do not mix.
    const Toolkit::TString<char> bytes = Toolkit::UTF8::ToUTF8(line) + "\n";
    std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
}

} // namespace Desk
