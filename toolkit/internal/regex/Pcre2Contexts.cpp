// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/Pcre2Contexts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>

namespace Toolkit
{

namespace
{

// PCRE's own limits.
const std::uint32_t s_uMostLevels = 250;
const std::uint32_t s_uMostSteps = 10000000;
const std::size_t s_uLeastFrames = 10000;

void* Allocate(std::size_t size, void*)
{
    return ::operator new(size, std::nothrow);
}

void Deallocate(void* memory, void*)
{
    ::operator delete(memory);
}

} // namespace

// Some 70,000 rounds of a repeated group.
const std::uint32_t Pcre2Contexts::s_uUsualHeap = 20 * 1024;

const Pcre2Contexts& Pcre2Contexts::Get()
{
    static const Pcre2Contexts* const s_pContexts = new Pcre2Contexts;
    return *s_pContexts;
}

std::uint32_t Pcre2Contexts::MostHeap(const pcre2_code* code)
{
    std::size_t frame = 0;
    pcre2_pattern_info(code, PCRE2_INFO_FRAMESIZE, &frame);
    return std::max(s_uUsualHeap, static_cast<std::uint32_t>(frame * s_uLeastFrames >> 10));
}

Pcre2Contexts::Pcre2Contexts() : m_pGeneral(pcre2_general_context_create(Allocate, Deallocate, nullptr))
{
    if (m_pGeneral == nullptr)
        throw std::bad_alloc();
    m_pCompile = pcre2_compile_context_create(m_pGeneral);
    m_pCompileAsPcre = pcre2_compile_context_create(m_pGeneral);
    m_pMatch = pcre2_match_context_create(m_pGeneral);
    m_pCheckOnly = pcre2_match_context_create(m_pGeneral);
    if (m_pCompile == nullptr || m_pCompileAsPcre == nullptr || m_pMatch == nullptr ||
        m_pCheckOnly == nullptr)
    {
        Free();
        throw std::bad_alloc();
    }
    pcre2_set_parens_nest_limit(m_pCompile, s_uMostLevels);
    pcre2_set_parens_nest_limit(m_pCompileAsPcre, s_uMostLevels);
    pcre2_set_compile_extra_options(m_pCompileAsPcre, PCRE2_EXTRA_ALLOW_LOOKAROUND_BSK);
#if PCRE2_MAJOR > 10 || PCRE2_MINOR >= 43
    pcre2_set_max_varlookbehind(m_pCompileAsPcre, 0);
#endif
    pcre2_set_match_limit(m_pMatch, s_uMostSteps);
    pcre2_set_heap_limit(m_pMatch, s_uUsualHeap);
    pcre2_set_match_limit(m_pCheckOnly, 1);
}

void Pcre2Contexts::Free()
{
    pcre2_match_context_free(m_pCheckOnly);
    pcre2_match_context_free(m_pMatch);
    pcre2_compile_context_free(m_pCompileAsPcre);
    pcre2_compile_context_free(m_pCompile);
    pcre2_general_context_free(m_pGeneral);
}

} // namespace Toolkit
