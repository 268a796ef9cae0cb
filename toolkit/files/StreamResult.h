// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_STREAMRESULT_H
#define TOOLKIT_FILES_STREAMRESULT_H

#include <cstdint>

namespace Toolkit
{

/// Holds the unscoped enumerations, so that `using namespace Toolkit;` brings none of their enumerators into
/// scope.
namespace Enumerations
{

/// The status of every stream and serializer operation. Failures have bit 0x10000000 set; no other values are
/// produced. They are written qualified (`StreamResult::Ok`) and convert to numbers.
enum StreamResult : std::uint32_t
{
    Ok = 0x00000000,
    /// Success with nothing transferred: an empty string was written, or a count of 0 was read.
    Empty = 0x01000000,
    /// A 32-bit value could not be written whole.
    Failed = 0x10000000,
    NotOpen = 0x10000002,
    /// Fewer bytes were read or written than asked for.
    ShortTransfer = 0x10000003,
    /// The count in front of a string.
    LengthWriteFailed = 0x10000005,
    LengthReadFailed = 0x10000006
};

/// Stands beside the enumeration, where a call without a namespace finds it.
inline bool IsError(StreamResult result)
{
    return (static_cast<std::uint32_t>(result) & 0x10000000U) != 0;
}

} // namespace Enumerations

using Enumerations::IsError;
using Enumerations::StreamResult;

} // namespace Toolkit

#endif
