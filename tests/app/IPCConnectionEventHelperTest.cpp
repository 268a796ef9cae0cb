// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCConnectionEventHelper.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <gmock/gmock.h>

#include "tests/support/IPCSupport.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/IPCInternalServer.h"

using testing::ElementsAre;
using testing::IsEmpty;
using Toolkit::IPCConnectionEvent;
using Toolkit::IPCConnectionEventHelper;
using Toolkit::IPCInternalServer;
using Toolkit::smart_ptr;
using Toolkit::TString;
using ToolkitTest::CapturedOutput;
using ToolkitTest::CommandCall;
using ToolkitTest::RecordingServer;

static_assert(std::is_base_of_v<wxTCPConnection, IPCConnectionEventHelper>);
static_assert(std::is_base_of_v<wxTCPServer, IPCInternalServer>);

namespace
{

const wxString c_strTopic = "topic";

bool Execute(wxConnectionBase& connection, const std::string& data, wxIPCFormat format)
{
    return connection.OnExecute(c_strTopic, data.data(), data.size(), format);
}

} // namespace

TEST(IPCConnectionEventHelper, TurnsAnExecuteIntoAnEvent)
{
    RecordingServer server(L"/nowhere/s");
    IPCConnectionEventHelper helper(server);
    EXPECT_TRUE(Execute(helper, "open x", wxIPC_UTF8TEXT));
    EXPECT_TRUE(helper.OnExecute(c_strTopic, L"open \u4e2d", 7 * sizeof(wchar_t), wxIPC_UNICODETEXT));
    EXPECT_TRUE(helper.OnExecute(c_strTopic, nullptr, 0, wxIPC_UTF8TEXT));
    EXPECT_THAT(server.Received(), ElementsAre(L"open x", L"open \u4e2d", L""));
}

TEST(IPCConnectionEventHelper, SendsNothingToItsClient)
{
    RecordingServer server(L"/nowhere/s");
    IPCConnectionEventHelper helper(server);
    CapturedOutput errors(2);
    EXPECT_FALSE(helper.Execute(wxString("open x")));
    EXPECT_FALSE(helper.Poke("item", wxString("x")));
    EXPECT_FALSE(helper.Advise("item", wxString("x")));
    EXPECT_FALSE(helper.StartAdvise("item"));
    EXPECT_FALSE(helper.StopAdvise("item"));
    std::size_t size = 1;
    EXPECT_EQ(nullptr, helper.Request("item", &size));
    EXPECT_EQ(0U, size);
    EXPECT_EQ(nullptr, helper.Request("item"));
    EXPECT_TRUE(helper.Disconnect());
    EXPECT_EQ("", errors.Stop());
    EXPECT_THAT(server.Received(), IsEmpty());
}

TEST(IPCConnectionEventHelper, TakesTheBytesOfAnyOtherFormatForUTF8)
{
    RecordingServer server(L"/nowhere/s");
    IPCConnectionEventHelper helper(server);
    EXPECT_TRUE(Execute(helper, std::string("open \xe4\xb8\xad\0x", 10), wxIPC_PRIVATE));
    EXPECT_TRUE(Execute(helper, "oem", wxIPC_OEMTEXT));
    EXPECT_TRUE(Execute(helper, "file", wxIPC_FILENAME));
    EXPECT_TRUE(Execute(helper, "none", wxIPC_INVALID));
    EXPECT_THAT(server.Received(), ElementsAre(L"open \u4e2d", L"oem", L"file", L"none"));
}

TEST(IPCConnectionEventHelper, AcceptsWhatIsNoTextWithoutAnEvent)
{
    RecordingServer server(L"/nowhere/s");
    IPCConnectionEventHelper helper(server);
    EXPECT_TRUE(Execute(helper, "\xff", wxIPC_UTF8TEXT));
    EXPECT_TRUE(Execute(helper, "\xff", wxIPC_PRIVATE));
    EXPECT_TRUE(Execute(helper, std::string(4, '\xff'), wxIPC_UTF32TEXT));
    EXPECT_THAT(server.Received(), IsEmpty());
}

TEST(IPCConnectionEventHelper, AcceptsAnExecuteWithoutAnyListener)
{
    Toolkit::IPCServer server(L"/nowhere/s");
    IPCConnectionEventHelper helper(server);
    EXPECT_TRUE(Execute(helper, "open x", wxIPC_UTF8TEXT));
}

TEST(IPCConnectionEventHelper, LetsTheExceptionOfAListenerPass)
{
    Toolkit::IPCServer server(L"/nowhere/s");
    server.AddListener(smart_ptr<IPCConnectionEvent>(
        new CommandCall([](const TString<wchar_t>&) { throw std::runtime_error("refused"); })));
    IPCConnectionEventHelper helper(server);
    EXPECT_THROW(Execute(helper, "open x", wxIPC_UTF8TEXT), std::runtime_error);
}

TEST(IPCConnectionEventHelper, DeletesItselfWhenItIsDisconnected)
{
    RecordingServer server(L"/nowhere/s");
    wxConnectionBase* const helper = new IPCConnectionEventHelper(server);
    EXPECT_TRUE(helper->OnDisconnect());
}

TEST(IPCInternalServer, AcceptsEveryTopic)
{
    CapturedOutput errors(2);
    RecordingServer server(L"/nowhere/s");
    IPCInternalServer internal(server);
    for (const wxString& topic : {wxString("topic"), wxString(), wxString(1000, 'x')})
    {
        const std::unique_ptr<wxConnectionBase> connection(internal.OnAcceptConnection(topic));
        ASSERT_NE(nullptr, connection);
        EXPECT_NE(nullptr, dynamic_cast<IPCConnectionEventHelper*>(connection.get()));
        EXPECT_TRUE(Execute(*connection, "open x", wxIPC_UTF8TEXT));
    }
    EXPECT_THAT(server.Received(), ElementsAre(L"open x", L"open x", L"open x"));
    EXPECT_EQ("", errors.Stop());
}
