// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_NATIVEPATH_H
#define TOOLKIT_INTERNAL_SYSTEM_NATIVEPATH_H

#include "toolkit/core/TString.h"

namespace Toolkit
{

// A path as the system takes it: UTF-8 bytes, whatever the host's locale. An empty path, one that holds a
// zero and one that has no UTF-8 form name nothing: every question is answered with no.
class NativePath
{
public:
    explicit NativePath(const TString<wchar_t>& path);

    bool IsValid() const { return !m_strBytes.empty(); }
    const TString<char>& GetBytes() const { return m_strBytes; }
    const char* c_str() const { return m_strBytes.c_str(); }

    // Both follow links.
    bool IsFile() const;
    bool IsFolder() const;

    // Opens with the flags of `open` and a close-on-exec descriptor, which the caller closes; -1 on failure.
    // It never waits: a FIFO opens for writing only, and only when it has a reader. A folder does not open.
    int Open(int flags) const;

private:
    TString<char> m_strBytes;
};

} // namespace Toolkit

#endif
