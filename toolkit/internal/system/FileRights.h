// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_FILERIGHTS_H
#define TOOLKIT_INTERNAL_SYSTEM_FILERIGHTS_H

#include <sys/stat.h>

namespace Toolkit
{

// Gives the file that is open at `to`, which is its user's alone, what the one at `from` has besides its
// content: owner and group, permissions, access control list, and extended attributes. `status` is that of
// `from`. What the system does not let this user keep is left out, and then the new file grants nobody more
// than the old one did. False, and the reason in errno, when nothing is certain.
bool CopyRights(int from, const struct stat& status, int to);

// Takes an access control list from a file, which its folder may have given it; false as above.
bool RemoveAccessList(int file);

} // namespace Toolkit

#endif
