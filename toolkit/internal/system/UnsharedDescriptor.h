// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_UNSHAREDDESCRIPTOR_H
#define TOOLKIT_INTERNAL_SYSTEM_UNSHAREDDESCRIPTOR_H

#include <utility>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/ForkShield.h"
#include "toolkit/internal/system/NoCancellation.h"

namespace Toolkit
{

// A descriptor that no forked process shares, from before it is opened until after it is closed.
class UnsharedDescriptor
{
public:
    UnsharedDescriptor() = default;
    // `open` returns the descriptor, or one that is not open; it never waits.
    template <class Open>
    explicit UnsharedDescriptor(Open open)
    {
        const NoCancellation whole;
        const ForkShield::Pause pause;
        m_descriptor = open();
        m_shield.Set(m_descriptor.Get(), pause);
    }
    UnsharedDescriptor(UnsharedDescriptor&& other) noexcept { *this = std::move(other); }
    UnsharedDescriptor& operator=(UnsharedDescriptor&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        m_shield.Swap(other.m_shield);
        return *this;
    }
    ~UnsharedDescriptor() { Close(); }

    bool IsOpen() const { return m_descriptor.IsOpen(); }
    int Get() const { return m_descriptor.Get(); }

    void Close()
    {
        if (!IsOpen())
            return;
        const NoCancellation whole;
        const ForkShield::Pause pause;
        m_shield.Set(-1, pause);
        m_descriptor.Close();
    }

    // For a number that somebody else has closed, and that may be another file's by now.
    void Forget()
    {
        const ForkShield::Pause pause;
        m_shield.Set(-1, pause);
        m_descriptor.Release();
    }

private:
    Descriptor m_descriptor;
    ForkShield m_shield;
};

} // namespace Toolkit

#endif
