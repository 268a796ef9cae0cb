// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"

using namespace ToolkitTest;

namespace
{

const char* const c_strBuilds[] = {"g++_O0", "g++_O2", "clang++_O0", "clang++_O2"};

std::string Built(const std::string& name)
{
    return TOOLKIT_TEST_COMPILED "/" + name;
}

class PluginCompilers : public testing::TestWithParam<const char*>
{
};

std::string Name(const testing::TestParamInfo<const char*>& build)
{
    const std::string name = build.param;
    return (name[0] == 'g' ? "Gxx" : "Clang") + name.substr(name.size() - 2);
}

} // namespace

// A program of one build uses plug-ins of every build.
TEST_P(PluginCompilers, ProgramUsesPluginsOfEveryCompilerWithAndWithoutOptimization)
{
    for (const std::string plugin : c_strBuilds)
    {
        const TemporaryFolder folder;
        WriteBytes(folder.Path("noting.so"), ReadBytes(Built("noting_" + plugin + ".so")));
        WriteBytes(folder.Path("counting.so"), ReadBytes(Built("counting_" + plugin + ".so")));
        const ProgramResult result =
            RunInShell(Quoted(Built("host_" + std::string(GetParam()))) + " " + Quoted(folder.Path()));
        EXPECT_EQ(0, result.m_iExitCode) << plugin;
        const std::string noInterface = ", this program uses version ";
        EXPECT_EQ("counting.so: it is made for version 1 of toolkit.test.Counter" + noInterface +
                      "3 of toolkit.test.Greeter\n"
                      "x: noted you\n"
                      "+x <x.static <x.lost >x.lost >x.static -x ~x \n"
                      "noting.so: it is made for version 3 of toolkit.test.Greeter" +
                      noInterface +
                      "1 of toolkit.test.Counter\n"
                      "dynamic 1, counts 42\n"
                      "counting.so: it is made for version 1 of toolkit.test.Counter" +
                      noInterface +
                      "3 of toolkit.test.Greeter\n"
                      "noting.so: its constructor threw: no more of it\n"
                      "+x ~x \n",
                  result.m_strOutput)
            << plugin;
    }
}

INSTANTIATE_TEST_SUITE_P(, PluginCompilers, testing::ValuesIn(c_strBuilds), Name);
