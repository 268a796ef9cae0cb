// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_SAFEREPLACE_H
#define TOOLKIT_INTERNAL_SYSTEM_SAFEREPLACE_H

#include "toolkit/core/TString.h"

namespace Toolkit
{
class NativePath;
}

// Gives a file new content all at once: the bytes go into a temporary file of the same folder, which then
// takes the old one's place. Whoever reads the file sees the old content or the new, never a part.
namespace Toolkit::SafeReplace
{

// True when the content was replaced; otherwise the file is as it was and nothing else is left behind.
// A missing file is made. Through a link it is the link's target that is replaced. Permissions are kept,
// and the owner where the system allows it. Quirk: other hard links to the file keep the old content.
bool Write(const NativePath& path, const TString<char>& bytes);

} // namespace Toolkit::SafeReplace

#endif
