// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_LINEARSEARCH_H
#define TOOLKIT_INTERNAL_TEXT_LINEARSEARCH_H

#include <cstddef>
#include <utility>

namespace Toolkit
{

// The first occurrence of one sequence in another, found in a time that is linear in both and without memory,
// however much they repeat themselves: the two-way algorithm of Crochemore and Perrin. `Key` tells of an
// element what is compared in its place. For long sequences; it is no faster than a plain search elsewhere.
template <class C, class Key>
class LinearSearch
{
public:
    static constexpr std::size_t s_uNone = static_cast<std::size_t>(-1);

    // `what` is kept, and holds at least one element.
    LinearSearch(const C* what, std::size_t count, Key key) : m_pWhat(what), m_uCount(count), m_key(key)
    {
        const Suffix one = MaximalSuffix([](auto a, auto b) { return a < b; });
        const Suffix other = MaximalSuffix([](auto a, auto b) { return b < a; });
        m_suffix = one.begin > other.begin ? one : other;
        m_bRepeats = RepeatsItself();
        // What is skipped when all of it was compared, if it is no repetition.
        if (!m_bRepeats)
            m_suffix.period =
                (m_suffix.begin > count - m_suffix.begin ? m_suffix.begin : count - m_suffix.begin) + 1;
    }

    // Where it begins in `text`; s_uNone if it does not occur.
    std::size_t Find(const C* text, std::size_t length) const
    {
        // So many elements at the beginning are known to fit.
        std::size_t known = 0;
        // No step is longer than what is searched.
        for (std::size_t at = 0; length - at >= m_uCount;)
        {
            std::size_t next = m_suffix.begin > known ? m_suffix.begin : known;
            while (next < m_uCount && Fits(text[at + next], next))
                ++next;
            if (next < m_uCount)
            {
                at += next - m_suffix.begin + 1;
                known = 0;
                continue;
            }
            next = m_suffix.begin;
            while (next > known && Fits(text[at + next - 1], next - 1))
                --next;
            if (next <= known)
                return at;
            at += m_suffix.period;
            known = m_bRepeats ? m_uCount - m_suffix.period : 0;
        }
        return s_uNone;
    }

private:
    struct Suffix
    {
        std::size_t begin;
        std::size_t period;
    };

    auto At(std::size_t i) const { return m_key(m_pWhat[i]); }

    bool Fits(C element, std::size_t i) const { return m_key(element) == At(i); }

    // The greatest suffix under that order, and its period, which is no longer than the suffix.
    template <class Less>
    Suffix MaximalSuffix(Less less) const
    {
        std::size_t begin = 0;
        std::size_t candidate = 1;
        std::size_t offset = 0;
        std::size_t period = 1;
        while (candidate + offset < m_uCount)
        {
            const auto a = At(candidate + offset);
            const auto b = At(begin + offset);
            if (less(a, b))
            {
                candidate += offset + 1;
                offset = 0;
                period = candidate - begin;
            }
            else if (a == b)
            {
                if (++offset == period)
                {
                    candidate += period;
                    offset = 0;
                }
            }
            else
            {
                begin = candidate;
                candidate = begin + 1;
                offset = 0;
                period = 1;
            }
        }
        return {begin, period};
    }

    bool RepeatsItself() const
    {
        for (std::size_t i = 0; i < m_suffix.begin; ++i)
            if (At(i) != At(i + m_suffix.period))
                return false;
        return true;
    }

    const C* const m_pWhat;
    const std::size_t m_uCount;
    const Key m_key;
    Suffix m_suffix{0, 1};
    bool m_bRepeats = false;
};

} // namespace Toolkit

#endif
