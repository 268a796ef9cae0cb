// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_NATIVEPATH_H
#define TOOLKIT_INTERNAL_SYSTEM_NATIVEPATH_H

#include <string>
#include <string_view>

#include <sys/stat.h>
#include <sys/types.h>

#include "toolkit/core/TString.h"
#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{

// A path as the system takes it: bytes, of which the classic side's wide text becomes UTF-8 whatever the
// host's locale. An empty path, one that holds a NUL and one that has no UTF-8 form name nothing: every
// question about them is answered with no.
class NativePath
{
public:
    explicit NativePath(const TString<wchar_t>& path);
    static NativePath OfBytes(std::string_view path);

    bool IsValid() const { return !m_strBytes.empty(); }
    const TString<char>& GetBytes() const { return m_strBytes; }
    const char* c_str() const { return m_strBytes.c_str(); }

    // What lies there at the end of all links, as S_IFREG and its like; 0 when nothing does.
    mode_t GetKind() const;
    bool IsFile() const;
    bool IsFolder() const;

    // Opens with the flags of `open`; none, and the reason in errno, on failure. It never waits, and what is
    // opened lets nobody wait for ever: a FIFO opens for writing only, and only when it has a reader; a
    // folder (EISDIR) and the maker of pseudo-terminals (ENXIO) do not open; a read finds nothing (EAGAIN)
    // where it would have to wait for something else than the input of a terminal. A new file has `mode` less
    // the umask.
    Descriptor Open(int flags, mode_t mode = 0666) const;
    // The same, with what the system tells of what was opened.
    Descriptor Open(int flags, struct stat& status, mode_t mode = 0666) const;
    // The same of a name that is the system's own.
    static Descriptor OpenName(const char* name, int flags, struct stat& status, mode_t mode = 0666);

private:
    NativePath() = default;

    TString<char> m_strBytes;
};

} // namespace Toolkit

#endif
