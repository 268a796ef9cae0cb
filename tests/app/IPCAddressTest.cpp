// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCAddress.h"

#include <cstring>
#include <filesystem>
#include <string>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

#include "toolkit/app/IPCServer.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::IPCAddress;
using Toolkit::IPCServer;
using Toolkit::PathManager;
using Toolkit::smart_ptr;

namespace
{

const std::size_t s_uLongest = 107;

std::string PathOf(const std::wstring& service)
{
    return IPCAddress(service).GetPath();
}

std::string Folder(const std::string& path)
{
    return std::filesystem::path(path).parent_path().string();
}

} // namespace

TEST(IPCAddress, TakesDigitsForAPortOfThisMachine)
{
    struct Row
    {
        const wchar_t* m_strService;
        int m_iPort;
    };
    for (const Row& row : {Row{L"1", 1}, {L"4711", 4711}, {L"65535", 65535}, {L"00080", 80}})
    {
        const IPCAddress address(row.m_strService);
        ASSERT_TRUE(address.IsValid()) << row.m_iPort;
        EXPECT_FALSE(address.IsLocal());
        ASSERT_EQ(AF_INET, address.GetFamily());
        sockaddr_in inet = {};
        std::memcpy(&inet, address.Get(), sizeof inet);
        EXPECT_EQ(row.m_iPort, ntohs(inet.sin_port));
        EXPECT_STREQ("127.0.0.1", inet_ntoa(inet.sin_addr));
    }
}

TEST(IPCAddress, RefusesWhatIsNoPortAndNoPath)
{
    const std::wstring rows[] = {L"",
                                 L"0",
                                 L"00000",
                                 L"65536",
                                 L"99999999999999999999999999",
                                 std::wstring(L"/tmp/a\0b", 8),
                                 std::wstring(L"/tmp/a") + wchar_t(0xd800),
                                 std::wstring(L"/tmp/a") + wchar_t(0x110000)};
    for (const std::wstring& row : rows)
        EXPECT_FALSE(IPCAddress(row).IsValid()) << testing::PrintToString(row);
}

TEST(IPCAddress, TakesAnyOtherTextForAPath)
{
    for (const char* const path :
         {"/tmp/x.ipc", "x", "http", "-1", "+1", " 80", "80 ", "1.5", "./80", "\xe4\xb8\xad"})
    {
        const IPCAddress address(Toolkit::UTF8::ToUNICODE(path));
        EXPECT_TRUE(address.IsLocal()) << path;
        EXPECT_EQ(AF_UNIX, address.GetFamily()) << path;
        EXPECT_EQ(path, address.GetPath());
    }
}

TEST(IPCAddress, KeepsAPathAsLongAsTheSystemTakesIt)
{
    const std::wstring longest = L"/tmp/" + std::wstring(s_uLongest - 5, L'x');
    EXPECT_EQ(std::string(longest.begin(), longest.end()), PathOf(longest));
    const std::string shortened = PathOf(longest + L"x");
    EXPECT_EQ(s_uLongest, shortened.size());
    EXPECT_EQ("/tmp/xxx", shortened.substr(0, 8));
}

TEST(IPCAddress, ShortensInsideTheFolder)
{
    const std::wstring folder = L"/tmp/" + std::wstring(80, L'f') + L"/";
    const std::string a = PathOf(folder + std::wstring(400, L'n') + L"a");
    const std::string b = PathOf(folder + std::wstring(400, L'n') + L"b");
    EXPECT_EQ(std::string(folder.begin(), folder.end() - 1), Folder(a));
    EXPECT_LE(a.size(), s_uLongest);
    EXPECT_NE(a, b);
    EXPECT_EQ(a, PathOf(folder + std::wstring(400, L'n') + L"a")) << "the same on both sides";
}

TEST(IPCAddress, MovesToTheTemporaryFolderWhenTheFolderAloneIsTooLong)
{
    const std::wstring folder = L"/home/" + std::wstring(200, L'f') + L"/";
    EXPECT_EQ("/tmp", Folder(PathOf(folder + L"a")));
    EXPECT_NE(PathOf(folder + L"a"), PathOf(folder + L"b"));
    EXPECT_NE(PathOf(folder + L"a"), PathOf(L"/home/" + std::wstring(201, L'f') + L"/a"));
}

TEST(IPCAddress, HasNoDefaultWithoutAPathManager)
{
    ASSERT_EQ(nullptr, PathManager::s_pInstance);
    EXPECT_EQ(L"", IPCServer::ServiceOrDefault(L""));
    PathManager::s_pInstance = new smart_ptr<PathManager>;
    EXPECT_EQ(L"", IPCServer::ServiceOrDefault(L""));
    EXPECT_EQ(L"name", IPCServer::ServiceOrDefault(L"name"));
    *PathManager::s_pInstance = smart_ptr<PathManager>(new PathManager);
    EXPECT_EQ(L"/tmp/" + (*PathManager::s_pInstance)->GetUniqueInstanceName() + L".ipc",
              IPCServer::ServiceOrDefault(L""));
    delete PathManager::s_pInstance;
    PathManager::s_pInstance = nullptr;
}

TEST(IPCAddress, CutsNoCharacterInTwo)
{
    for (std::size_t shift = 0; shift < 4; ++shift)
    {
        const std::string path =
            PathOf(L"/tmp/" + std::wstring(shift, L'x') + std::wstring(100, wchar_t(0x1f600)));
        EXPECT_LE(path.size(), s_uLongest);
        EXPECT_EQ(0U, (path.find('~') - 5 - shift) % 4) << path;
    }
}
