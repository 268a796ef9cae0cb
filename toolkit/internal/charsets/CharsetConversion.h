// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_CHARSETS_CHARSETCONVERSION_H
#define TOOLKIT_INTERNAL_CHARSETS_CHARSETCONVERSION_H

#include <string>
#include <string_view>

#include "toolkit/core/Result.h"

namespace Toolkit
{

// The bytes of one charset in another one, by ICU's converters. What has no form in the other charset is
// replaced, by U+FFFD or by "?", or makes the conversion fail with Errc::Malformed and its offset; ICU itself
// would leave characters out that are not shown. An unknown charset fails with std::errc::invalid_argument,
// and an ICU that cannot be loaded as `LoadIcu` says.
Result<std::string> ConvertCharset(std::string_view bytes, const std::string& from, const std::string& to,
                                   bool replaces);

} // namespace Toolkit

#endif
