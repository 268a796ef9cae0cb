// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINMATCH_H
#define TOOLKIT_TESTS_REFERENCE_PLAINMATCH_H

#include <map>
#include <string>
#include <vector>

#include "tests/reference/BareRegex.h"
#include "tests/support/RegExpSupport.h"
#include "toolkit/encoding/UTF8.h"

namespace ToolkitTest
{

// What the bare library of regular expressions finds: the plain form of RegExp::Match. It knows nothing of
// limits, so patterns must limit their searches and call few groups.
class PlainMatch
{
public:
    PlainMatch(const std::string& pattern, const std::string& subject)
    {
        const BareRegex regex(pattern);
        isCompiled = regex.IsCompiled();
        if (!isCompiled)
        {
            message = " : " + regex.GetError() + Valid(pattern);
            return;
        }
        result = regex.Execute(subject, offsets);
        if (result < -1)
            message = ExecutionMessage(std::to_string(result));
        for (int i = 0; i < result; ++i)
            groups.push_back(Piece(subject, offsets[2 * i], offsets[2 * i + 1]));
        CollectNames(regex);
    }

    bool isCompiled = false;
    // Of the exception, as MessageOf gives it. Of a pattern that was not compiled only PCRE 8 has the text.
    std::string message = MessageOf([] {});
    int result = 0;
    int offsets[BareRegex::s_iVectorSize] = {};
    std::vector<std::string> groups;
    // Of the groups that are reported: to the first group of a name, and to a group's name.
    std::map<std::string, int> names;
    std::map<int, std::string> namesOfGroups;

private:
    static std::string Valid(const std::string& pattern)
    {
        return Toolkit::UTF8::ToUTF8(Toolkit::UTF8::ToUNICODE(pattern));
    }

    static std::string Piece(const std::string& subject, int begin, int end)
    {
        std::string piece;
        for (int i = begin; i >= 0 && i < end; ++i)
            piece += subject[static_cast<std::size_t>(i)];
        return piece;
    }

    // Of each group in turn the name, if the table of names has one.
    void CollectNames(const BareRegex& regex)
    {
        for (int group = 1; group < result; ++group)
            regex.ForEachName(
                [&](int number, const std::string& name)
                {
                    if (number != group)
                        return;
                    names.emplace(name, group);
                    namesOfGroups.emplace(group, name);
                });
    }
};

} // namespace ToolkitTest

#endif
