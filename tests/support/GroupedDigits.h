// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_GROUPEDDIGITS_H
#define TOOLKIT_TESTS_SUPPORT_GROUPEDDIGITS_H

#include <locale>
#include <string>

namespace ToolkitTest
{

// A global locale that groups digits by thousands, for a scope.
class GroupedDigits
{
public:
    GroupedDigits() : m_before(std::locale::global(Make())) {}
    ~GroupedDigits() { std::locale::global(m_before); }
    GroupedDigits(const GroupedDigits&) = delete;
    GroupedDigits& operator=(const GroupedDigits&) = delete;

private:
    template <class C>
    class Grouping : public std::numpunct<C>
    {
        C do_thousands_sep() const override { return C(','); }
        std::string do_grouping() const override { return "\3"; }
    };

    static std::locale Make()
    {
        return std::locale(std::locale(std::locale::classic(), new Grouping<char>), new Grouping<wchar_t>);
    }

    const std::locale m_before;
};

} // namespace ToolkitTest

#endif
