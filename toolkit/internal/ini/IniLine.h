// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_INI_INILINE_H
#define TOOLKIT_INTERNAL_INI_INILINE_H

#include <cstddef>
#include <string_view>

namespace Toolkit
{

// What a line of a settings file says. "[name]" over the whole line is a section; ";" in the first column
// begins a comment; any other line with a "=" is a key and its value around the first one, both without the
// spaces and tabs at their ends. Everything else is ignored. The views point into the line.
template <class C>
struct IniLine
{
    using View = std::basic_string_view<C>;

    enum Kind
    {
        Ignored,
        Section,
        Key
    };

    explicit IniLine(View line)
    {
        if (line.size() >= 2 && line.front() == C('[') && line.back() == C(']'))
        {
            m_kind = Section;
            m_name = line.substr(1, line.size() - 2);
            return;
        }
        if (line.empty() || line.front() == C(';'))
            return;
        const std::size_t equals = line.find(C('='));
        if (equals == line.npos)
            return;
        m_kind = Key;
        m_name = Trimmed(line.substr(0, equals));
        m_value = Trimmed(line.substr(equals + 1));
    }

    Kind m_kind = Ignored;
    View m_name;
    View m_value;

private:
    static bool IsBlank(C character) { return character == C(' ') || character == C('\t'); }

    // Of blanks alone the end is left.
    static View Trimmed(View text)
    {
        while (!text.empty() && IsBlank(text.front()))
            text.remove_prefix(1);
        while (!text.empty() && IsBlank(text.back()))
            text.remove_suffix(1);
        return text;
    }
};

} // namespace Toolkit

#endif
