// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_ARCHIVES_H
#define TOOLKIT_TESTS_SUPPORT_ARCHIVES_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/ArchiveZipEntry.h"

namespace ToolkitTest
{

using ZipEntries = std::map<Toolkit::TString<wchar_t>, Toolkit::smart_ptr<Toolkit::ArchiveZipEntry>>;

// Runs a shell command in the folder; fails the test unless it succeeds.
void RunIn(const TemporaryFolder& folder, const std::string& command);

// Runs a Python script in the folder, with `zipfile` and `struct` imported and `add(archive, name, content,
// method=0)`, which adds an entry of a fixed date.
void RunPython(const TemporaryFolder& folder, const std::string& script);

// Makes the archive `name` of files "one.txt" (stored), "two.txt" (deflated) and "three.txt" (stored); their
// contents are what ContentOf answers.
void MakeSmallArchive(const TemporaryFolder& folder, const std::string& name);
std::string ContentOf(const std::string& entry);

// Makes the archive "a.zip" of entries "s<n>" (stored) and "d<n>" (deflated), each n bytes long, for lengths
// around the blocks in which they are read; their contents lie in files "plain<n>".
void MakeArchiveOfLengths(const TemporaryFolder& folder);

// An archive open, and what is listed in it.
struct OpenArchive
{
    explicit OpenArchive(const Toolkit::TString<wchar_t>& path);

    // Null when there is no such entry.
    Toolkit::smart_ptr<Toolkit::ArchiveZipEntry> operator[](const Toolkit::TString<wchar_t>& name) const;
    // The names, each between "|" and "|".
    std::wstring Names() const;
    // Extracts into `path`.
    bool UnZip(const Toolkit::TString<wchar_t>& name, const Toolkit::TString<wchar_t>& path);
    // What the byte reader appends to nothing.
    std::string Read(const Toolkit::TString<wchar_t>& name);

    Toolkit::ArchiveZip archive;
    ZipEntries entries;
    int count;
};

// The records of an archive's bytes, for forging what they declare.
class ForgedArchive
{
public:
    explicit ForgedArchive(std::string bytes);

    // Where the record of the directory, and that in front of the content, begins for the entry of that name.
    std::size_t Directory(const std::string& name) const;
    std::size_t Local(const std::string& name) const;
    // Where the content begins.
    std::size_t Content(const std::string& name) const;

    void Set16(std::size_t offset, std::uint16_t value);
    void Set32(std::size_t offset, std::uint32_t value);

    std::string bytes;
};

} // namespace ToolkitTest

#endif
