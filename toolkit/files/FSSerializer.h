// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_FSSERIALIZER_H
#define TOOLKIT_FILES_FSSERIALIZER_H

#include <cstdint>

#include "toolkit/files/FSStream.h"
#include "toolkit/files/Serializer.h"

namespace Toolkit
{

/// A serializer over a file, which is open exactly as long as the serializer lives. A file that cannot be
/// opened is not reported by the constructor: every operation that transfers something then fails. One thread
/// at a time.
///
/// @code
/// const Toolkit::Bytes key;
/// Toolkit::FSSerializer keys(L"keys.bin", Toolkit::FSSerializer::ModeAppend);
/// if (Toolkit::IsError(keys.Serialize(key)))
///     return Fail("the key was not written");
/// @endcode
class TOOLKIT_API FSSerializer : public Serializer
{
public:
    /// Those of FSStream.
    enum OpenMode : std::uint32_t
    {
        ModeRead = FSStream::ModeRead,
        ModeWrite = FSStream::ModeWrite,
        ModeReadWrite = FSStream::ModeReadWrite,
        ModeAppend = FSStream::ModeAppend,
        ModeCreate = FSStream::ModeCreate
    };

    /// Opens the file as FSStream does.
    FSSerializer(const TString<wchar_t>& path, OpenMode mode);
    ~FSSerializer() override;

    IStream& GetStream() const override;

private:
    mutable FSStream m_stream;
};

} // namespace Toolkit

#endif
