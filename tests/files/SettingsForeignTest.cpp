// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/Text.h"
#include "toolkit/files/Settings.h"

using namespace std::string_literals;
using testing::ElementsAreArray;
using Toolkit::Result;
using Toolkit::Settings;
using Toolkit::Text;

namespace
{

struct Value
{
    std::string section, key, text;
};

// A file in the way of some other program: what it says, and one change, which must touch one line alone.
struct Sample
{
    std::string name;
    std::string bytes;
    std::vector<std::string> sections;
    std::vector<Value> values;
    Value change;
    // The line that is changed, or after which one is added, and what stands in its place then.
    std::string before, after;
};

std::string Crlf(const std::string& text)
{
    std::string made;
    for (const char letter : text)
        made += letter == '\n' ? "\r\n"s : std::string(1, letter);
    return made;
}

std::string Utf16(const std::string& text)
{
    std::string made = "\xFF\xFE";
    for (const wchar_t letter : Text::ToWide(text).value())
    {
        made += static_cast<char>(letter & 0xFF);
        made += static_cast<char>(letter >> 8 & 0xFF);
    }
    return made;
}

const Sample s_samples[] = {
    {"a desktop entry",
     "#!/usr/bin/env xdg-open\n"
     "[Desktop Entry]\n"
     "Type=Application\n"
     "Name=Watch\n"
     "Name[de]=W\u00e4chter\n"
     "Exec=watch --open %F\n"
     "Categories=Utility;Office;\n"
     "\n"
     "[Desktop Action New]\n"
     "Name=New Window\n",
     {"Desktop Entry", "Desktop Action New"},
     {{"Desktop Entry", "Name", "Watch"},
      {"Desktop Entry", "Name[de]", "W\u00e4chter"},
      {"Desktop Entry", "Categories", "Utility;Office;"},
      {"Desktop Action New", "Name", "New Window"}},
     {"Desktop Entry", "Exec", "watch %U"},
     "Exec=watch --open %F\n",
     "Exec=watch %U\n"},
    {"a systemd unit",
     "# A service.\n"
     "\n"
     "[Unit]\n"
     "Description=Watches mail\n"
     "After=network-online.target \\\n"
     "      dbus.service\n"
     "\n"
     "[Service]\n"
     "Environment=\"A=1\" \"B=two words\"\n"
     "Environment=C=3\n"
     "ExecStart=\n"
     "ExecStart=/usr/bin/watch -f\n"
     "#Restart=always\n",
     {"Unit", "Service"},
     {{"Unit", "After", "network-online.target \\"},
      {"Service", "Environment", "\"A=1\" \"B=two words\""},
      {"Service", "ExecStart", ""},
      {"Service", "#Restart", "always"}},
     {"Service", "Restart", "on-failure"},
     "#Restart=always\n",
     "#Restart=always\nRestart=on-failure\n"},
    {"a configuration of git",
     "[user]\n"
     "\tname = A. Developer\n"
     "\temail = developer@example.org\n"
     "[remote \"origin\"]\n"
     "\turl = https://example.org/a.git ; the first one\n"
     "\tfetch = +refs/heads/*:refs/remotes/origin/*\n"
     "[alias]\n"
     "\tlg = log --format='%h = %s' # short\n"
     "[core]\n"
     "\tbare\n",
     {"user", "remote \"origin\"", "alias", "core"},
     {{"user", "name", "A. Developer"},
      {"remote \"origin\"", "fetch", "+refs/heads/*:refs/remotes/origin/*"},
      {"remote \"origin\"", "url", "https://example.org/a.git ; the first one"},
      {"alias", "lg", "log --format='%h = %s' # short"}},
     {"user", "email", "other@example.org"},
     "\temail = developer@example.org\n",
     "\temail = other@example.org\n"},
    {"a configuration of Samba",
     "#======================= Global Settings =======================\n"
     "[global]\n"
     "   workgroup = WORKGROUP\n"
     ";   wins support = no\n"
     "   log file = /var/log/samba/log.%m\n"
     "   max log size = 1000\n"
     "   unix password sync = yes\n"
     "\n"
     "[print$]\n"
     "   path = /var/lib/samba/printers\n",
     {"global", "print$"},
     {{"global", "log file", "/var/log/samba/log.%m"}, {"print$", "path", "/var/lib/samba/printers"}},
     {"global", "max log size", "50"},
     "   max log size = 1000\n",
     "   max log size = 50\n"},
    {"a php.ini",
     "[PHP]\n"
     "\n"
     ";;;;;;;;;;;;;;;;;;;\n"
     "; About php.ini   ;\n"
     ";;;;;;;;;;;;;;;;;;;\n"
     "engine = On\n"
     "error_reporting = E_ALL & ~E_DEPRECATED\n"
     "memory_limit = 128M\n"
     "variables_order = \"GPCS\"\n"
     "extension_dir =\n"
     "[mail function]\n"
     "SMTP = localhost\n"
     "smtp_port = 25\n",
     {"PHP", "mail function"},
     {{"PHP", "engine", "On"},
      {"PHP", "variables_order", "\"GPCS\""},
      {"PHP", "extension_dir", ""},
      {"mail function", "smtp_port", "25"}},
     {"PHP", "extension_dir", "/usr/lib/php"},
     "extension_dir =\n",
     "extension_dir =/usr/lib/php\n"},
    {"a my.cnf",
     "!includedir /etc/mysql/conf.d/\n"
     "[client]\n"
     "port            = 3306\n"
     "[mysqld]\n"
     "skip-external-locking\n"
     "bind-address    = 127.0.0.1\n"
     "sql_mode        = \"STRICT_ALL_TABLES,NO_ZERO_DATE\"\n",
     {"client", "mysqld"},
     {{"client", "port", "3306"}, {"mysqld", "sql_mode", "\"STRICT_ALL_TABLES,NO_ZERO_DATE\""}},
     {"mysqld", "bind-address", "::1"},
     "bind-address    = 127.0.0.1\n",
     "bind-address    = ::1\n"},
    {"an .editorconfig",
     "root = true\n"
     "\n"
     "[*]\n"
     "end_of_line = lf\n"
     "[*.{h,cpp}]\n"
     "indent_size=4\n"
     "[Makefile]\n"
     "indent_style = tab",
     {"*", "*.{h,cpp}", "Makefile"},
     {{"*", "end_of_line", "lf"}, {"*.{h,cpp}", "indent_size", "4"}, {"Makefile", "indent_style", "tab"}},
     {"Makefile", "tab_width", "8"},
     "indent_style = tab",
     "indent_style = tab\ntab_width = 8"},
    {"settings of Qt",
     "[%General]\n"
     "geometry=@ByteArray(\\x1\\xd9\\xd0\\xcb\\0\\x2)\n"
     "recent\\1\\file=/home/a/b.txt\n"
     "recent\\size=1\n"
     "title=\"semi;colon, comma\"\n",
     {"%General"},
     {{"%General", "geometry", "@ByteArray(\\x1\\xd9\\xd0\\xcb\\0\\x2)"},
      {"%General", "recent\\1\\file", "/home/a/b.txt"}},
     {"%General", "recent\\size", "2"},
     "recent\\size=1\n",
     "recent\\size=2\n"},
    {"profiles.ini of Windows",
     Crlf("[Profile0]\n"
          "Name=default\n"
          "IsRelative=1\n"
          "Path=Profiles/ab12.default\n"
          "\n"
          "[General]\n"
          "StartWithLastProfile=1\n"),
     {"Profile0", "General"},
     {{"Profile0", "Path", "Profiles/ab12.default"}, {"General", "StartWithLastProfile", "1"}},
     {"General", "Version", "2"},
     "StartWithLastProfile=1\r\n",
     "StartWithLastProfile=1\r\nVersion=2\r\n"},
    {"a file with a mark",
     "\xEF\xBB\xBF[InternetShortcut]\r\nURL=https://example.org/?a=b&c=d\r\nIconIndex=0\r\n",
     {"InternetShortcut"},
     {{"InternetShortcut", "URL", "https://example.org/?a=b&c=d"}, {"InternetShortcut", "IconIndex", "0"}},
     {"InternetShortcut", "IconIndex", "7"},
     "IconIndex=0\r\n",
     "IconIndex=7\r\n"},
    {"a desktop.ini in UTF-16",
     Utf16(Crlf("[.ShellClassInfo]\nInfoTip=Gr\u00f6\u00dfe \u20ac\nIconFile=a.dll,-3\n")),
     {".ShellClassInfo"},
     {{".ShellClassInfo", "InfoTip", "Gr\u00f6\u00dfe \u20ac"}, {".ShellClassInfo", "IconFile", "a.dll,-3"}},
     {".ShellClassInfo", "IconFile", "b.dll"},
     Utf16(Crlf("a.dll,-3\n")).substr(2),
     Utf16(Crlf("b.dll\n")).substr(2)},
    {"a registry in text",
     "WINE REGISTRY Version 2\n"
     ";; All keys relative to \\\\User\n"
     "\n"
     "[Software\\\\Example] 1700000000\n"
     "\"Level\"=dword:00000002\n"
     "[Control Panel\\\\Mouse]\n"
     "\"Speed\"=\"1\"\n",
     {"Control Panel\\\\Mouse"},
     {{"Control Panel\\\\Mouse", "\"Speed\"", "\"1\""}},
     {"Control Panel\\\\Mouse", "\"Speed\"", "\"2\""},
     "\"Speed\"=\"1\"\n",
     "\"Speed\"=\"2\"\n"},
    {"a connection of NetworkManager",
     "[connection]\nid=Wired\nuuid=00000000-0000-0000-0000-000000000000\n\n[ipv4]\naddress1=10.0.0.2/24,"
     "10.0.0.1\nmethod=manual\n\n[proxy]\n",
     {"connection", "ipv4", "proxy"},
     {{"ipv4", "address1", "10.0.0.2/24,10.0.0.1"}},
     {"proxy", "method", "none"},
     "[proxy]\n",
     "[proxy]\nmethod=none\n"},
    {"a setup.cfg",
     "[metadata]\nname = sample\nclassifiers =\n    Programming Language :: Python\n    Topic = other\n\n"
     "[options.extras_require]\ntests = pytest; python_version>='3.8'\n",
     {"metadata", "options.extras_require"},
     {{"metadata", "classifiers", ""},
      {"metadata", "Topic", "other"},
      {"options.extras_require", "tests", "pytest; python_version>='3.8'"}},
     {"metadata", "name", "Gr\u00f6\u00dfe"},
     "name = sample\n",
     "name = Gr\u00f6\u00dfe\n"},
};

// A file of its own with the bytes of a sample.
class SampleFile
{
public:
    explicit SampleFile(const Sample& sample) { ToolkitTest::WriteBytes(Path(), sample.bytes); }

    std::string Path() const { return m_folder.Path("file"); }
    std::string Content() const { return ToolkitTest::ReadBytes(Path()); }

private:
    const ToolkitTest::TemporaryFolder m_folder;
};

} // namespace

TEST(SettingsForeign, AreRead)
{
    for (const Sample& sample : s_samples)
    {
        const SampleFile file(sample);
        const Settings settings = Settings::Load(file.Path()).value();
        EXPECT_THAT(settings.Sections(), ElementsAreArray(sample.sections)) << sample.name;
        for (const auto& [section, key, text] : sample.values)
            EXPECT_EQ(text, settings.Read<std::string>(section, key)->value_or("missing"))
                << sample.name << ": " << section << '/' << key;
    }
}

TEST(SettingsForeign, StayWithoutAChange)
{
    for (const Sample& sample : s_samples)
    {
        SCOPED_TRACE(sample.name);
        const SampleFile file(sample);
        Settings settings = Settings::Load(file.Path()).value();
        EXPECT_TRUE(settings.Save());
        EXPECT_EQ(sample.bytes, file.Content());
        // There and back again, so that it is really written.
        const auto& [section, key, text] = sample.values.front();
        EXPECT_TRUE(settings.Set(section, key, "something else"));
        EXPECT_TRUE(settings.Save());
        EXPECT_NE(sample.bytes, file.Content());
        EXPECT_TRUE(settings.Set(section, key, text));
        EXPECT_TRUE(settings.Save());
        EXPECT_EQ(sample.bytes, file.Content());
    }
}

TEST(SettingsForeign, ChangeInOneLineAlone)
{
    for (const Sample& sample : s_samples)
    {
        SCOPED_TRACE(sample.name);
        const SampleFile file(sample);
        const auto& [section, key, text] = sample.change;
        Settings settings = Settings::Load(file.Path()).value();
        EXPECT_TRUE(settings.Set(section, key, text));
        EXPECT_TRUE(settings.Save());
        std::string expected = sample.bytes;
        const std::size_t place = expected.find(sample.before);
        ASSERT_NE(std::string::npos, place);
        EXPECT_EQ(expected.replace(place, sample.before.size(), sample.after), file.Content());
        EXPECT_EQ(text, Settings::Load(file.Path())->Get(section, key, "missing"));
    }
}
