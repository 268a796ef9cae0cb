// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/FolderLock.h"

#include <cerrno>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>

namespace Toolkit
{

namespace
{

const std::chrono::milliseconds s_interval(1);

std::filesystem::path FolderOf(const std::filesystem::path& file)
{
    std::error_code failed;
    const std::filesystem::path real = std::filesystem::weakly_canonical(file, failed);
    const std::filesystem::path folder = (failed ? file : real).parent_path();
    return folder.empty() ? "." : folder;
}

} // namespace

FolderLock::FolderLock(const std::filesystem::path& file, std::chrono::milliseconds limit)
{
    const std::filesystem::path folder = FolderOf(file);
    m_folder = UnsharedDescriptor(
        [&folder] { return Descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); });
    if (!m_folder.IsOpen())
        return;
    const auto end = std::chrono::steady_clock::now() + limit;
    while (flock(m_folder.Get(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR))
    {
        m_bBusy = std::chrono::steady_clock::now() >= end;
        if (m_bBusy)
            return;
        std::this_thread::sleep_for(s_interval);
    }
}

} // namespace Toolkit
