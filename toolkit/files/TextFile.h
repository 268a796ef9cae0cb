// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_TEXTFILE_H
#define TOOLKIT_FILES_TEXTFILE_H

#include <cstddef>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// A text file held in memory as lines, of which one is the current one. Lines may be added and removed
/// without a file; only `Open` and `Write` touch the disk, and the file is not held open in between. The
/// object belongs to one thread at a time. Failures are returned, not logged; without memory nothing is
/// opened and nothing added.
///
/// @code
/// Toolkit::TextFile notes;
/// if (!notes.Open(L"notes.txt"))
///     return Fail("there are no notes");
/// for (Toolkit::TString<wchar_t> note = notes.GetFirstLine(); !notes.Eof(); note = notes.GetNextLine())
///     std::wcout << note << L'\n';
/// @endcode
class TOOLKIT_API TextFile
{
public:
    TextFile();
    ~TextFile();

    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    /// Reads the whole file. The lines held before are dropped in any case; the first line that is read
    /// becomes the current one. A byte-order mark selects UTF-32, UTF-16 or UTF-8; without one the text is
    /// UTF-8. Lines end with "\n", "\r\n" or "\r". False when `path` is no regular file, cannot be read, or
    /// holds broken text; then nothing is opened.
    bool Open(const TString<wchar_t>& path);

    /// A copy of the first line, which becomes the current one; empty when there is none.
    TString<wchar_t> GetFirstLine();
    /// A copy of the line after the current one, which becomes the current one; empty past the last line.
    TString<wchar_t> GetNextLine();
    /// True when the current line is past the last one, as it is at once without lines.
    bool Eof() const;

    /// Appends the line, ended by "\n"; a last line without an end is ended so first.
    /// Quirk: a line with a line end inside stays one line here and is several when read again.
    void AddLine(const TString<wchar_t>& line);
    /// Removes all lines; the file stays opened.
    void Clear();

    /// Replaces the opened file's content, or its target's if it is a link, by the lines as UTF-8 without a
    /// byte-order mark, each with the end that it was read with; they are on the disk then. Permissions,
    /// owner, access control list and extended attributes are kept, and what the system does not let this
    /// user keep grants less, never more; a file removed meanwhile is made anew, with the permissions that it
    /// had. False when nothing is opened, a line has no UTF-8 form, the file may not be written, its folder
    /// takes no new file, or the disk is full; the file is then as it was. A file that something is mounted
    /// on is written in place. Quirk: other hard links to the file keep the old content.
    bool Write();

    /// Forgets the lines and the file.
    void Close();

private:
    struct Line
    {
        std::size_t m_uBegin;
        std::size_t m_uLength;
    };

    static std::vector<Line> FindLines(const TString<wchar_t>& text);
    TString<wchar_t> GetCurrentLine() const;

    TString<wchar_t> m_strPath;
    // The permissions of the file when it was opened.
    unsigned int m_uMode;
    // The lines with their ends, just as they are written.
    TString<wchar_t> m_strText;
    std::vector<Line> m_lines;
    std::size_t m_uCurrent;
};

} // namespace Toolkit

#endif
