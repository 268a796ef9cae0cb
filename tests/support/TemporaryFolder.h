// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_TEMPORARYFOLDER_H
#define TOOLKIT_TESTS_SUPPORT_TEMPORARYFOLDER_H

#include <string>

#include "toolkit/core/TString.h"

namespace ToolkitTest
{

// A new, empty folder of one test's own under the system's temporary folder; it goes with all that is in it.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return m_strPath; }
    // The path of an entry in the folder, as bytes and as wide text.
    std::string Path(const std::string& name) const { return m_strPath + "/" + name; }
    Toolkit::TString<wchar_t> Wide() const;
    Toolkit::TString<wchar_t> Wide(const std::string& name) const;

private:
    std::string m_strPath;
};

// The bytes of a file; empty when it cannot be read.
std::string ReadBytes(const std::string& path);
// Makes or replaces a file; fails the test when it cannot.
void WriteBytes(const std::string& path, const std::string& bytes);

// Gives what lies at the path, a link itself, to another user; where the system refuses, skips the test
// and answers false.
bool GiveToAnotherUser(const std::string& path);

// Sets an environment variable for a scope; null unsets it.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const char* name, const char* value);
    ~ScopedEnvironment();

    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const std::string m_strName;
    const bool m_bWasSet;
    const std::string m_strBefore;
};

// Collects what arrives on a descriptor (2 is the standard error output) while the object lives.
class CapturedOutput
{
public:
    explicit CapturedOutput(int descriptor);
    ~CapturedOutput();

    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    // Ends the capture and answers what arrived.
    std::string Stop();

private:
    TemporaryFolder m_folder;
    const int m_iDescriptor;
    int m_iSaved;
};

} // namespace ToolkitTest

#endif
