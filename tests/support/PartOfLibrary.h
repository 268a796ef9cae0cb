// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_PARTOFLIBRARY_H
#define TOOLKIT_TESTS_SUPPORT_PARTOFLIBRARY_H

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"

namespace ToolkitTest
{

// A part of the library is loaded when it is first needed. Each test asks a program of its own, `AskParts`,
// which uses a copy of the library.
class PartOfLibrary : public testing::Test
{
protected:
    // The files that were built.
    struct Built
    {
        std::string library;
        std::string part;
        std::string askParts;
    };

    explicit PartOfLibrary(Built built) : m_built(std::move(built))
    {
        std::filesystem::create_directories(Part().substr(0, Part().rfind('/')));
        std::filesystem::create_directory(m_folder.Path("home"));
        std::filesystem::copy_file(m_built.library, m_folder.Path("lib/libtoolkit.so.1"));
    }

    // Where the library looks for its part, and where the part is that was built.
    std::string Part() const
    {
        return m_folder.Path("lib/toolkit") + m_built.part.substr(m_built.part.rfind('/'));
    }
    void GivePart() const { std::filesystem::copy_file(m_built.part, Part()); }
    // The step that does it.
    std::string GivingPart() const { return "copy=" + m_built.part + "=" + Part(); }

    // What the program prints for the steps.
    std::string Ask(const std::vector<std::string>& steps) const { return Ask(steps, m_folder.Path("lib")); }
    std::string Ask(const std::vector<std::string>& steps, const std::string& searched) const
    {
        std::string command =
            "cd " + Quoted(m_folder.Path("home")) + " && HOME=" + Quoted(m_folder.Path("home")) +
            " TZ=UTC LC_ALL=de_DE.UTF-8 LD_LIBRARY_PATH=" + Quoted(searched) + " " + Quoted(m_built.askParts);
        for (const std::string& step : steps)
            command += " " + Quoted(step);
        const ProgramResult result = RunInShell(command);
        EXPECT_EQ(0, result.m_iExitCode) << result.m_strOutput;
        return result.m_strOutput;
    }

    // What the library says of a part that it cannot load.
    std::string CannotLoad(const std::string& why) const { return "cannot load " + Part() + ": " + why; }

private:
    const TemporaryFolder m_folder;
    const Built m_built;
};

} // namespace ToolkitTest

#endif
