// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_BAREPATTERN_H
#define TOOLKIT_TESTS_REFERENCE_BAREPATTERN_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace ToolkitTest
{

// PCRE2 without machine code, called as its manual says and as its demonstration program does for all
// matches: what Pattern must find.
class BarePattern
{
public:
    // The begin and the end of each group; PCRE2_UNSET for one that took no part.
    using Offsets = std::vector<std::size_t>;

    BarePattern(const std::string& pattern, std::uint32_t options)
    {
        int error = 0;
        PCRE2_SIZE offset = 0;
        m_pCode = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(),
                                options | PCRE2_UTF, &error, &offset, nullptr);
        if (m_pCode != nullptr)
            m_pData = pcre2_match_data_create_from_pattern(m_pCode, nullptr);
    }
    ~BarePattern()
    {
        pcre2_match_data_free(m_pData);
        pcre2_code_free(m_pCode);
    }

    BarePattern(const BarePattern&) = delete;
    BarePattern& operator=(const BarePattern&) = delete;

    bool IsCompiled() const { return m_pCode != nullptr; }

    // All matches that do not overlap; `failed` when a search could not be ended.
    std::vector<Offsets> FindAll(const std::string& subject, bool& failed) const
    {
        std::vector<Offsets> found;
        const PCRE2_SIZE* const ends = pcre2_get_ovector_pointer(m_pData);
        int result = Execute(subject, 0, 0);
        while (result > 0)
        {
            found.push_back(Groups(result));
            std::size_t start = ends[1];
            const bool wasEmpty = ends[0] == ends[1];
            if (wasEmpty && start == subject.size())
                break;
            const std::size_t place = pcre2_get_startchar(m_pData);
            if (!wasEmpty && start <= place)
            {
                if (place >= subject.size())
                    break;
                start = Next(subject, place);
            }
            result = Execute(subject, start, wasEmpty ? PCRE2_NOTEMPTY_ATSTART | PCRE2_ANCHORED : 0);
            if (wasEmpty && result == PCRE2_ERROR_NOMATCH)
                result = Execute(subject, Next(subject, start), 0);
        }
        failed = result < 0 && result != PCRE2_ERROR_NOMATCH;
        return found;
    }

private:
    int Execute(const std::string& subject, std::size_t start, std::uint32_t options) const
    {
        return pcre2_match(m_pCode, reinterpret_cast<PCRE2_SPTR>(subject.data()), subject.size(), start,
                           options | PCRE2_NO_JIT, m_pData, nullptr);
    }

    Offsets Groups(int result) const
    {
        const PCRE2_SIZE* const ends = pcre2_get_ovector_pointer(m_pData);
        Offsets groups(ends, ends + 2 * result);
        groups.resize(std::size_t{2} * pcre2_get_ovector_count(m_pData), PCRE2_UNSET);
        return groups;
    }

    // The next character, or line end of two characters where the pattern knows such.
    std::size_t Next(const std::string& subject, std::size_t index) const
    {
        std::uint32_t lineEnd = 0;
        pcre2_pattern_info(m_pCode, PCRE2_INFO_NEWLINE, &lineEnd);
        const bool two =
            lineEnd == PCRE2_NEWLINE_CRLF || lineEnd == PCRE2_NEWLINE_ANY || lineEnd == PCRE2_NEWLINE_ANYCRLF;
        if (two && subject.compare(index, 2, "\r\n") == 0)
            return index + 2;
        do
            ++index;
        while (index < subject.size() && (static_cast<unsigned char>(subject[index]) & 0xC0U) == 0x80U);
        return index;
    }

    pcre2_code* m_pCode = nullptr;
    pcre2_match_data* m_pData = nullptr;
};

} // namespace ToolkitTest

#endif
