// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipContent.h"

#include <algorithm>
#include <cerrno>

#include <wx/zipstrm.h>

#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/zip/ZipEntryStream.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uBlock = 65536;
const int s_iEncrypted = wxZIP_ENCRYPTED | wxZIP_STRONG_ENC;

} // namespace

Result<void> ZipContent::Decode(const std::shared_ptr<const ZipFile>& file, const wxZipEntry& record,
                                const std::string& attempt, const std::string& name, const Take& take)
{
    if ((record.GetFlags() & s_iEncrypted) != 0)
        return Failure(Errc::Refused, attempt + " " + name + ": it is encrypted");
    if (record.GetMethod() != wxZIP_METHOD_STORE && record.GetMethod() != wxZIP_METHOD_DEFLATE)
        return Failure(Errc::Refused, attempt + " " + name + ": it is packed by an unknown method");
    const Failure damaged(Errc::Malformed, attempt + " " + name + ": it is damaged");
    ZipEntryStream content(file, record);
    long long left = record.GetSize();
    const std::unique_ptr<char[]> block(new char[s_uBlock]);
    while (content.IsFound())
    {
        // One byte more than is left shows that the content is longer.
        const std::size_t room =
            static_cast<std::size_t>(std::clamp<long long>(left, 15, static_cast<long long>(s_uBlock) - 1)) +
            1;
        const std::size_t count = content.Read(block.get(), room).LastRead();
        left -= static_cast<long long>(count);
        if (left < 0)
            break;
        if (count > 0 && !take(block.get(), count))
            return SystemFailure(attempt, name, errno);
        if (count < room)
            return left == 0 && !content.IsDamaged() ? Result<void>() : damaged;
    }
    return damaged;
}

} // namespace Toolkit
