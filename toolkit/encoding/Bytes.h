// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_BYTES_H
#define TOOLKIT_ENCODING_BYTES_H

#include "toolkit/core/Export.h"
#include "toolkit/files/ISerialize.h"

namespace Toolkit
{

/// An owned buffer of bytes that can be serialized. What callers are given are fresh arrays, which they free
/// with `delete[]`. One thread at a time; failures are returned, and leave the buffer and the outputs as they
/// were unless said otherwise.
///
/// @code
/// const unsigned char key[] = {1, 2, 3};
/// const Toolkit::Bytes bytes(key, sizeof(key));
/// if (Toolkit::IsError(Toolkit::FSOutputSerializer(L"key.bin").Serialize(bytes)))
///     return Fail("the key was not written");
/// @endcode
class TOOLKIT_API Bytes : public ISerialize
{
public:
    Bytes();
    /// Copies `size` bytes; a null pointer or a size of 0 gives an empty buffer.
    Bytes(const unsigned char* data, unsigned int size);
    ~Bytes() override;

    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;

    /// A count of 4 bytes, then the bytes. `Empty` for an empty buffer, of which nothing at all is written.
    /// Quirk: a failed write is `NotOpen`, whatever the stream returned.
    StreamResult Serialize(IStream& stream) const override;
    /// `Ok` or `ShortTransfer`. The buffer is unchanged when no count could be read. When the bytes end early
    /// it is empty, but after a count of at most 1 MiB it is that long, with 0 for what did not come. Memory
    /// is taken only as the bytes come.
    StreamResult Deserialize(IStream& stream) override;

    /// Stores a copy; false when `data` is null or `size` is 0.
    bool SetBytes(const unsigned char* data, unsigned int size);

    /// Replaces the array `*out`, which is freed with `delete[]` unless it is null, by a copy of the buffer.
    /// False when the buffer is empty or a pointer is null.
    bool GetBytes(unsigned char** out, unsigned int* outSize) const;

    /// The same with a copy of `src` instead of the buffer; false also when `size` is 0.
    bool CopyBytes(const unsigned char* src, unsigned int size, unsigned char** out,
                   unsigned int* outSize) const;

private:
    void Adopt(unsigned char* data, unsigned int size);

    unsigned char* m_pData;
    unsigned int m_uSize;
};

} // namespace Toolkit

#endif
