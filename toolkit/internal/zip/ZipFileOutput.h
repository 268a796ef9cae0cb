// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPFILEOUTPUT_H
#define TOOLKIT_INTERNAL_ZIP_ZIPFILEOUTPUT_H

#include <cstddef>

#include <wx/stream.h>

namespace Toolkit
{

// What the ZIP stream of wxWidgets writes to: an open file, which outlives the object. The reason of the
// first failure is kept.
class ZipFileOutput : public wxOutputStream
{
public:
    explicit ZipFileOutput(int descriptor);
    ~ZipFileOutput() override;

    ZipFileOutput(const ZipFileOutput&) = delete;
    ZipFileOutput& operator=(const ZipFileOutput&) = delete;

    // The error number of the system; 0 while nothing failed.
    int GetError() const { return m_iError; }

    bool IsSeekable() const override { return true; }

protected:
    std::size_t OnSysWrite(const void* buffer, std::size_t count) override;
    wxFileOffset OnSysSeek(wxFileOffset offset, wxSeekMode mode) override;
    wxFileOffset OnSysTell() const override;

private:
    const int m_iDescriptor;
    int m_iError = 0;
};

} // namespace Toolkit

#endif
