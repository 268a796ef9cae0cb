// SPDX-License-Identifier: MIT
#include "toolkit/files/ArchiveZipEntry.h"

namespace Toolkit
{

ArchiveZipEntry::ArchiveZipEntry(const wxZipEntry& entry) : wxZipEntry(entry) {}

ArchiveZipEntry::~ArchiveZipEntry() = default;

} // namespace Toolkit
