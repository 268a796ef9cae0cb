// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_DESCRIPTOR_H
#define TOOLKIT_INTERNAL_SYSTEM_DESCRIPTOR_H

#include <cstdio>
#include <utility>

namespace Toolkit
{

// Owns a descriptor of the system, or none (-1), and closes it when it is destroyed. It is never one of the
// first three, which are everyone's standard streams: in a process that was started without them, the system
// gives such a number to the next file, and whatever is printed would end up in it.
class Descriptor
{
public:
    // One of the first three is exchanged for a higher number; where there is none, it is closed, and errno
    // tells why.
    explicit Descriptor(int descriptor = -1) : m_iDescriptor(AboveStandard(descriptor)) {}
    Descriptor(Descriptor&& other) noexcept : m_iDescriptor(std::exchange(other.m_iDescriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_iDescriptor, other.m_iDescriptor);
        return *this;
    }
    ~Descriptor() { Close(); }

    bool IsOpen() const { return m_iDescriptor != -1; }
    int Get() const { return m_iDescriptor; }

    // The caller's from now on.
    int Release() { return std::exchange(m_iDescriptor, -1); }

    // False when the system tells that something was lost; true when nothing was open.
    bool Close();

    // Takes the advisory lock of the file, which lasts as long as the descriptor and its copies; it never
    // waits. False when another descriptor holds it, or there can be none.
    bool TryLock() const;
    // The same lock, which several hold at once while nobody holds it alone.
    bool TryShareLock() const;

    // Hands the descriptor over to a stream that `mode` describes as for `fopen`; null on failure, and then
    // it is closed.
    std::FILE* ToStream(const char* mode);

    // The same descriptor by a number above the first three; as the constructor says.
    static int AboveStandard(int descriptor);

private:
    int m_iDescriptor;
};

} // namespace Toolkit

#endif
