#ifndef TOOLKIT_FILES_ZIPFILESTREAM_H
#define TOOLKIT_FILES_ZIPFILESTREAM_H

#include <cstddef>
#include <memory>
#include <vector>

#include <wx/stream.h>

namespace Toolkit
{

class ZipFile;

// What the base library's ZIP stream reads from: one place of its own in a shared file. Small reads come from
// a buffer, which survives seeking; large ones go straight to the file.
class ZipFileStream : public wxInputStream
{
public:
    explicit ZipFileStream(std::shared_ptr<const ZipFile> file);
    ~ZipFileStream() override;

    ZipFileStream(const ZipFileStream&) = delete;
    ZipFileStream& operator=(const ZipFileStream&) = delete;

    // Where the last seek went.
    long long GetLastSeek() const { return m_iLastSeek; }

    wxInputStream& Read(void* buffer, std::size_t count) override;
    // Quirk: behind a record whose name is empty, the second question is answered with 0. The base library
    // asks twice there: whether the record came whole, and whether the name did, for which it reads nothing.
    std::size_t LastRead() const override;

    wxFileOffset GetLength() const override;
    bool IsSeekable() const override { return true; }

protected:
    std::size_t OnSysRead(void* buffer, std::size_t count) override;
    wxFileOffset OnSysSeek(wxFileOffset offset, wxSeekMode mode) override;
    wxFileOffset OnSysTell() const override { return m_iPosition; }

private:
    std::size_t ReadBuffered(char* buffer, std::size_t count);

    const std::shared_ptr<const ZipFile> m_pFile;
    std::vector<char> m_buffer;
    long long m_iBufferOffset = 0;
    std::size_t m_uBuffered = 0;
    long long m_iPosition = 0;
    long long m_iLastSeek = 0;
    mutable int m_iQuestionsToZero = 0;
};

} // namespace Toolkit

#endif
