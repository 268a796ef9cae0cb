// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipRecordEntry.h"

namespace Toolkit
{

ZipRecordEntry::ZipRecordEntry(const ZipFile::DirectoryRecord& record)
    : wxZipEntry(wxString(), wxDateTime(), record.size)
{
    SetFlags(record.flags);
    SetMethod(record.method);
    SetCrc(record.checksum);
    SetCompressedSize(record.compressedSize);
    SetOffset(record.offset);
    SetKey(record.offset);
}

} // namespace Toolkit
