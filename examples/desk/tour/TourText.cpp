// SPDX-License-Identifier: MIT
#include "tour/TourText.h"

#include <algorithm>

#include "Text.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/WholeFile.h"

namespace Desk
{

using namespace Toolkit;

TString<wchar_t> Wide(const std::string& text)
{
    return UTF8::ToUNICODE(TString<char>(text));
}

std::string Narrow(const TString<wchar_t>& text)
{
    return UTF8::ToUTF8(text);
}

std::vector<std::string> LinesOf(const std::filesystem::path& file)
{
    return Lines(ReadFile(file).value_or(std::string()));
}

bool BeginsWith(const std::string& text, const std::string& beginning)
{
    return text.rfind(beginning, 0) == 0;
}

std::size_t FindMessage(const std::vector<std::string>& lines, const std::string& message)
{
    const auto ends = [&message](const std::string& line)
    { return line.size() >= message.size() && line.substr(line.size() - message.size()) == message; };
    return static_cast<std::size_t>(std::find_if(lines.begin(), lines.end(), ends) - lines.begin());
}

} // namespace Desk
