// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_DESCRIPTOR_H
#define TOOLKIT_INTERNAL_SYSTEM_DESCRIPTOR_H

#include <utility>

#include <unistd.h>

#include "toolkit/internal/system/NoCancellation.h"

namespace Toolkit
{

// Owns a descriptor of the system, or none (-1), and closes it when it goes.
class Descriptor
{
public:
    explicit Descriptor(int descriptor = -1) : m_iDescriptor(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : m_iDescriptor(std::exchange(other.m_iDescriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_iDescriptor, other.m_iDescriptor);
        return *this;
    }
    ~Descriptor()
    {
        const NoCancellation whole;
        if (IsOpen())
            close(m_iDescriptor);
    }

    bool IsOpen() const { return m_iDescriptor != -1; }
    int Get() const { return m_iDescriptor; }

private:
    int m_iDescriptor;
};

} // namespace Toolkit

#endif
