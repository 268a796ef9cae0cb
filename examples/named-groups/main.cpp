// SPDX-License-Identifier: MIT
// Finds dates in a text, takes them apart by the names of the groups, and hides the year.

#include <toolkit/Toolkit.h>

#include <iostream>

using namespace Toolkit;

int main()
{
    const ToolkitSession session;
    const TString<char> text = "The water tank was paid on 2025-12-18, the tool shed is locked.";

    try
    {
        const RegExp date(TString<char>("(?<year>\\d{4})-(?<month>\\d\\d)-(?<day>\\d\\d)"),
                          RegExpOptions::Default);
        const smart_ptr<MatchResult> match = date.Match(text);
        if (match->GetCount() == 0)
        {
            std::cout << "no date\n";
            return 1;
        }

        std::cout << "found: " << (*match)[0]->GetValue() << '\n';
        // The names come in alphabetical order, each with the number of its group.
        for (const auto& [name, number] : match->GetNames())
            std::cout << "  " << name << " (group " << number << "): " << match->Find(name)->GetValue()
                      << '\n';

        RegExp::ReplacementMappedStrings replacements = {{"year", "****"}, {"month", "**"}, {"day", "**"}};
        std::cout << date.Replace(replacements, text) << '\n';

        // A pattern is compiled when it is used; what is wrong with it is thrown then.
        RegExp(TString<char>("(?<year>"), RegExpOptions::Default).IsMatch(text);
    }
    catch (const smart_ptr<RegExpException>& exception)
    {
        std::cout << "wrong pattern: " << exception->GetMessage() << '\n';
    }
}
