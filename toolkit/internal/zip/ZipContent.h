// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPCONTENT_H
#define TOOLKIT_INTERNAL_ZIP_ZIPCONTENT_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "toolkit/core/Result.h"
#include "toolkit/internal/text/WrittenText.h"
#include "toolkit/internal/zip/ZipFile.h"

// The content of an entry, with the reason where there is none.
namespace Toolkit::ZipContent
{

// What is asked for at least, at the end as well.
constexpr std::size_t s_uLeastRoom = 16;

// Has the next block, of up to so many bytes, decoded into memory of its own; false, and the reason in errno,
// when it cannot take it.
using Block = std::function<bool(std::size_t room, const WriteText& decode)>;
// What takes content block by block; false, and the reason in errno, when it cannot.
using Take = std::function<bool(const char*, std::size_t)>;

// Decodes block by block: memory follows neither the declared length nor the real one. A failure begins with
// the attempt and the name.
Result<void> Decode(const std::shared_ptr<const ZipFile>& file, const ZipFile::ContentRecord& record,
                    const std::string& attempt, const std::string& name, const Block& block);
// The same by way of memory that is not the taker's.
Result<void> Decode(const std::shared_ptr<const ZipFile>& file, const ZipFile::ContentRecord& record,
                    const std::string& attempt, const std::string& name, const Take& take);

} // namespace Toolkit::ZipContent

#endif
