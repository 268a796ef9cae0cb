// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_ARCHIVEENTRIESFLAGS_H
#define TOOLKIT_FILES_ARCHIVEENTRIESFLAGS_H

#include <cstdint>

namespace Toolkit
{

/// Which entries of an archive are listed.
struct ArchiveEntriesFlags
{
    /// Files, folders, or both.
    enum ArchiveEntriesType : std::uint32_t
    {
        Files = 1,
        Folders = 2,
        All = 3
    };
};

} // namespace Toolkit

#endif
