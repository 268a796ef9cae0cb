// SPDX-License-Identifier: MIT
// Finds the dates in a text: pattern <text>

#include <iostream>
#include <string>

#include <toolkit/regExp/Pattern.h>

using namespace Toolkit;

int main(int argc, char** argv)
{
    const std::string text =
        argc == 2 ? argv[1] : "The tank was paid on 2025-12-18, the shed is locked since 2026-01-02.";
    const Result<Pattern> date = Pattern::Compile(R"((?<year>\d{4})-(?<month>\d\d)-(?<day>\d\d))");
    if (!date)
    {
        std::cerr << date.error().Message() << '\n';
        return 1;
    }
    for (const Match& each : date->All(text))
        std::cout << each["day"] << '.' << each["month"] << '.' << each["year"] << " at byte "
                  << each.Position() << '\n';
    const Result<std::string> hidden = date->Replace(text, "****-**-**");
    std::cout << *hidden << '\n';
    const Result<Pattern> broken = Pattern::Compile("(?<year>");
    std::cout << broken.error().Message() << '\n';
}
