// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_BAREREGEX_H
#define TOOLKIT_TESTS_REFERENCE_BAREREGEX_H

#include <algorithm>
#include <cstdint>
#include <string>

#ifdef TOOLKIT_TEST_PCRE2
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#else
#include <pcre.h>
#endif

namespace ToolkitTest
{

// The library of regular expressions that the library was built on, called as its manual says and in no other
// way: what RegExp must find. It knows nothing of limits, so patterns must limit their searches. Results are
// PCRE 8's.
class BareRegex
{
public:
    static const int s_iVectorSize = 60;

    explicit BareRegex(const std::string& pattern) { Compile(pattern.c_str()); }
    ~BareRegex() { Free(); }

    BareRegex(const BareRegex&) = delete;
    BareRegex& operator=(const BareRegex&) = delete;

    bool IsCompiled() const { return m_pCode != nullptr; }
    // Where PCRE stopped, with its text; the other library has other texts.
    const std::string& GetError() const { return m_strError; }

#ifdef TOOLKIT_TEST_PCRE2
    static const bool s_bHasPcreTexts = false;

    int Execute(const std::string& subject, int* offsets) const
    {
        pcre2_match_data* const data = pcre2_match_data_create(s_iVectorSize / 3, nullptr);
        const int result = pcre2_match(m_pCode, reinterpret_cast<PCRE2_SPTR>(subject.data()), subject.size(),
                                       0, 0, data, nullptr);
        const PCRE2_SIZE* const found = pcre2_get_ovector_pointer(data);
        if (result >= 0)
            std::transform(found, found + 2 * result, offsets,
                           [](PCRE2_SIZE offset)
                           { return offset == PCRE2_UNSET ? -1 : static_cast<int>(offset); });
        pcre2_match_data_free(data);
        return ToPcre(result);
    }

    template <class Use>
    void ForEachName(const Use& use) const
    {
        std::uint32_t count = 0;
        std::uint32_t size = 0;
        PCRE2_SPTR table = nullptr;
        pcre2_pattern_info(m_pCode, PCRE2_INFO_NAMECOUNT, &count);
        pcre2_pattern_info(m_pCode, PCRE2_INFO_NAMEENTRYSIZE, &size);
        pcre2_pattern_info(m_pCode, PCRE2_INFO_NAMETABLE, &table);
        for (std::uint32_t i = 0; i < count; ++i, table += size)
            use(table[0] * 256 + table[1], reinterpret_cast<const char*>(table + 2));
    }

private:
    void Compile(const char* pattern)
    {
        pcre2_compile_context* const context = pcre2_compile_context_create(nullptr);
        pcre2_set_compile_extra_options(context, PCRE2_EXTRA_ALLOW_LOOKAROUND_BSK);
        int number = 0;
        PCRE2_SIZE at = 0;
        m_pCode = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern), PCRE2_ZERO_TERMINATED, PCRE2_UTF,
                                &number, &at, context);
        pcre2_compile_context_free(context);
        if (m_pCode == nullptr)
            m_strError = std::to_string(number) + " (@offset: " + std::to_string(at) + ") ";
    }

    void Free()
    {
        pcre2_code_free(m_pCode);
    }

    static int ToPcre(int result)
    {
        switch (result)
        {
        case PCRE2_ERROR_MATCHLIMIT:
            return -8;
        case PCRE2_ERROR_DEPTHLIMIT:
        case PCRE2_ERROR_HEAPLIMIT:
            return -21;
        case PCRE2_ERROR_RECURSELOOP:
            return -26;
        default:
            return result <= PCRE2_ERROR_UTF8_ERR1 && result >= PCRE2_ERROR_UTF8_ERR21 ? -10 : result;
        }
    }

    pcre2_code* m_pCode = nullptr;
#else
    static const bool s_bHasPcreTexts = true;

    int Execute(const std::string& subject, int* offsets) const
    {
        return pcre_exec(m_pCode, nullptr, subject.data(), static_cast<int>(subject.size()), 0, 0, offsets,
                         s_iVectorSize);
    }

    template <class Use>
    void ForEachName(const Use& use) const
    {
        int count = 0;
        int size = 0;
        const unsigned char* table = nullptr;
        pcre_fullinfo(m_pCode, nullptr, PCRE_INFO_NAMECOUNT, &count);
        pcre_fullinfo(m_pCode, nullptr, PCRE_INFO_NAMEENTRYSIZE, &size);
        pcre_fullinfo(m_pCode, nullptr, PCRE_INFO_NAMETABLE, &table);
        for (int i = 0; i < count; ++i, table += size)
            use(table[0] * 256 + table[1], reinterpret_cast<const char*>(table + 2));
    }

private:
    void Compile(const char* pattern)
    {
        const char* error = nullptr;
        int at = 0;
        m_pCode = pcre_compile(pattern, PCRE_UTF8, &error, &at, nullptr);
        if (m_pCode == nullptr)
            m_strError = std::string(error) + " (@offset: " + std::to_string(at) + ") ";
    }

    void Free()
    {
        pcre_free(m_pCode);
    }

    pcre* m_pCode = nullptr;
#endif
    std::string m_strError;
};

} // namespace ToolkitTest

#endif
