// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipNameConverter.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"

using Toolkit::ZipNameConverter;

// wxWidgets asks for the local character set when a process begins: the test runs itself once more.
TEST(ZipNameConverter, DecodesByTheLocalCharacterSetWhatIsNoUtf8)
{
    const std::string locale = "ru_RU.KOI8-R";
    const char* const now = std::getenv("LC_ALL");
    if (now != nullptr && now == locale)
    {
        EXPECT_EQ(L"caf\u0418", ZipNameConverter::Decode("caf\xE9"));
        EXPECT_EQ(L"\u042F\u042A", ZipNameConverter::Decode("\xF1\xFF"));
        EXPECT_EQ(L"\u00FC", ZipNameConverter::Decode("\xC3\xBC"));
        EXPECT_EQ(L"plain", ZipNameConverter::Decode("plain"));
        return;
    }
    const ToolkitTest::TemporaryFolder folder;
    const std::string make = "localedef -c -i ru_RU -f KOI8-R '" + folder.Path(locale) + "' >/dev/null 2>&1";
    if (std::system(make.c_str()) != 0)
        GTEST_SKIP() << "no locale with a character set of its own can be made";
    const std::string again = "LOCPATH='" + folder.Path() + "' LC_ALL=" + locale + " '" +
                              std::filesystem::read_symlink("/proc/self/exe").string() +
                              "' --gtest_filter=ZipNameConverter.DecodesByTheLocal*";
    EXPECT_EQ(0, std::system(again.c_str()));
}

TEST(ZipNameConverter, KeepsTheTerminatingZeroOfATextWithoutALength)
{
    const ZipNameConverter& converter = ZipNameConverter::Instance();
    EXPECT_EQ(5U, converter.ToWChar(nullptr, 0, "name", wxNO_LEN));
    wchar_t text[] = L"-----";
    EXPECT_EQ(5U, converter.ToWChar(text, 5, "name", wxNO_LEN));
    EXPECT_EQ(std::wstring(L"name"), text);
}

TEST(ZipNameConverter, WritesNothingWhereTooLittleRoomIsLeft)
{
    wchar_t text[] = L"---";
    EXPECT_EQ(wxCONV_FAILED, ZipNameConverter::Instance().ToWChar(text, 3, "name", 4));
    EXPECT_EQ(std::wstring(L"---"), text);
}

TEST(ZipNameConverter, ConvertsInOneDirectionOnly)
{
    char bytes[8] = "";
    EXPECT_EQ(wxCONV_FAILED, ZipNameConverter::Instance().FromWChar(bytes, sizeof bytes, L"name", 4));
}

TEST(ZipNameConverter, CopyDecodesAsTheOriginal)
{
    const std::unique_ptr<wxMBConv> copy(ZipNameConverter::Instance().Clone());
    wchar_t text[2] = L"";
    EXPECT_EQ(1U, copy->ToWChar(text, 2, "\xC3\xBC", 2));
    EXPECT_EQ(L'\u00FC', text[0]);
}
