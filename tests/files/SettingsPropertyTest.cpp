// SPDX-License-Identifier: MIT
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/Settings.h"

using namespace std::string_literals;
using Toolkit::Result;
using Toolkit::Settings;
using ToolkitTest::ReadBytes;

namespace
{

using Wide = Toolkit::TString<wchar_t>;
using Keys = std::vector<std::pair<std::string, std::string>>;
using Model = std::vector<std::pair<std::string, Keys>>;

// Small alphabets, so that names meet and special characters stand in special places.
class RandomTexts
{
public:
    explicit RandomTexts(unsigned int seed) : m_random(seed) {}

    std::size_t Below(std::size_t bound) { return m_random() % bound; }

    std::string Of(const std::vector<std::string>& pieces, std::size_t longest)
    {
        std::string text;
        for (std::size_t left = Below(longest + 1); left > 0; --left)
            text += pieces[Below(pieces.size())];
        return text;
    }

    std::string File()
    {
        return Of({"[a]", "[b]", "[",  "]",    "a",  "b",      "=",   " ",     "\t",      ";",
                   "\n",  "\n",  "\n", "\r\n", "\r", "\u00f6", "\0"s, "a=1\n", "b = 2\n", "; c\n"},
                  40);
    }

    std::string Name() { return Of({"a", "b", "[", "]", "=", " ", ";", "\u00f6", "\n", "\xFF", "\0"s}, 2); }
    std::string Value()
    {
        return Of({"a", "1", "[", "]", "=", " ", ";", "\u00f6", "\r", "\xC3", "\t", "\0"s}, 4);
    }

private:
    std::mt19937 m_random;
};

// Text in UTF-16 or UTF-32.
std::string Encoded(const std::u32string& text, std::size_t unit, bool big)
{
    std::string bytes;
    const auto append = [&](std::uint32_t value)
    {
        for (std::size_t i = 0; i < unit; ++i)
            bytes += static_cast<char>(value >> (8 * (big ? unit - 1 - i : i)) & 0xFF);
    };
    for (const char32_t letter : text)
        if (unit == 2 && letter > 0xFFFF)
        {
            append(0xD800 + ((letter - 0x10000) >> 10));
            append(0xDC00 + (letter & 0x3FF));
        }
        else
            append(letter);
    return bytes;
}

Model Held(const Settings& settings)
{
    Model model;
    for (const std::string& section : settings.Sections())
    {
        Keys keys;
        for (const std::string& key : settings.Keys(section))
            keys.emplace_back(key, settings.Get(section, key, "none"));
        model.emplace_back(section, keys);
    }
    return model;
}

void SetIn(Model& model, const std::string& section, const std::string& key, const std::string& value)
{
    for (auto& [name, keys] : model)
        if (name == section)
        {
            for (auto& [each, held] : keys)
                if (each == key)
                {
                    held = value;
                    return;
                }
            keys.emplace_back(key, value);
            return;
        }
    model.push_back({section, {{key, value}}});
}

void RemoveIn(Model& model, const std::string& section, const std::string& key)
{
    for (auto& [name, keys] : model)
        if (name == section)
            for (auto each = keys.begin(); each != keys.end(); ++each)
                if (each->first == key)
                {
                    keys.erase(each);
                    return;
                }
}

// The lines that say nothing, but for the empty ones.
std::vector<std::string> Comments(const std::string& text)
{
    std::vector<std::string> comments;
    for (std::size_t begin = 0; begin < text.size();)
    {
        const std::size_t end = std::min(text.find_first_of("\r\n", begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        const bool section = line.size() >= 2 && line.front() == '[' && line.back() == ']';
        if (!line.empty() && !section && (line.front() == ';' || line.find('=') == line.npos))
            comments.push_back(line);
        begin = end + 1;
    }
    return comments;
}

} // namespace

TEST(SettingsProperty, SavingWithoutAChangeGivesTheSameBytes)
{
    const ToolkitTest::TemporaryFolder folder;
    const std::string path = folder.Path("a.ini");
    const std::string marks[] = {
        "", "", "", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", "\xFF\xFE\0\0"s, "\0\0\xFE\xFF"s};
    RandomTexts random(1);
    int loaded = 0;
    for (int round = 0; round < 800; ++round)
    {
        const std::string bytes =
            marks[random.Below(8)] + random.File() + (random.Below(9) == 0 ? "\xFF" : "");
        ToolkitTest::WriteBytes(path, bytes);
        Result<Settings> settings = Settings::Load(path);
        ASSERT_EQ(settings.has_value(), Toolkit::IniFile(folder.Wide("a.ini")).IsLoaded())
            << testing::PrintToString(bytes);
        if (!settings)
            continue;
        ++loaded;
        ASSERT_TRUE(settings->Save());
        ASSERT_EQ(ReadBytes(path), bytes);
    }
    EXPECT_GT(loaded, 300);
}

// Wide files of characters of every kind, and of what is none.
TEST(SettingsProperty, SavingAWideFileWithoutAChangeGivesTheSameBytes)
{
    const ToolkitTest::TemporaryFolder folder;
    const std::string path = folder.Path("a.ini");
    const std::vector<std::u32string> pieces = {
        U"[a]", U"b=1",    U"=",          U";",      U"\n",     U"\r\n",       U"\r",
        U" ",   U"\u00f6", U"\U0001F600", U"\uFEFF", U"\uFFFE", U"\U0010FFFF", std::u32string(1, 0),
        U"a",   U"\u2028"};
    RandomTexts random(4);
    int loaded = 0;
    for (int round = 0; round < 150; ++round)
    {
        const std::size_t unit = random.Below(2) == 0 ? 2 : 4;
        const bool big = random.Below(2) == 0;
        std::u32string text = U"\uFEFF";
        for (std::size_t left = random.Below(20); left > 0; --left)
            text += pieces[random.Below(pieces.size())];
        if (random.Below(8) == 0)
            text += static_cast<char32_t>(0xD800 + random.Below(0x800));
        std::string bytes = Encoded(text, unit, big);
        bytes.resize(bytes.size() - (random.Below(8) == 0 ? 1 : 0));
        ToolkitTest::WriteBytes(path, bytes);
        Result<Settings> settings = Settings::Load(path);
        if (!settings)
            continue;
        ++loaded;
        ASSERT_TRUE(settings->Save());
        ASSERT_EQ(ReadBytes(path), bytes);
        // There and back again, so that it is really written.
        ASSERT_TRUE(settings->Set("new section", "k", 1));
        ASSERT_TRUE(settings->Save());
        ASSERT_EQ(Settings::Load(path)->Get("new section", "k", 0), 1);
        ASSERT_EQ(ReadBytes(path).compare(0, bytes.size(), bytes), 0) << testing::PrintToString(bytes);
    }
    EXPECT_GT(loaded, 80);
}

TEST(SettingsProperty, HoldsWhatIniFileHolds)
{
    const ToolkitTest::TemporaryFolder folder;
    RandomTexts random(2);
    for (int round = 0; round < 800; ++round)
    {
        const std::string bytes = random.File();
        ToolkitTest::WriteBytes(folder.Path("a.ini"), bytes);
        const Settings settings = Settings::Load(folder.Path("a.ini")).value();
        const Toolkit::IniFile ini(folder.Wide("a.ini"));
        for (const auto& [section, keys] : Held(settings))
        {
            if (section.find('\0') != section.npos)
                continue;
            const Wide wide = Toolkit::UTF8::ToUNICODE(section);
            std::vector<Wide> listed;
            ini.GetKeyList(wide, listed);
            ASSERT_TRUE(ini.HasSection(wide));
            ASSERT_EQ(listed.size(), keys.size()) << testing::PrintToString(bytes);
            for (const auto& [key, value] : keys)
            {
                if ((key + value).find('\0') != std::string::npos)
                    continue;
                const Wide held = ini.GetValue(wide, Toolkit::UTF8::ToUNICODE(key), L"none");
                ASSERT_EQ(Toolkit::UTF8::ToUTF8(held), value);
            }
        }
    }
}

TEST(SettingsProperty, WhateverIsSetIsReadBackAndEverythingElseStays)
{
    const ToolkitTest::TemporaryFolder folder;
    const std::string path = folder.Path("a.ini");
    RandomTexts random(3);
    int taken = 0;
    for (int round = 0; round < 200; ++round)
    {
        const std::string before = random.File();
        ToolkitTest::WriteBytes(path, before);
        Settings settings = Settings::Load(path).value();
        Model model = Held(settings);
        for (int operation = 0; operation < 40; ++operation)
        {
            const std::string section = random.Name();
            const std::string key = random.Name();
            const std::string value = random.Value();
            if (random.Below(4) == 0)
            {
                const bool had = settings.Has(section, key);
                ASSERT_EQ(settings.Remove(section, key), had);
                RemoveIn(model, section, key);
            }
            else if (settings.Set(section, key, value))
            {
                ++taken;
                SetIn(model, section, key, value);
                ASSERT_EQ(settings.Get(section, key, "none"), value);
            }
            ASSERT_EQ(Held(settings), model) << testing::PrintToString(before);
        }
        ASSERT_TRUE(settings.Save());
        const std::string after = ReadBytes(path);
        ASSERT_EQ(Held(Settings::Load(path).value()), model)
            << testing::PrintToString(before) << testing::PrintToString(after);
        ASSERT_EQ(Comments(after), Comments(before))
            << testing::PrintToString(before) << testing::PrintToString(after);
    }
    EXPECT_GT(taken, 1500);
}

TEST(SettingsProperty, ChangesOfTheSameKeyAreLetGoOf)
{
    const ToolkitTest::TemporaryFolder folder;
    Settings settings = Settings::LoadOrNew(folder.Path("a.ini")).value();
    const std::string value(1000, 'x');
    const auto change = [&](int rounds)
    {
        for (int i = 0; i < rounds; ++i)
            ASSERT_TRUE(settings.Set("a", "b", i % 2 == 0 ? value : "short"));
    };
    change(1000);
    const std::size_t before = ToolkitTest::ResidentBytes();
    // 100 MB, if none of it were let go of.
    change(200000);
    if (!ToolkitTest::HasSanitizersHeap())
    {
        EXPECT_LT(ToolkitTest::ResidentBytes(), before + 20000000);
    }
    EXPECT_EQ(settings.Keys("a").size(), 1U);
}

TEST(SettingsProperty, ManyKeysComeAndGo)
{
    const ToolkitTest::TemporaryFolder folder;
    Settings settings = Settings::LoadOrNew(folder.Path("a.ini")).value();
    for (int i = 0; i < 20000; ++i)
        ASSERT_TRUE(settings.Set("s" + std::to_string(i % 100), "k" + std::to_string(i), i));
    ASSERT_TRUE(settings.Save());
    EXPECT_EQ(Settings::Load(folder.Path("a.ini"))->Get("s7", "k1907", 0), 1907);
    for (int i = 0; i < 20000; ++i)
        ASSERT_TRUE(settings.Remove("s" + std::to_string(i % 100), "k" + std::to_string(i)));
    EXPECT_EQ(settings.Sections().size(), 100U);
    ASSERT_TRUE(settings.Save());
    EXPECT_TRUE(Settings::Load(folder.Path("a.ini"))->Keys("s7").empty());
}
