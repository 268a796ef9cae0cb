// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_TEMPORARYFILE_H
#define TOOLKIT_INTERNAL_SYSTEM_TEMPORARYFILE_H

#include <string>

#include <sys/types.h>

#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{

// A new file that takes another one's place in its folder, or is removed again. Its name is ".toolkit-", the
// number of the process, "-" and a number of its own; while it is written it is locked, so that what a killed
// process left behind can be told from what a living one writes, even in another container.
class TemporaryFile
{
public:
    // `folder` is open and outlives the object. The file has `mode` less the umask; where it cannot be made,
    // none is open, and errno tells why.
    TemporaryFile(int folder, mode_t mode);
    ~TemporaryFile();

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool IsOpen() const { return m_file.IsOpen(); }
    int Get() const { return m_file.Get(); }

    // Gives the file the name `name` in its folder, in place of what had it; false, and errno, on failure.
    bool TakePlaceOf(const char* name);

    // Removes from the folder what killed processes left behind. Small folders are looked through each time,
    // larger ones now and then, so that the cost of many writes into one folder stays linear.
    static void RemoveLeftBehind(int folder);

private:
    bool Make(mode_t mode);

    const int m_iFolder;
    std::string m_strName;
    Descriptor m_file;
    bool m_bMade = false;
};

} // namespace Toolkit

#endif
