// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/Archives.h"
#include "tests/support/EndChild.h"
#include "tests/support/FolderEntries.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/files/ZipReader.h"

using Toolkit::Errc;
using Toolkit::Failure;
using Toolkit::Result;
using Toolkit::ZipReader;
using Toolkit::ZipReport;
using ToolkitTest::NamesBelow;
using ToolkitTest::ReadBytes;
using ToolkitTest::RunPython;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

// Makes an archive "<kind>.zip" of each kind. Most begin and end with an entry that nothing is wrong with.
const char c_strArchives[] = R"(
def info(name, mode=0o100644):
    i = zipfile.ZipInfo('x', (2026, 3, 2, 14, 5, 8))
    i.filename = name
    i.create_system = 3
    i.external_attr = mode << 16
    return i
def archive(kind, *entries):
    with zipfile.ZipFile(kind + '.zip', 'w', strict_timestamps=False) as z:
        for e in (('first', 'good'), *entries, ('last', 'good')):
            z.writestr(info(*e[:1], *e[2:]), e[1])
def forge(kind, change, method=0, content='bad'):
    with zipfile.ZipFile(kind + '.zip', 'w') as z:
        add(z, 'first', 'good')
        add(z, 'entry', content, method)
        add(z, 'last', 'good')
    data = bytearray(open(kind + '.zip', 'rb').read())
    local = data.index(b'entry') - 30
    record = data.rindex(b'entry') - 46
    open(kind + '.zip', 'wb').write(change(data, local, record) or data)
def put(data, place, form, *values):
    struct.pack_into('<' + form, data, place, *values)

names = {'absolute': '/absolute', 'parent': '../outside', 'parent-within': 'a/../../outside', 'two-dots': '..', 'dot': '.',
         'dot-first': './here', 'empty-part': 'a//b', 'two-slashes': '//host/x', 'drive': 'C:/x', 'drive-relative': 'C:x',
         'backslash': 'a\\b', 'backslash-parent': '..\\outside', 'parent-last': 'a/..', 'nul': 'nul' + chr(0) + 'x', 'root': '/',
         'parent-folder': '../', 'no-name': '', 'long-part': 'x' * 300, 'long-path': 'a/' * 3000 + 'x', 'dot-within': 'a/./b',
         'parent-folder-within': 'a/../b/'}
for kind, name in names.items():
    archive(kind, (name, 'bad'))
archive('link', ('entry', '/etc', 0o120777))
archive('link-and-below', ('entry', '../outside', 0o120777), ('entry/x', 'good'))
archive('fifo', ('entry', 'bad', 0o010644))
archive('device', ('entry', 'bad', 0o020644))
archive('disk', ('entry', 'bad', 0o060644))
archive('socket', ('entry', 'bad', 0o140644))
archive('privileged', ('entry', 'good', 0o106755))
archive('twice', ('first', 'bad'))
archive('case', ('FIRST', 'bad'))
archive('form', ('caf\u00e9', 'good'), ('cafe\u0301', 'bad'))
archive('sharp-s', ('stra\u00dfe', 'good'), ('strasse', 'bad'))
archive('case-of-folder', ('Dir/one', 'good'), ('dir/two', 'bad'))
archive('below-a-file', ('first/below', 'bad'))
archive('folder-and-file', ('folder/', ''), ('folder', 'bad'))
archive('file-and-folder', ('first/', ''))
forge('bomb', lambda d, l, r: None, 8, '0' * (17 << 20))
forge('checksum', lambda d, l, r: put(d, l + 35, 'B', 1))
forge('short-length', lambda d, l, r: put(d, r + 24, 'I', 2))
forge('long-length', lambda d, l, r: put(d, r + 24, 'I', 1 << 30))
forge('huge-length', lambda d, l, r: put(d, r + 24, 'I', 0xFFFFFFFE), 8, 'bad' * 9)
forge('no-long-field', lambda d, l, r: put(d, r + 20, 'II', 0xFFFFFFFF, 0xFFFFFFFF))
forge('encrypted', lambda d, l, r: (put(d, l + 6, 'H', 1), put(d, r + 8, 'H', 1)) and None)
forge('method', lambda d, l, r: (put(d, l + 8, 'H', 99), put(d, r + 10, 'H', 99)) and None)
forge('two-methods', lambda d, l, r: put(d, l + 8, 'H', 8))
forge('packed', lambda d, l, r: put(d, l + 40, 'Q', 2**64 - 1), 8, ''.join(map(str, range(99))))
forge('place', lambda d, l, r: put(d, r + 42, 'I', 0x7FFFFFFF))
forge('place-within', lambda d, l, r: put(d, r + 42, 'I', 7))
forge('local-name', lambda d, l, r: d.__setitem__(slice(l + 30, l + 35), b'../ab'), 0, 'good')
forge('same-content', lambda d, l, r: put(d, r + 42, 'I', 0))
forge('cut', lambda d, l, r: d[:-30])
forge('no-directory', lambda d, l, r: d[:r - 20])
forge('count', lambda d, l, r: put(d, len(d) - 14, 'HH', 9, 9), 0, 'good')
forge('directory-place', lambda d, l, r: put(d, len(d) - 6, 'I', 0x7FFFFFFF))
)";

// The directory and the record before the content disagree about the name in "local-name": that of the
// directory counts. What comes of each kind: the names that are extracted, "," between them, and how many
// entries are refused; or -1 when nothing can be opened.
struct Kind
{
    const char* name;
    const char* extracted;
    int refused;
};

const char c_strRest[] = "first,last";

const Kind s_kinds[] = {
    {"absolute", c_strRest, 1},
    {"parent", c_strRest, 1},
    {"parent-within", c_strRest, 1},
    {"two-dots", c_strRest, 1},
    {"dot", c_strRest, 1},
    {"dot-first", c_strRest, 1},
    {"empty-part", c_strRest, 1},
    {"two-slashes", c_strRest, 1},
    {"drive", c_strRest, 1},
    {"drive-relative", c_strRest, 1},
    {"backslash", c_strRest, 1},
    {"backslash-parent", c_strRest, 1},
    {"parent-last", c_strRest, 1},
    {"nul", c_strRest, 1},
    {"root", c_strRest, 1},
    {"parent-folder", c_strRest, 1},
    {"no-name", c_strRest, 1},
    {"long-part", c_strRest, 1},
    {"long-path", c_strRest, 1},
    {"dot-within", c_strRest, 1},
    {"parent-folder-within", c_strRest, 1},
    {"link", c_strRest, 1},
    {"link-and-below", "first,entry/x,last", 1},
    {"fifo", c_strRest, 1},
    {"device", c_strRest, 1},
    {"disk", c_strRest, 1},
    {"socket", c_strRest, 1},
    {"privileged", "first,entry,last", 0},
    {"twice", c_strRest, 1},
    {"case", c_strRest, 1},
    {"form", "first,caf\u00e9,last", 1},
    {"sharp-s", "first,stra\u00dfe,last", 1},
    {"case-of-folder", "first,Dir/one,last", 1},
    {"below-a-file", c_strRest, 1},
    {"folder-and-file", "first,folder/,last", 1},
    {"file-and-folder", c_strRest, 1},
    {"bomb", c_strRest, 1},
    {"checksum", c_strRest, 1},
    {"short-length", c_strRest, 1},
    {"long-length", c_strRest, 1},
    {"huge-length", c_strRest, 1},
    {"no-long-field", c_strRest, 1},
    {"encrypted", c_strRest, 1},
    {"method", c_strRest, 1},
    {"two-methods", c_strRest, 1},
    {"packed", c_strRest, 1},
    {"place", c_strRest, 1},
    {"place-within", c_strRest, 1},
    {"local-name", "first,entry,last", 0},
    {"same-content", c_strRest, 1},
    {"cut", "", -1},
    {"no-directory", "", -1},
    {"count", "first,entry,last", 0},
    {"directory-place", "", -1},
};

std::string Joined(const std::vector<std::string>& names)
{
    std::string all;
    for (const std::string& name : names)
        all += (all.empty() ? "" : ",") + name;
    return all;
}

// Every file is regular, says that it is good, and has no more rights than a new one.
void CheckExtracted(const std::string& folder)
{
    for (const std::string& name : NamesBelow(folder))
    {
        struct stat status = {};
        ASSERT_EQ(0, lstat((folder + "/" + name).c_str(), &status));
        EXPECT_EQ(0U, status.st_mode & 07000U) << name;
        if (S_ISDIR(status.st_mode))
            continue;
        EXPECT_TRUE(S_ISREG(status.st_mode)) << name;
        EXPECT_EQ(0U, status.st_mode & 0111U) << name;
        EXPECT_EQ("good", ReadBytes(folder + "/" + name)) << name;
    }
}

} // namespace

TEST(HostileArchives, LeaveNothingButGoodFilesInTheFolder)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.Path("archives"));
    RunPython(folder, std::string("import os\nos.chdir('archives')\n") + c_strArchives);
    std::set<std::string> known;
    for (const Kind& kind : s_kinds)
    {
        SCOPED_TRACE(kind.name);
        known.insert(kind.name + std::string(".zip"));
        const TemporaryFolder place;
        WriteBytes(place.Path("outside"), "precious");
        const Result<ZipReader> zip = ZipReader::Open(folder.Path("archives/") + kind.name + ".zip");
        ASSERT_EQ(kind.refused >= 0, zip.has_value());
        if (!zip)
        {
            EXPECT_EQ(Errc::Malformed, zip.error().Code());
            continue;
        }
        const Result<ZipReport> report = zip->ExtractAll(place.Path("out"));
        ASSERT_TRUE(report) << report.error().Message();
        EXPECT_EQ(kind.extracted, Joined(report->Extracted()));
        EXPECT_EQ(kind.refused, static_cast<int>(report->Refused().size()));
        for (const Failure& refused : report->Refused())
            EXPECT_EQ(0U, refused.Message().find("cannot extract ")) << refused.Message();
        CheckExtracted(place.Path("out"));
        EXPECT_EQ("precious", ReadBytes(place.Path("outside")));
        std::filesystem::remove_all(place.Path("out"));
        EXPECT_EQ("outside", Joined(NamesBelow(place.Path())));
    }
    // No kind is left out.
    for (const std::string& name : NamesBelow(folder.Path("archives")))
        EXPECT_EQ(1U, known.count(name)) << name;
    EXPECT_EQ(known.size(), NamesBelow(folder.Path("archives")).size());
    EXPECT_LE(30U, known.size());
}

TEST(HostileArchives, LeadNowhereWhileAnotherProcessPlantsLinks)
{
    const TemporaryFolder folder;
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for i in range(60):
        z.writestr('folder/below/x%d' % i, 'good')
        z.writestr('file%d' % (i % 3) + '/' * (i % 2), '' if i % 2 else 'good')
)");
    const TemporaryFolder outside;
    WriteBytes(outside.Path("precious"), "precious");
    const Result<ZipReader> zip = ZipReader::Open(folder.Path("a.zip"));
    ASSERT_TRUE(zip);
    const std::filesystem::path out = folder.Path("out");
    std::filesystem::create_directory(out);
    const pid_t planter = fork();
    ASSERT_NE(-1, planter);
    if (planter == 0)
    {
        // Until it is ended, or its parent is.
        const pid_t parent = getppid();
        std::error_code ignored;
        while (getppid() == parent)
            for (const char* const name : {"folder", "file0", "file1", "file2"})
            {
                std::filesystem::remove_all(out / name, ignored);
                std::filesystem::create_symlink(outside.Path() + (name[1] == 'i' ? "/precious" : ""),
                                                out / name, ignored);
            }
        ToolkitTest::EndChild(0);
    }
    while (!std::filesystem::is_symlink(out / "folder"))
        std::this_thread::yield();
    std::size_t refused = 0;
    for (int round = 0; round < 500 && (round < 5 || refused == 0); ++round)
    {
        const Result<ZipReport> report = zip->ExtractAll(out);
        ASSERT_TRUE(report) << report.error().Message();
        refused += report->Refused().size();
    }
    kill(planter, SIGKILL);
    ASSERT_EQ(planter, waitpid(planter, nullptr, 0));
    // They met.
    EXPECT_LT(0U, refused);
    EXPECT_EQ("precious", Joined(NamesBelow(outside.Path())));
    EXPECT_EQ("precious", ReadBytes(outside.Path("precious")));
}
