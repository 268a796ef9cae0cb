// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_IPCSERVERFIXTURE_H
#define TOOLKIT_TESTS_SUPPORT_IPCSERVERFIXTURE_H

#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <wx/ipcbase.h>

#include "tests/support/IPCSupport.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/ToolkitSession.h"

namespace ToolkitTest
{

// A server's test has a folder for its socket file, and the library.
class IPCServerTest : public testing::Test
{
protected:
    std::wstring Service(const std::string& name = "s") const { return m_folder.Wide(name); }
    std::string Path(const std::string& name = "s") const { return m_folder.Path(name); }

    const TemporaryFolder m_folder;
    const Toolkit::ToolkitSession m_session;
};

// The format of a client's commands, as a byte of the protocol.
const int s_iUTF8 = wxIPC_UTF8TEXT;

inline Toolkit::smart_ptr<Toolkit::IPCConnectionEvent> Calling(CommandCall::Call call)
{
    return Toolkit::smart_ptr<Toolkit::IPCConnectionEvent>(new CommandCall(std::move(call)));
}

} // namespace ToolkitTest

#endif
