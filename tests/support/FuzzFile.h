// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_FUZZFILE_H
#define TOOLKIT_TESTS_SUPPORT_FUZZFILE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "tests/support/FuzzCheck.h"
#include "toolkit/core/TString.h"

namespace ToolkitTest
{

// A file that lies in memory only.
class FuzzFile
{
public:
    explicit FuzzFile(const std::uint8_t* data = nullptr, std::size_t size = 0)
        : m_iDescriptor(memfd_create("input", MFD_CLOEXEC))
    {
        TOOLKIT_FUZZ_CHECK(m_iDescriptor != -1);
        TOOLKIT_FUZZ_CHECK(write(m_iDescriptor, data, size) == static_cast<ssize_t>(size));
    }
    ~FuzzFile() { close(m_iDescriptor); }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;

    Toolkit::TString<wchar_t> GetPath() const { return L"/proc/self/fd/" + std::to_wstring(m_iDescriptor); }

    std::string GetContent() const
    {
        std::string content(static_cast<std::size_t>(lseek(m_iDescriptor, 0, SEEK_END)), '\0');
        const ssize_t count = pread(m_iDescriptor, content.data(), content.size(), 0);
        TOOLKIT_FUZZ_CHECK(count == static_cast<ssize_t>(content.size()));
        return content;
    }

private:
    const int m_iDescriptor;
};

} // namespace ToolkitTest

#endif
