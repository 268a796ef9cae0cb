// SPDX-License-Identifier: MIT
#include "toolkit/encoding/B64.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include "toolkit/encoding/Bytes.h"
#include "toolkit/encoding/UTF8.h"

namespace Toolkit
{

namespace
{

constexpr char c_strAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
const unsigned char s_uPad = '=';
const std::size_t s_uGroupBytes = 3;
const std::size_t s_uGroupCharacters = 4;
// The bytes of a block; whole groups.
const std::size_t s_uBlock = 1024 * s_uGroupBytes;

using Array = std::unique_ptr<unsigned char[]>;

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
// value 0.
using ValueTable = std::array<std::array<std::uint32_t, 256>, s_uGroupCharacters>;

constexpr ValueTable MakeValues()
{
    ValueTable table{};
    for (std::uint32_t value = 0; value < 64; ++value)
        for (std::size_t q = 0; q < s_uGroupCharacters; ++q)
            table[q][static_cast<unsigned char>(c_strAlphabet[value])] = value << (6 * (3 - q));
    return table;
}

constexpr PairTable s_pairs = MakePairs();
constexpr ValueTable s_values = MakeValues();

void EncodeGroup(std::uint32_t group, unsigned char* to)
{
    std::memcpy(to, s_pairs[group >> 12].m_text, 2);
    std::memcpy(to + 2, s_pairs[group & 0xFFF].m_text, 2);
}

// Answers the number of characters.
std::size_t Encode(const unsigned char* data, std::size_t size, unsigned char* to)
{
    const std::size_t groups = (size + s_uGroupBytes - 1) / s_uGroupBytes;
    const unsigned char* const end = data + size / s_uGroupBytes * s_uGroupBytes;
    for (; data != end; data += s_uGroupBytes, to += s_uGroupCharacters)
        EncodeGroup(std::uint32_t{data[0]} << 16 | std::uint32_t{data[1]} << 8 | data[2], to);
    const std::size_t rest = size % s_uGroupBytes;
    if (rest == 0)
        return groups * s_uGroupCharacters;
    EncodeGroup(std::uint32_t{data[0]} << 16 | (rest == 2 ? std::uint32_t{data[1]} << 8 : 0U), to);
    std::memset(to + 1 + rest, s_uPad, s_uGroupBytes - rest);
    return groups * s_uGroupCharacters;
}

void Split(std::uint32_t group, unsigned char* to)
{
    to[0] = static_cast<unsigned char>(group >> 16);
    to[1] = static_cast<unsigned char>(group >> 8);
    to[2] = static_cast<unsigned char>(group);
}

// Decodes the text, in which "=" stands at `pad` or, when `pad` is the text's size, nowhere. Answers the
// number of bytes that count.
std::size_t Decode(const unsigned char* text, std::size_t size, std::size_t pad, unsigned char* to)
{
    const unsigned char* const begin = to;
    const unsigned char* const end = text + pad / s_uGroupCharacters * s_uGroupCharacters;
    for (; text != end; text += s_uGroupCharacters, to += s_uGroupBytes)
        Split(s_values[0][text[0]] | s_values[1][text[1]] | s_values[2][text[2]] | s_values[3][text[3]], to);
    const std::size_t done = static_cast<std::size_t>(to - begin);
    if (pad == size)
        return done;
    std::uint32_t group = 0;
    const std::size_t q = pad % s_uGroupCharacters;
    for (std::size_t i = 0; i < q; ++i)
        group |= s_values[i][text[i]];
    to[0] = static_cast<unsigned char>(group >> 16);
    if (q < 3)
        return done + 1;
    to[1] = static_cast<unsigned char>(group >> 8);
    to[2] = 0;
    return done + 3;
}

bool FitsInt(std::size_t size)
{
    return size <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

} // namespace

int GetCodeLength(int n)
{
    const long long m = static_cast<long long>(n) + n / 3 + (n % 3 != 0 ? 1 : 0);
    const long long over = m % 4;
    const long long length = over > 0 ? m + 4 - over : m - over;
    return length == static_cast<int>(length) ? static_cast<int>(length) : 0;
}

int GetDataLength(int n)
{
    return n - n / 4;
}

int b64_decode_binary(const unsigned char* data, unsigned int size, unsigned char** out,
                      unsigned int* outSize)
{
    const int length = FitsInt(size) ? GetCodeLength(static_cast<int>(size)) : 0;
    if (length < 1 || data == nullptr || out == nullptr || outSize == nullptr)
        return 0;
    *out = new unsigned char[static_cast<std::size_t>(length)];
    *outSize = static_cast<unsigned int>(length);
    Encode(data, size, *out);
    return 1;
}

int b64_encode_binary(const unsigned char* text, unsigned int size, unsigned char** out,
                      unsigned int* outSize)
{
    const int capacity = FitsInt(size) ? GetDataLength(static_cast<int>(size)) : 0;
    if (capacity < 1 || text == nullptr || out == nullptr || outSize == nullptr)
        return 0;
    const void* const pad = std::memchr(text, s_uPad, size);
    const std::size_t end =
        pad == nullptr ? size : static_cast<std::size_t>(static_cast<const unsigned char*>(pad) - text);
    *out = new unsigned char[static_cast<std::size_t>(capacity)];
    const std::size_t count = Decode(text, size, end, *out);
    std::memset(*out + count, 0, static_cast<std::size_t>(capacity) - count);
    *outSize = static_cast<unsigned int>(count);
    return 1;
}

smart_ptr<Bytes, smart_ptr_policy> B64::ToB64(const TString<wchar_t>& text)
{
    const smart_ptr<Bytes, smart_ptr_policy> bytes(new Bytes);
    const TString<char> narrow = UTF8::ToUTF8(text);
    unsigned char* data = nullptr;
    unsigned int size = 0;
    if (FitsInt(narrow.size()) &&
        b64_encode_binary(reinterpret_cast<const unsigned char*>(narrow.data()),
                          static_cast<unsigned int>(narrow.size()), &data, &size) == 1)
    {
        const Array decoded(data);
        bytes->SetBytes(data, size);
    }
    return bytes;
}

TString<wchar_t> B64::ToUNICODE(const smart_ptr<Bytes, smart_ptr_policy>& bytes)
{
    TString<wchar_t> wide;
    unsigned char* data = nullptr;
    unsigned int size = 0;
    if (bytes.IsNull() || !bytes->GetBytes(&data, &size))
        return wide;
    const Array copy(data);
    const int length = FitsInt(size) ? GetCodeLength(static_cast<int>(size)) : 0;
    wide.reserve(static_cast<std::size_t>(length));
    // The text is ASCII: block by block, each byte becomes its character.
    unsigned char narrow[s_uBlock / s_uGroupBytes * s_uGroupCharacters];
    wchar_t characters[sizeof narrow];
    for (std::size_t done = 0; length > 0 && done < size; done += s_uBlock)
    {
        const std::size_t count = std::min(size - done, s_uBlock);
        const std::size_t written = Encode(data + done, count, narrow);
        std::copy_n(narrow, written, characters);
        wide.append(characters, written);
    }
    return wide;
}

} // namespace Toolkit
