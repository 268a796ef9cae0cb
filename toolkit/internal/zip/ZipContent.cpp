// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipContent.h"

#include <algorithm>
#include <cerrno>

#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/zip/ZipDecoder.h"

namespace Toolkit
{

namespace
{

// One byte more than is left shows that the content is longer.
std::size_t RoomFor(long long left)
{
    const auto least = static_cast<long long>(ZipContent::s_uLeastRoom);
    const auto most = static_cast<long long>(ZipDecoder::s_uBlock);
    return static_cast<std::size_t>(std::clamp(left, least - 1, most - 1)) + 1;
}

} // namespace

Result<void> ZipContent::Decode(const std::shared_ptr<const ZipFile>& file,
                                const ZipFile::ContentRecord& record, const std::string& attempt,
                                const std::string& name, const Block& block)
{
    if (record.IsEncrypted())
        return Failure(Errc::Refused, attempt + " " + name + ": it is encrypted");
    if (record.method != ZipFile::s_iStored && record.method != ZipFile::s_iDeflated)
        return Failure(Errc::Refused, attempt + " " + name + ": it is packed by an unknown method");
    const Failure damaged(Errc::Malformed, attempt + " " + name + ": it is damaged");
    ZipDecoder content(file, record);
    long long left = record.size;
    std::size_t count = 0;
    const WriteText decode = [&](char* memory, std::size_t room)
    {
        count = content.Read(memory, room);
        left -= static_cast<long long>(count);
        return left < 0 ? 0 : count;
    };
    while (content.IsFound() && left >= 0)
    {
        const std::size_t room = RoomFor(left);
        if (!block(room, decode))
            return SystemFailure(attempt, name, errno);
        if (count < room)
            return left == 0 && !content.IsDamaged() ? Result<void>() : damaged;
    }
    return damaged;
}

Result<void> ZipContent::Decode(const std::shared_ptr<const ZipFile>& file,
                                const ZipFile::ContentRecord& record, const std::string& attempt,
                                const std::string& name, const Take& take)
{
    // The first is the longest.
    const std::unique_ptr<char[]> memory(new char[RoomFor(record.size)]);
    const Block block = [&](std::size_t room, const WriteText& decode)
    {
        const std::size_t count = decode(memory.get(), room);
        return count == 0 || take(memory.get(), count);
    };
    return Decode(file, record, attempt, name, block);
}

} // namespace Toolkit
