// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_FORKSHIELD_H
#define TOOLKIT_INTERNAL_SYSTEM_FORKSHIELD_H

#include <utility>

namespace Toolkit
{

// Keeps a descriptor from being shared with forked processes for as long as the object lives: a child that
// had it, too, would keep a socket listening, or a file locked, when this process has long ended. In the
// child the number stands for the null device from the start, so that the child's copies of its owners may
// close it. A child that replaces its image at once (vfork, posix_spawn) has no need of it: the system closes
// the library's descriptors there. Any thread may use it.
class ForkShield
{
public:
    // No process is forked while the object lives: what is opened meanwhile is shielded before anybody else
    // has it. One at a time on a thread, and nothing that waits is done meanwhile.
    class Pause
    {
    public:
        Pause();
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
    };

    ForkShield() = default;
    ForkShield(const ForkShield&) = delete;
    ForkShield& operator=(const ForkShield&) = delete;
    ~ForkShield();

    // Shields this descriptor, and no other any more; -1 is none. It comes back to be none before the
    // descriptor is closed.
    void Set(int descriptor, const Pause&);
    void Swap(ForkShield& other) noexcept { std::swap(m_iDescriptor, other.m_iDescriptor); }

private:
    int m_iDescriptor = -1;
};

} // namespace Toolkit

#endif
