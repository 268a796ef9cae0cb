// SPDX-License-Identifier: MIT
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/PartOfLibrary.h"

// The part that is linked with PCRE2, and with PCRE where that was chosen.

namespace
{

const char c_strClassic[] = "key; yes; a line with -\n";

class RegexPart : public ToolkitTest::PartOfLibrary
{
protected:
    RegexPart() : PartOfLibrary({TOOLKIT_LIBRARY, TOOLKIT_REGEX_PART, TOOLKIT_ASK_PARTS}) {}

    // What `Pattern::Compile` and the exceptions of `RegExp` say where the part cannot be loaded.
    std::string FindFails(const std::string& why) const
    {
        return "not supported: cannot compile the pattern \"(?<key>[a-z]+)=(\\d+)\": " + CannotLoad(why) +
               "\n";
    }
    std::string ClassicFails(const std::string& why) const
    {
        return CannotLoad(why) + "; " + CannotLoad(why) + "; " + CannotLoad(why) + "\n";
    }
};

} // namespace

TEST_F(RegexPart, IsNotLoadedBeforeItIsNeeded)
{
    GivePart();
    EXPECT_EQ("done\nno part\nkey\nlibpcre2-8 libtoolkit-regex\n", Ask({"session", "maps", "find", "maps"}));
    EXPECT_EQ("done\nno part\n" + std::string(c_strClassic) + "libpcre2-8 libtoolkit-regex\n",
              Ask({"session", "maps", "classic", "maps"}));
}

TEST_F(RegexPart, IsLoadedOnceByManyThreads)
{
    GivePart();
    EXPECT_EQ("8\nlibpcre2-8 libtoolkit-regex\n", Ask({"finds", "maps"}));
}

TEST_F(RegexPart, IsLoadedByAForkedChildOrBeforeIt)
{
    GivePart();
    EXPECT_EQ("found\nno part\nkey\nfound\n", Ask({"child", "maps", "find", "child"}));
}

TEST_F(RegexPart, IsAFailureOrAnExceptionWhereItIsMissing)
{
    const std::string why = "No such file or directory";
    EXPECT_EQ("done\n" + FindFails(why) + ClassicFails(why) + CannotLoad(why) + "\nno part\n",
              Ask({"session", "find", "classic", "record", "maps"}));
}

TEST_F(RegexPart, IsLookedForAgainAtTheNextCall)
{
    const std::string why = "No such file or directory";
    EXPECT_EQ(ClassicFails(why) + FindFails(why) + "done\n" + c_strClassic + "key\n",
              Ask({"classic", "find", GivingPart(), "classic", "find"}));
}

TEST_F(RegexPart, FailsWithTheReasonWhereItsFileIsNoPart)
{
    std::filesystem::copy_file(TOOLKIT_ICU_PART, Part());
    EXPECT_EQ(FindFails("it is no part of this library") + ClassicFails("it is no part of this library"),
              Ask({"find", "classic"}));
}
