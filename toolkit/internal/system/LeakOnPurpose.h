// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_LEAKONPURPOSE_H
#define TOOLKIT_INTERNAL_SYSTEM_LEAKONPURPOSE_H

namespace Toolkit
{

// Leaves an object alone that must not even be destroyed, because it belongs to another process for instance.
// It stays known until the end: what nobody knows passes for lost memory. Any thread may call it.
void LeakOnPurpose(const void* object) noexcept;

} // namespace Toolkit

#endif
