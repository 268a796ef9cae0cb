// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_WHOLEFILE_H
#define TOOLKIT_FILES_WHOLEFILE_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// @ingroup files
/// What `ReadFile` reads at most unless it is told otherwise: 1 GiB.
inline constexpr std::size_t LargestFileToRead = std::size_t{1} << 30;

/// @ingroup files
/// Reads a whole file, byte for byte. Links are followed. Any thread may call it; it waits for the disk, and
/// for nothing else. Its failures are `Errc::LimitReached` for a file that is longer than `largest`,
/// `Errc::Refused` for a FIFO, a socket or a device, `std::errc::invalid_argument` for a name that holds a
/// NUL, and what the system has against opening and reading the file, of `std::errc`:
/// `no_such_file_or_directory`, `permission_denied`, `is_a_directory`, `not_a_directory`,
/// `too_many_symbolic_link_levels`, `filename_too_long`, `too_many_files_open`,
/// `too_many_files_open_in_system`, `io_error` and whatever else a file system has of its own.
///
/// @code
/// Toolkit::Result<std::string> name = Toolkit::ReadFile("/etc/hostname");
/// if (!name)
///     std::cerr << name.error().Message() << '\n';
/// else
///     std::cout << *name;
/// @endcode
TOOLKIT_API Result<std::string> ReadFile(const std::filesystem::path& path,
                                         std::size_t largest = LargestFileToRead);

/// @ingroup files
/// Gives a file this content, whole and on the disk, or leaves it as it was, whatever ends the process or the
/// power meanwhile. A missing file is made, with permissions 0666 less the umask, and so are the folders that
/// it lies in, which are for this user alone (0700). Links are followed: it is their target that gets the
/// content. Permissions, owner, access control list and extended attributes of a file that is there are kept;
/// where the system does not let this user keep them, the file grants less than before, never more. Any
/// thread may call it, and several at once for one file: the content is that of one of them. It waits for the
/// disk.
///
/// Its failures are `Errc::Refused` for a FIFO, a socket or a device, `std::errc::invalid_argument` for a
/// name that holds a NUL, and what the system has against making and writing the file, of `std::errc`:
/// `permission_denied`, `operation_not_permitted`, `no_space_on_device`, `file_too_large`,
/// `read_only_file_system`, `is_a_directory`, `not_a_directory`, `no_such_file_or_directory` (for an empty
/// name), `too_many_symbolic_link_levels`, `filename_too_long`, `too_many_files_open`,
/// `too_many_files_open_in_system`, `io_error` and whatever else a file system has of its own.
///
/// Other hard links to the file keep the old content. A file that something is mounted on is written in
/// place, and only there a break in between leaves a part. For a moment the folder holds a file
/// ".toolkit-..."; what a killed process leaves of it is removed by a later call.
///
/// @code
/// if (Toolkit::Result<void> done = Toolkit::WriteFile("notes/today.txt", "milk\n"); !done)
///     std::cerr << done.error().Message() << '\n';
/// @endcode
TOOLKIT_API Result<void> WriteFile(const std::filesystem::path& path, std::string_view content);

} // namespace Toolkit

#endif
