// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipFileOutput.h"

#include <cerrno>

#include <unistd.h>

#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

ZipFileOutput::ZipFileOutput(int descriptor) : m_iDescriptor(descriptor) {}

ZipFileOutput::~ZipFileOutput() = default;

std::size_t ZipFileOutput::OnSysWrite(const void* buffer, std::size_t count)
{
    if (m_iError == 0 && !Toolkit::WriteAll(m_iDescriptor, buffer, count))
        m_iError = errno != 0 ? errno : EIO;
    m_lasterror = m_iError == 0 ? wxSTREAM_NO_ERROR : wxSTREAM_WRITE_ERROR;
    return m_iError == 0 ? count : 0;
}

wxFileOffset ZipFileOutput::OnSysSeek(wxFileOffset offset, wxSeekMode mode)
{
    const int from = mode == wxFromStart ? SEEK_SET : mode == wxFromCurrent ? SEEK_CUR : SEEK_END;
    const off_t place = lseek(m_iDescriptor, offset, from);
    if (place < 0 && m_iError == 0)
        m_iError = errno;
    return place < 0 ? static_cast<wxFileOffset>(wxInvalidOffset) : place;
}

wxFileOffset ZipFileOutput::OnSysTell() const
{
    return lseek(m_iDescriptor, 0, SEEK_CUR);
}

} // namespace Toolkit
