// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINMATCH_H
#define TOOLKIT_TESTS_REFERENCE_PLAINMATCH_H

#include <map>
#include <string>
#include <vector>

#include <pcre.h>

#include "tests/support/RegExpSupport.h"
#include "toolkit/encoding/UTF8.h"

namespace ToolkitTest
{

// What bare PCRE finds: the plain form of RegExp::Match. It knows nothing of the stack, so patterns must
// limit their searches and call few groups.
class PlainMatch
{
public:
    PlainMatch(const std::string& pattern, const std::string& subject)
    {
        const char* error = nullptr;
        int at = 0;
        pcre* const code = pcre_compile(pattern.c_str(), PCRE_UTF8, &error, &at, nullptr);
        if (code == nullptr)
        {
            message = " : " + std::string(error) + " (@offset: " + std::to_string(at) + ") " + Valid(pattern);
            return;
        }
        result = pcre_exec(code, nullptr, subject.data(), static_cast<int>(subject.size()), 0, 0, offsets,
                           s_iVectorSize);
        if (result < PCRE_ERROR_NOMATCH)
            message = ExecutionMessage(std::to_string(result));
        for (int i = 0; i < result; ++i)
            groups.push_back(Piece(subject, offsets[2 * i], offsets[2 * i + 1]));
        CollectNames(code);
        pcre_free(code);
    }

    // Of the exception, as MessageOf gives it.
    std::string message = MessageOf([] {});
    static const int s_iVectorSize = 60;
    int result = 0;
    int offsets[s_iVectorSize] = {};
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
    void CollectNames(const pcre* code)
    {
        int count = 0;
        int size = 0;
        const unsigned char* table = nullptr;
        pcre_fullinfo(code, nullptr, PCRE_INFO_NAMECOUNT, &count);
        pcre_fullinfo(code, nullptr, PCRE_INFO_NAMEENTRYSIZE, &size);
        pcre_fullinfo(code, nullptr, PCRE_INFO_NAMETABLE, &table);
        for (int group = 1; group < result; ++group)
            for (const unsigned char* entry = table; entry != table + count * size; entry += size)
                if (entry[0] * 256 + entry[1] == group)
                {
                    const std::string name(reinterpret_cast<const char*>(entry + 2));
                    names.emplace(name, group);
                    namesOfGroups.emplace(group, name);
                }
    }
};

} // namespace ToolkitTest

#endif
