// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_SIMDBLOCK_H
#define TOOLKIT_INTERNAL_TEXT_SIMDBLOCK_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Toolkit::Detail
{

// A few neighbouring elements of a text, signed, which are looked at together. Not installed.
template <class C>
struct SimdBlock
{
    using Element = std::conditional_t<sizeof(C) == 1, signed char, std::int32_t>;
    typedef Element Vector __attribute__((vector_size(16)));

    static const std::size_t s_uCount = sizeof(Vector) / sizeof(C);

    static Vector Load(const C* text)
    {
        Vector elements;
        std::memcpy(&elements, text, sizeof elements);
        return elements;
    }

    // A comparison gives all ones for each element of which it is true.
    static bool Any(Vector mask)
    {
#ifdef __SSE2__
        return _mm_movemask_epi8(reinterpret_cast<__m128i>(mask)) != 0;
#else
        std::uint64_t halves[2];
        std::memcpy(halves, &mask, sizeof halves);
        return (halves[0] | halves[1]) != 0;
#endif
    }
};

} // namespace Toolkit::Detail

#endif
