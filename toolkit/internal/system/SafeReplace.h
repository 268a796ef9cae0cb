// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_SAFEREPLACE_H
#define TOOLKIT_INTERNAL_SYSTEM_SAFEREPLACE_H

#include <memory>
#include <string_view>

#include <sys/types.h>

#include "toolkit/core/Result.h"

namespace Toolkit
{
class NativePath;
}

// Gives a file new content all at once: the bytes go into a temporary file of the same folder, which then
// takes the old one's place. Whoever reads the file sees the old content or the new, never a part, and so
// does everyone after a loss of power.
namespace Toolkit::SafeReplace
{

struct Options
{
    // Of a file that is made, less the umask.
    mode_t m_uMode = 0666;
    // The file was there before and was removed: what its folder would grant on a new file is not granted.
    bool m_bWasThere = false;
    // Makes the file to which a link leads that leads nowhere, where such a link is refused otherwise.
    bool m_bFollowsDangling = false;
};

// On failure the file is as it was, and nothing else is left behind. A missing file is made. Through a link
// it is the link's target that is replaced. Permissions, owner, access control list and extended attributes
// are kept; what the system does not let this user keep grants less, never more. A file that something is
// mounted on is written in place, for its name cannot be taken: only there a break in between leaves a part.
// Quirk: other hard links to the file keep the old content.
Result<void> Write(const NativePath& path, std::string_view bytes, const Options& options);

// The same for content that is written piece by piece. An object that is destroyed before `Finish` leaves the
// file as it was. What something is mounted on is refused here.
class Writer
{
public:
    static Result<std::unique_ptr<Writer>> Begin(const NativePath& path, const Options& options);
    ~Writer();

    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // What the content is written to.
    int Get() const;

    // Has the content take the file's place.
    Result<void> Finish();

private:
    struct Content;

    explicit Writer(std::unique_ptr<Content> content);

    std::unique_ptr<Content> m_pContent;
};

} // namespace Toolkit::SafeReplace

#endif
