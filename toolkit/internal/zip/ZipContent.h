// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPCONTENT_H
#define TOOLKIT_INTERNAL_ZIP_ZIPCONTENT_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "toolkit/core/Result.h"
#include "toolkit/internal/zip/ZipFile.h"

// The content of an entry, with the reason where there is none.
namespace Toolkit::ZipContent
{

// What is asked for at least, at the end as well.
constexpr std::size_t s_uLeastRoom = 16;

// Where the next so many bytes are decoded to.
using Place = std::function<char*(std::size_t)>;
// What takes content block by block; false, and the reason in errno, when it cannot.
using Take = std::function<bool(const char*, std::size_t)>;

// Decodes block by block: memory follows neither the declared length nor the real one. A failure begins with
// the attempt and the name.
Result<void> Decode(const std::shared_ptr<const ZipFile>& file, const ZipFile::ContentRecord& record,
                    const std::string& attempt, const std::string& name, const Place& place,
                    const Take& take);
// The same by way of a block of its own.
Result<void> Decode(const std::shared_ptr<const ZipFile>& file, const ZipFile::ContentRecord& record,
                    const std::string& attempt, const std::string& name, const Take& take);

} // namespace Toolkit::ZipContent

#endif
