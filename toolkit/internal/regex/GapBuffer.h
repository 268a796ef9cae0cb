// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_GAPBUFFER_H
#define TOOLKIT_INTERNAL_REGEX_GAPBUFFER_H

#include <cstddef>
#include <vector>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// A text that is rewritten at a position that mostly moves on: what lies before the position stands at the
// start of the memory, the rest at its end, and a gap between them, so that a replacement moves neither.
// Positions and counts are bytes of the text. One thread at a time may use it.
class GapBuffer
{
public:
    // The position is 0.
    explicit GapBuffer(const TString<char>& text);

    std::size_t GetLength() const { return m_uBefore + GetRest(); }
    std::size_t GetPosition() const { return m_uBefore; }
    // The bytes behind the position.
    std::size_t GetRest() const { return m_memory.size() - m_uRest; }

    char At(std::size_t index) const { return m_memory[index < m_uBefore ? index : index + GetGap()]; }
    TString<char> GetText(std::size_t begin, std::size_t end) const;
    TString<char> GetText() const { return GetText(0, GetLength()); }
    bool Equals(const TString<char>& text) const;

    // The rest with the last `context` bytes before the position in front of it, in one piece. The bytes stay
    // until the next call of any operation that changes something.
    const char* GetWindow(std::size_t context);

    void MoveTo(std::size_t position);

    // Replaces the bytes from `begin` up to `end`; the position is then behind the replacement.
    void Replace(std::size_t begin, std::size_t end, const TString<char>& with);

private:
    std::size_t GetGap() const { return m_uRest - m_uBefore; }
    void WidenGap(std::size_t least);

    std::vector<char> m_memory;
    std::size_t m_uBefore = 0;
    std::size_t m_uRest = 0;
};

} // namespace Toolkit

#endif
