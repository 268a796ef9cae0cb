// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_ARCHIVEZIPENTRY_H
#define TOOLKIT_FILES_ARCHIVEZIPENTRY_H

#include "toolkit/core/NeedsWx.h"

#include <wx/zipstrm.h>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// What an archive says of one of its entries: name, length, date, whether it is a folder, and where its
/// content lies. A copy of its own, held by a smart_ptr, which stays valid when the archive is closed.
/// Nothing in it is verified: an archive may declare what it likes.
///
/// @code
/// for (const auto& [name, entry] : entries)
///     if (!entry->IsDir())
///         std::wcout << name << L' ' << entry->GetSize() << L'\n';
/// @endcode
class TOOLKIT_API ArchiveZipEntry : public wxZipEntry
{
public:
    /// A copy of wxWidgets' record.
    explicit ArchiveZipEntry(const wxZipEntry& entry);
    ~ArchiveZipEntry() override;
};

} // namespace Toolkit

#endif
