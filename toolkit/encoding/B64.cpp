// SPDX-License-Identifier: MIT
#include "toolkit/encoding/B64.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include "toolkit/encoding/Bytes.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/text/Base64Codec.h"

namespace Toolkit
{

namespace
{

// The bytes of a block; whole groups.
const std::size_t s_uBlock = 1024 * Base64Codec::s_uGroupBytes;

using Array = std::unique_ptr<unsigned char[]>;

// Decodes the text, in which "=" stands at `pad` or, when `pad` is the text's size, nowhere. Returns the
// number of bytes that count.
std::size_t Decode(const unsigned char* text, std::size_t size, std::size_t pad, unsigned char* to)
{
    const std::size_t groups = pad / Base64Codec::s_uGroupCharacters;
    Base64Codec::DecodeGroups(text, groups, to);
    const std::size_t done = groups * Base64Codec::s_uGroupBytes;
    if (pad == size)
        return done;
    const std::size_t q = pad % Base64Codec::s_uGroupCharacters;
    const std::uint32_t group = Base64Codec::BeginningOfGroup(text + pad - q, q);
    to += done;
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
    Base64Codec::Encode(data, size, *out);
    return 1;
}

int b64_encode_binary(const unsigned char* text, unsigned int size, unsigned char** out,
                      unsigned int* outSize)
{
    const int capacity = FitsInt(size) ? GetDataLength(static_cast<int>(size)) : 0;
    if (capacity < 1 || text == nullptr || out == nullptr || outSize == nullptr)
        return 0;
    const void* const pad = std::memchr(text, Base64Codec::s_chPad, size);
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
    unsigned char narrow[Base64Codec::EncodedSize(s_uBlock)];
    wchar_t characters[sizeof narrow];
    for (std::size_t done = 0; length > 0 && done < size; done += s_uBlock)
    {
        const std::size_t count = std::min(size - done, s_uBlock);
        const std::size_t written = Base64Codec::Encode(data + done, count, narrow);
        std::copy_n(narrow, written, characters);
        wide.append(characters, written);
    }
    return wide;
}

} // namespace Toolkit
