// SPDX-License-Identifier: MIT
#include "tests/support/Archives.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include <gtest/gtest.h>

#include "toolkit/files/ZipInputStream.h"

namespace ToolkitTest
{

namespace
{

const char* const s_strPrelude = R"(
import io, struct, sys, zipfile
def add(archive, name, content, method=0):
    info = zipfile.ZipInfo(name, (2020, 2, 29, 12, 34, 56))
    info.compress_type = method
    archive.writestr(info, content)
class Pipe(io.RawIOBase):
    def __init__(self, path): self.file = open(path, 'wb')
    def writable(self): return True
    def write(self, data): return self.file.write(data)
    def close(self): self.file.close()
)";

} // namespace

void RunIn(const TemporaryFolder& folder, const std::string& command)
{
    const std::string line = "cd '" + folder.Path() + "' && { " + command + "\n} >log 2>&1";
    ASSERT_EQ(std::system(line.c_str()), 0) << command << "\n" << ReadBytes(folder.Path("log"));
    ASSERT_EQ(std::remove(folder.Path("log").c_str()), 0);
}

void RunPython(const TemporaryFolder& folder, const std::string& script)
{
    WriteBytes(folder.Path("script.py"), s_strPrelude + script);
    RunIn(folder, "python3 script.py && rm script.py");
}

void MakeSmallArchive(const TemporaryFolder& folder, const std::string& name)
{
    RunPython(folder, "with zipfile.ZipFile('" + name + R"(', 'w') as z:
    add(z, 'one.txt', 'the first content')
    add(z, 'two.txt', 'again and again ' * 20, zipfile.ZIP_DEFLATED)
    add(z, 'three.txt', 'the third content')
)");
}

void MakeArchiveOfLengths(const TemporaryFolder& folder)
{
    RunPython(folder, R"(
with zipfile.ZipFile('a.zip', 'w') as z:
    for n in [1, 15, 16, 17, 26, 42, 63, 64, 65, 4095, 4096, 65534, 65535, 65536, 65537, 131070, 131071, 131072, 131073,
              1000000]:
        data = bytes((i * i >> 3) & 255 if n > 50 else 0 for i in range(n))
        open('plain%d' % n, 'wb').write(data)
        add(z, 's%d' % n, data)
        add(z, 'd%d' % n, data, zipfile.ZIP_DEFLATED)
)");
}

std::string ContentOf(const std::string& entry)
{
    if (entry == "one.txt")
        return "the first content";
    if (entry == "three.txt")
        return "the third content";
    std::string content;
    for (int i = 0; i < 20; ++i)
        content += "again and again ";
    return content;
}

OpenArchive::OpenArchive(const Toolkit::TString<wchar_t>& path)
{
    archive.Open(path);
    count = archive.EntriesList(entries, L"", Toolkit::ArchiveEntriesFlags::All);
}

Toolkit::smart_ptr<Toolkit::ArchiveZipEntry>
OpenArchive::operator[](const Toolkit::TString<wchar_t>& name) const
{
    const auto found = entries.find(name);
    return found != entries.end() ? found->second : Toolkit::smart_ptr<Toolkit::ArchiveZipEntry>();
}

std::wstring OpenArchive::Names() const
{
    std::wstring names = L"|";
    for (const auto& pair : entries)
        names += pair.first + L"|";
    return names;
}

bool OpenArchive::UnZip(const Toolkit::TString<wchar_t>& name, const Toolkit::TString<wchar_t>& path)
{
    Toolkit::TString<wchar_t> target(path);
    return archive.UnZip((*this)[name], target);
}

std::string OpenArchive::Read(const Toolkit::TString<wchar_t>& name)
{
    std::vector<unsigned char> bytes;
    const auto stream = archive.GetZipInputStream((*this)[name]);
    if (!stream.IsNull())
        *stream >> bytes;
    return std::string(bytes.begin(), bytes.end());
}

ForgedArchive::ForgedArchive(std::string archive) : bytes(std::move(archive)) {}

std::size_t ForgedArchive::Directory(const std::string& name) const
{
    std::size_t offset = bytes.find("PK\x01\x02");
    while (offset != bytes.npos && bytes.compare(offset + 46, name.size(), name) != 0)
        offset = bytes.find("PK\x01\x02", offset + 1);
    EXPECT_NE(offset, bytes.npos) << name;
    return offset;
}

std::size_t ForgedArchive::Local(const std::string& name) const
{
    std::size_t offset = bytes.find("PK\x03\x04");
    while (offset != bytes.npos && bytes.compare(offset + 30, name.size(), name) != 0)
        offset = bytes.find("PK\x03\x04", offset + 1);
    EXPECT_NE(offset, bytes.npos) << name;
    return offset;
}

std::size_t ForgedArchive::Content(const std::string& name) const
{
    const std::size_t local = Local(name);
    const auto byte = [&](std::size_t i)
    { return static_cast<std::size_t>(static_cast<unsigned char>(bytes[local + i])); };
    return local + 30 + byte(26) + (byte(27) << 8) + byte(28) + (byte(29) << 8);
}

void ForgedArchive::Set16(std::size_t offset, std::uint16_t value)
{
    for (std::size_t i = 0; i < 2; ++i)
        bytes.at(offset + i) = static_cast<char>(value >> (8 * i));
}

void ForgedArchive::Set32(std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<char>(value >> (8 * i));
}

} // namespace ToolkitTest
