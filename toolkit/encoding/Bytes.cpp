// SPDX-License-Identifier: MIT
#include "toolkit/encoding/Bytes.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "toolkit/files/IStream.h"

namespace Toolkit
{

namespace
{

const unsigned int s_uSlice = 1U << 20;

using Array = std::unique_ptr<unsigned char[]>;

unsigned char* Copy(const unsigned char* data, unsigned int size)
{
    unsigned char* const copy = new unsigned char[size];
    std::memcpy(copy, data, size);
    return copy;
}

// Reads `count` bytes, more than one slice; memory grows with what has come. Null when they end early.
Array ReadSlices(IStream& stream, unsigned int count)
{
    Array data;
    unsigned int capacity = 0;
    for (unsigned int done = 0; done < count;)
    {
        if (done == capacity)
        {
            capacity += std::min(std::max(capacity, s_uSlice), count - capacity);
            Array larger(new unsigned char[capacity]);
            std::copy_n(data.get(), done, larger.get());
            data = std::move(larger);
        }
        const unsigned int size = std::min(s_uSlice, capacity - done);
        if (IsError(stream.Read(data.get() + done, size)))
            return nullptr;
        done += size;
    }
    return data;
}

} // namespace

Bytes::Bytes() : m_pData(nullptr), m_uSize(0) {}

Bytes::Bytes(const unsigned char* data, unsigned int size) : Bytes()
{
    SetBytes(data, size);
}

Bytes::~Bytes()
{
    delete[] m_pData;
}

StreamResult Bytes::Serialize(IStream& stream) const
{
    if (m_uSize == 0 || m_pData == nullptr)
        return StreamResult::Empty;
    if (IsError(stream.Write(m_uSize)) || IsError(stream.Write(m_pData, m_uSize)))
        return StreamResult::NotOpen;
    return StreamResult::Ok;
}

StreamResult Bytes::Deserialize(IStream& stream)
{
    unsigned int count = 0;
    if (IsError(stream.Read(count)))
        return StreamResult::ShortTransfer;
    Adopt(nullptr, 0);
    if (count == 0)
        return StreamResult::Ok;
    if (count <= s_uSlice)
    {
        Adopt(new unsigned char[count](), count);
        return IsError(stream.Read(m_pData, count)) ? StreamResult::ShortTransfer : StreamResult::Ok;
    }
    Array data = ReadSlices(stream, count);
    if (data == nullptr)
        return StreamResult::ShortTransfer;
    Adopt(data.release(), count);
    return StreamResult::Ok;
}

bool Bytes::SetBytes(const unsigned char* data, unsigned int size)
{
    if (data == nullptr || size == 0)
        return false;
    Adopt(Copy(data, size), size);
    return true;
}

bool Bytes::GetBytes(unsigned char** out, unsigned int* outSize) const
{
    return CopyBytes(m_pData, m_uSize, out, outSize);
}

bool Bytes::CopyBytes(const unsigned char* src, unsigned int size, unsigned char** out,
                      unsigned int* outSize) const
{
    if (src == nullptr || size == 0 || out == nullptr || outSize == nullptr)
        return false;
    // Copied before the old array goes: `src` may be that array.
    unsigned char* const copy = Copy(src, size);
    delete[] * out;
    *out = copy;
    *outSize = size;
    return true;
}

void Bytes::Adopt(unsigned char* data, unsigned int size)
{
    delete[] m_pData;
    m_pData = data;
    m_uSize = size;
}

} // namespace Toolkit
