// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPFILESTREAM_H
#define TOOLKIT_INTERNAL_ZIP_ZIPFILESTREAM_H

#include <cstddef>
#include <memory>

#include <wx/stream.h>

#include "toolkit/internal/zip/ZipFile.h"

namespace Toolkit
{

// What wxWidgets' ZIP stream reads the directory from: one place of its own in a shared file.
class ZipFileStream : public wxInputStream
{
public:
    explicit ZipFileStream(std::shared_ptr<const ZipFile> file);
    ~ZipFileStream() override;

    ZipFileStream(const ZipFileStream&) = delete;
    ZipFileStream& operator=(const ZipFileStream&) = delete;

    // Where the record of the directory begins that was read last.
    long long GetLastRecord() const { return m_iLastRecord; }

    wxInputStream& Read(void* buffer, std::size_t count) override;
    // Quirk: after a record whose name is empty, the second question is answered with 0. There
    // wxWidgets asks twice: whether the record came whole, and whether the name did, for which it reads
    // nothing.
    std::size_t LastRead() const override;

    wxFileOffset GetLength() const override;
    bool IsSeekable() const override { return true; }

protected:
    std::size_t OnSysRead(void* buffer, std::size_t count) override;
    wxFileOffset OnSysSeek(wxFileOffset offset, wxSeekMode mode) override;
    wxFileOffset OnSysTell() const override { return m_iPosition; }

private:
    void NoteRecord(const unsigned char* bytes);
    bool IsBehindSignature() const;
    void DropUnknownNumbers(unsigned char* bytes) const;
    bool IsNameless(const void* bytes) const;

    const std::shared_ptr<const ZipFile> m_pFile;
    long long m_iPosition = 0;
    long long m_iLastRecord = 0;
    // Behind its name, its fields and its comment.
    long long m_iEndOfLastRecord = 0;
    mutable int m_iQuestionsToZero = 0;
};

} // namespace Toolkit

#endif
