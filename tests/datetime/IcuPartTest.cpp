// SPDX-License-Identifier: MIT
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/PartOfLibrary.h"
#include "tests/support/Sanitized.h"

// The part that is linked with ICU.

namespace
{

const char c_strDate[] = "2. M\u00E4rz 2026 um 14:05:09 UTC\n";
const char c_strDateWithoutIcu[] = "2026-03-02T14:05:09+00:00\n";

class IcuPart : public ToolkitTest::PartOfLibrary
{
protected:
    IcuPart() : PartOfLibrary({TOOLKIT_LIBRARY, TOOLKIT_ICU_PART, TOOLKIT_ASK_PARTS}) {}
};

} // namespace

TEST_F(IcuPart, IsNotLoadedBeforeItIsNeeded)
{
    GivePart();
    EXPECT_EQ("done\nno part\n" + std::string(c_strDate) + "libicuuc libtoolkit-icu\n",
              Ask({"session", "maps", "date", "maps"}));
}

TEST_F(IcuPart, IsLoadedOnceByManyThreads)
{
    GivePart();
    EXPECT_EQ("8\nlibicuuc libtoolkit-icu\n", Ask({"dates", "maps"}));
}

TEST_F(IcuPart, IsReplacedByDocumentedAnswersWhereItIsMissing)
{
    const std::string why = CannotLoad("No such file or directory");
    EXPECT_EQ("done\n" + std::string(c_strDateWithoutIcu) +
                  "MM/dd/yy HH:mm\n"
                  "not supported: cannot convert from iso-8859-1 to utf-8: " +
                  why +
                  "\n"
                  "1 cannot extract gr\u00FCn.txt: its name is not compared with the others: " +
                  why + "\nno part\n",
              Ask({"session", "date", "format", "charset", "names", "maps"}));
}

TEST_F(IcuPart, IsLookedForAgainAtTheNextCall)
{
    EXPECT_EQ("MM/dd/yy HH:mm\n" + std::string(c_strDateWithoutIcu) + "done\ndd.MM.yy HH:mm\n" + c_strDate +
                  "gr\u00FCn\n2\n",
              Ask({"format", "date", GivingPart(), "format", "date", "charset", "names"}));
}

TEST_F(IcuPart, FailsWithTheReasonWhereItsFileIsNoPart)
{
    ToolkitTest::WriteBytes(Part(), "a text");
    EXPECT_EQ("not supported: cannot convert from iso-8859-1 to utf-8: " + CannotLoad("it is no library") +
                  "\n",
              Ask({"charset"}));
    std::filesystem::remove(Part());
    std::filesystem::copy_file(TOOLKIT_ANSWER, Part());
    EXPECT_EQ("not supported: cannot convert from iso-8859-1 to utf-8: " +
                  CannotLoad("it is no part of this library") + "\n",
              Ask({"charset"}));
}

TEST_F(IcuPart, IsLoadedWhenThereIsMemoryAgain)
{
    if (ToolkitTest::s_bSanitized)
        GTEST_SKIP() << "a sanitizer needs all of the address space";
    GivePart();
    const std::string said = Ask({"short", "charset", "date", "full", "charset", "date"});
    EXPECT_EQ(0U,
              said.find("done\nnot supported: cannot convert from iso-8859-1 to utf-8: " + CannotLoad("")))
        << said;
    EXPECT_NE(said.npos, said.find(c_strDateWithoutIcu + std::string("done\ngr\u00FCn\n") + c_strDate))
        << said;
}

TEST_F(IcuPart, IsFoundFromARelativePathAfterAChangeOfFolder)
{
    GivePart();
    EXPECT_EQ("done\n" + std::string(c_strDate), Ask({"folder=/", "date"}, "../lib"));
}
