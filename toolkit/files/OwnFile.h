#ifndef TOOLKIT_FILES_OWNFILE_H
#define TOOLKIT_FILES_OWNFILE_H

namespace Toolkit
{

class NativePath;

// Files at places that can be guessed, in folders where everyone may write. Only a regular file of this user
// with no other name is ours; links, FIFOs and the files of others are neither opened nor trusted.
class OwnFile
{
public:
    // True when such a file lies at `path`.
    static bool IsAt(const NativePath& path);

    // True when `descriptor` is one of such a file.
    static bool Is(int descriptor);

    // Opens for writing, made if missing, not truncated: a close-on-exec descriptor, which the caller closes;
    // -1 on failure and when something else lies there. It never waits.
    static int Open(const NativePath& path);
};

} // namespace Toolkit

#endif
