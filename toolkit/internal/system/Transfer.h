// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_TRANSFER_H
#define TOOLKIT_INTERNAL_SYSTEM_TRANSFER_H

#include <cstddef>

#include <sys/types.h>

namespace Toolkit
{

// Whole transfers between memory and a descriptor, whatever signals arrive and however little the system
// takes or gives at once.

// True when all of it was written; otherwise errno tells why not.
bool WriteAll(int descriptor, const void* data, std::size_t size);

// Returns the bytes written. They are fewer than `size` on an error, which errno tells.
std::size_t WriteUpTo(int descriptor, const void* data, std::size_t size);

// Returns the bytes read. They are fewer than `size` at the end of the file, where errno is 0, and on an
// error, which errno tells.
std::size_t ReadUpTo(int descriptor, void* buffer, std::size_t size);

// The same from `offset` on; the place where the descriptor stands is left alone.
std::size_t ReadUpTo(int descriptor, void* buffer, std::size_t size, off_t offset);

} // namespace Toolkit

#endif
