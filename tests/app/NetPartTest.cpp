// SPDX-License-Identifier: MIT
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/PartOfLibrary.h"

// The part that is linked with wxWidgets' net library.

namespace
{

class NetPart : public ToolkitTest::PartOfLibrary
{
protected:
    NetPart() : PartOfLibrary({TOOLKIT_LIBRARY, TOOLKIT_NET_PART, TOOLKIT_ASK_PARTS}) {}

    // What a server logs of two calls of `Run`.
    std::string Logged(const std::string& why) const
    {
        return "does not listen; " + CannotLoad(why) + "; " + CannotLoad(why) + "\n";
    }
};

} // namespace

TEST_F(NetPart, IsNotLoadedBeforeItIsNeeded)
{
    GivePart();
    EXPECT_EQ("done\nno part\nlistens\nlibtoolkit-net libwx_baseu_net-3.2\n",
              Ask({"session", "maps", "server", "maps"}));
}

TEST_F(NetPart, ServerDoesNotListenWhereItIsMissing)
{
    EXPECT_EQ("done\n" + Logged("No such file or directory") + "no part\n",
              Ask({"session", "server", "maps"}));
}

TEST_F(NetPart, IsLookedForAgainByTheNextServer)
{
    EXPECT_EQ(Logged("No such file or directory") + "done\nlistens\n",
              Ask({"server", GivingPart(), "server"}));
}

TEST_F(NetPart, FailsWithTheReasonWhereItsFileIsNoPart)
{
    std::filesystem::copy_file(TOOLKIT_ICU_PART, Part());
    EXPECT_EQ(Logged("it is no part of this library"), Ask({"server"}));
}
