// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/Base64Codec.h"

#include <array>
#include <cstring>

namespace Toolkit
{

namespace
{

using Base64Codec::s_uForeign;
using Base64Codec::s_uGroupBytes;
using Base64Codec::s_uGroupCharacters;

constexpr char c_strAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Pair
{
    unsigned char m_text[2];
};

// The two characters of each 12-bit value.
using PairTable = std::array<Pair, 4096>;

constexpr PairTable MakePairs()
{
    PairTable table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = Pair{{static_cast<unsigned char>(c_strAlphabet[i >> 6]),
                         static_cast<unsigned char>(c_strAlphabet[i & 0x3F])}};
    return table;
}

// The value of each character, shifted to its place in a group of four. What is outside the alphabet has the
// value 0 and the bit that says so.
using ValueTable = std::array<std::array<std::uint32_t, 256>, s_uGroupCharacters>;

constexpr ValueTable MakeValues()
{
    ValueTable table{};
    for (auto& place : table)
        for (std::uint32_t& value : place)
            value = s_uForeign;
    for (std::uint32_t value = 0; value < 64; ++value)
        for (std::size_t q = 0; q < s_uGroupCharacters; ++q)
            table[q][static_cast<unsigned char>(c_strAlphabet[value])] = value << (6 * (3 - q));
    return table;
}

constexpr PairTable s_pairs = MakePairs();
constexpr ValueTable s_values = MakeValues();

// The number of eight bytes, the first of which is the highest.
std::uint64_t BigEndian(const unsigned char* bytes)
{
    const auto at = [bytes](int i) { return std::uint64_t{bytes[i]} << (56 - 8 * i); };
    return at(0) | at(1) | at(2) | at(3) | at(4) | at(5) | at(6) | at(7);
}

void EncodeGroup(std::uint32_t group, unsigned char* to)
{
    std::memcpy(to, s_pairs[group >> 12].m_text, 2);
    std::memcpy(to + 2, s_pairs[group & 0xFFF].m_text, 2);
}

void Split(std::uint32_t group, unsigned char* to)
{
    to[0] = static_cast<unsigned char>(group >> 16);
    to[1] = static_cast<unsigned char>(group >> 8);
    to[2] = static_cast<unsigned char>(group);
}

} // namespace

std::size_t Base64Codec::Encode(const unsigned char* data, std::size_t size, unsigned char* to)
{
    const unsigned char* const end = data + size / s_uGroupBytes * s_uGroupBytes;
    // Two groups at once, as long as there are eight bytes to read.
    for (; end - data >= 8; data += 2 * s_uGroupBytes, to += 2 * s_uGroupCharacters)
    {
        const std::uint64_t groups = BigEndian(data);
        EncodeGroup(static_cast<std::uint32_t>(groups >> 40), to);
        EncodeGroup(static_cast<std::uint32_t>(groups >> 16) & 0xFFFFFFU, to + s_uGroupCharacters);
    }
    for (; data != end; data += s_uGroupBytes, to += s_uGroupCharacters)
        EncodeGroup(std::uint32_t{data[0]} << 16 | std::uint32_t{data[1]} << 8 | data[2], to);
    const std::size_t rest = size % s_uGroupBytes;
    if (rest != 0)
    {
        EncodeGroup(std::uint32_t{data[0]} << 16 | (rest == 2 ? std::uint32_t{data[1]} << 8 : 0U), to);
        std::memset(to + 1 + rest, s_chPad, s_uGroupBytes - rest);
    }
    return EncodedSize(size);
}

bool Base64Codec::DecodeGroups(const unsigned char* text, std::size_t groups, unsigned char* to)
{
    std::uint32_t all = 0;
    const unsigned char* const end = text + groups * s_uGroupCharacters;
    for (; text != end; text += s_uGroupCharacters, to += s_uGroupBytes)
    {
        const std::uint32_t group =
            s_values[0][text[0]] | s_values[1][text[1]] | s_values[2][text[2]] | s_values[3][text[3]];
        all |= group;
        Split(group, to);
    }
    return (all & s_uForeign) == 0;
}

std::uint32_t Base64Codec::BeginningOfGroup(const unsigned char* text, std::size_t count)
{
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < count; ++i)
        group |= s_values[i][text[i]];
    return group;
}

bool Base64Codec::DecodeUnpadded(std::string_view text, std::string& bytes, std::uint32_t& leftOver)
{
    const auto* const from = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t groups = text.size() / s_uGroupCharacters;
    const std::size_t rest = text.size() % s_uGroupCharacters;
    const std::size_t last = rest > 1 ? rest - 1 : 0;
    bytes.resize(groups * s_uGroupBytes + last);
    auto* const to = reinterpret_cast<unsigned char*>(bytes.data());
    const bool whole = DecodeGroups(from, groups, to);
    const std::uint32_t group = BeginningOfGroup(from + groups * s_uGroupCharacters, rest);
    for (std::size_t i = 0; i < last; ++i)
        to[groups * s_uGroupBytes + i] = static_cast<unsigned char>(group >> (16 - 8 * i));
    leftOver = group & (0xFFFFFFU >> (8 * last));
    return whole && (group & s_uForeign) == 0;
}

bool Base64Codec::IsInAlphabet(char character)
{
    return s_values[0][static_cast<unsigned char>(character)] != s_uForeign;
}

} // namespace Toolkit
