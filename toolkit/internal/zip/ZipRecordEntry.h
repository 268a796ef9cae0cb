// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPRECORDENTRY_H
#define TOOLKIT_INTERNAL_ZIP_ZIPRECORDENTRY_H

#include <wx/zipstrm.h>

#include "toolkit/internal/zip/ZipFile.h"

namespace Toolkit
{

// A record of the directory as wxWidgets takes it to find and decode the content; it has no name and no date.
class ZipRecordEntry : public wxZipEntry
{
public:
    explicit ZipRecordEntry(const ZipFile::DirectoryRecord& record);
};

} // namespace Toolkit

#endif
