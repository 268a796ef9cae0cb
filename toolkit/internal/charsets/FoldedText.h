// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_CHARSETS_FOLDEDTEXT_H
#define TOOLKIT_INTERNAL_CHARSETS_FOLDEDTEXT_H

#include <string>
#include <string_view>

#include "toolkit/core/Result.h"

namespace Toolkit
{

// What is left of a UTF-8 text without regard to case and form (NFKC_Casefold of Unicode): two texts that
// some file system takes for one name fold alike. A text that cannot be folded stays as it is. ASCII needs no
// ICU; for the rest, the failure is that of `LoadIcu`.
Result<std::string> FoldText(std::string_view text);

} // namespace Toolkit

#endif
