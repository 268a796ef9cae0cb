// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_PLUGINS_PLUGINSTEST_H
#define TOOLKIT_TESTS_PLUGINS_PLUGINSTEST_H

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/plugins/Greeter.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/Failure.h"

namespace ToolkitTest
{

// A folder of the test's own for plug-ins, which are copied from where they were built.
class PluginsTest : public testing::Test
{
protected:
    std::filesystem::path Folder() const { return m_folder.Path(); }

    std::filesystem::path Built(const std::string& plugin) const
    {
        return std::filesystem::path(TOOLKIT_TEST_PLUGINS) / ("loadable_" + plugin + ".so");
    }

    // Puts the plug-in into the folder by that name, in one step, in place of what is there.
    std::filesystem::path Put(const std::string& plugin, const std::string& name) const
    {
        const std::filesystem::path path = Folder() / name;
        const std::filesystem::path copy = path.string() + ".new";
        std::filesystem::copy_file(Built(plugin), copy, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::rename(copy, path);
        return path;
    }

    // True when code of a library of that path, or of a path that begins so, is in the address space. A
    // sanitizer's reader of debug information maps the file, too, and without its code.
    static bool IsMapped(const std::filesystem::path& path)
    {
        std::ifstream maps("/proc/self/maps");
        for (std::string line; std::getline(maps, line);)
            if (line.find(" r-xp ") != line.npos && line.find(path.native()) != line.npos)
                return true;
        return false;
    }

    static std::vector<std::string> Messages(const std::vector<Toolkit::Failure>& failures)
    {
        std::vector<std::string> messages;
        for (const Toolkit::Failure& failure : failures)
            messages.push_back(failure.Message());
        return messages;
    }

    template <class All>
    static std::vector<std::string> Names(const All& all)
    {
        std::vector<std::string> names;
        for (const auto& plugin : all)
            names.push_back(plugin->Info().Name());
        return names;
    }

private:
    const TemporaryFolder m_folder;
};

} // namespace ToolkitTest

#endif
