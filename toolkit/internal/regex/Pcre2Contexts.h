// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_PCRE2CONTEXTS_H
#define TOOLKIT_INTERNAL_REGEX_PCRE2CONTEXTS_H

#include <cstdint>

#include "toolkit/internal/regex/Pcre2.h"

namespace Toolkit
{

// What PCRE2 is told beside the pattern and the subject: where its memory comes from (operator new, so that
// it counts as the library's own) and how far a compilation and a search may go. One object for the process,
// never changed, and never destroyed: a program may search until its very end.
class Pcre2Contexts
{
public:
    // Throws std::bad_alloc when the first call finds no memory.
    static const Pcre2Contexts& Get();

    Pcre2Contexts(const Pcre2Contexts&) = delete;
    Pcre2Contexts& operator=(const Pcre2Contexts&) = delete;

    pcre2_general_context* General() const { return m_pGeneral; }
    // For patterns as PCRE2 understands them.
    pcre2_compile_context* Compile() const { return m_pCompile; }
    // For the patterns that PCRE 8 would take.
    pcre2_compile_context* CompileAsPcre() const { return m_pCompileAsPcre; }
    // How many KiB of the heap a search may take: the usual, or more where the pattern has so many groups
    // that each step is large.
    static const std::uint32_t s_uUsualHeap;
    static std::uint32_t MostHeap(const pcre2_code* code);

    // A search takes PCRE's number of steps at most, and the usual part of the heap.
    pcre2_match_context* Match() const { return m_pMatch; }
    // A search ends after the first step.
    pcre2_match_context* CheckOnly() const { return m_pCheckOnly; }

private:
    Pcre2Contexts();
    ~Pcre2Contexts() = delete;
    void Free();

    pcre2_general_context* m_pGeneral;
    pcre2_compile_context* m_pCompile = nullptr;
    pcre2_compile_context* m_pCompileAsPcre = nullptr;
    pcre2_match_context* m_pMatch = nullptr;
    pcre2_match_context* m_pCheckOnly = nullptr;
};

} // namespace Toolkit

#endif
