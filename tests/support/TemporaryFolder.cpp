// SPDX-License-Identifier: MIT
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "toolkit/encoding/UTF8.h"

namespace ToolkitTest
{

namespace
{

const unsigned int s_uAnother = 65533;

} // namespace

TemporaryFolder::TemporaryFolder()
{
    char path[] = "/tmp/toolkit-test-XXXXXX";
    if (mkdtemp(path) == nullptr)
        throw std::runtime_error("no temporary folder can be made");
    m_strPath = path;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_strPath, ignored);
}

Toolkit::TString<wchar_t> TemporaryFolder::Wide() const
{
    return Toolkit::UTF8::ToUNICODE(m_strPath);
}

Toolkit::TString<wchar_t> TemporaryFolder::Wide(const std::string& name) const
{
    return Toolkit::UTF8::ToUNICODE(Path(name));
}

std::string ReadBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

void WriteBytes(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    ASSERT_TRUE(file) << path;
}

bool GiveToAnotherUser(const std::string& path)
{
    if (lchown(path.c_str(), s_uAnother, s_uAnother) == 0)
        return true;
    [] { GTEST_SKIP() << "not allowed: a file of another user: " << std::strerror(errno); }();
    return false;
}

ScopedEnvironment::ScopedEnvironment(const char* name, const char* value)
    : m_strName(name),
      m_bWasSet(std::getenv(name) != nullptr),
      m_strBefore(m_bWasSet ? std::getenv(name) : "")
{
    if (value != nullptr)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

ScopedEnvironment::~ScopedEnvironment()
{
    if (m_bWasSet)
        setenv(m_strName.c_str(), m_strBefore.c_str(), 1);
    else
        unsetenv(m_strName.c_str());
}

CapturedOutput::CapturedOutput(int descriptor) : m_iDescriptor(descriptor), m_iSaved(-1)
{
    std::fflush(nullptr);
    m_iSaved = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
    const int file = open(m_folder.Path("output").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(file, descriptor);
    close(file);
}

CapturedOutput::~CapturedOutput()
{
    Stop();
}

std::string CapturedOutput::Stop()
{
    if (m_iSaved >= 0)
    {
        std::cout.flush();
        std::wcout.flush();
        std::fflush(nullptr);
        dup2(m_iSaved, m_iDescriptor);
        close(m_iSaved);
        m_iSaved = -1;
    }
    return ReadBytes(m_folder.Path("output"));
}

} // namespace ToolkitTest
