// SPDX-License-Identifier: MIT
#include "toolkit/files/ZipInputStream.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include <wx/zipstrm.h>

#include "toolkit/internal/wx/TextReader.h"
#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/internal/wx/WxText.h"
#include "toolkit/internal/zip/ZipEntryStream.h"
#include "toolkit/internal/zip/ZipFile.h"
#include "toolkit/internal/zip/ZipFileStream.h"
#include "toolkit/internal/zip/ZipNameConverter.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uSmallestRead = 64;

wxInputStream* OpenDirectory(const std::shared_ptr<const ZipFile>& file)
{
    if (!file->MayBeArchive())
        return nullptr;
    return new wxZipInputStream(new ZipFileStream(file), ZipNameConverter::Instance());
}

void Rename(wxZipEntry& entry, const TString<wchar_t>& name)
{
    const bool folder = entry.IsDir();
    entry.SetName(ToWx(name), wxPATH_UNIX);
    if (folder)
        entry.SetIsDir();
}

// wxWidgets leaves a name empty that is not in the charset that the archive says, and one like "."
// or "/": that of the record just read tells the entries apart.
TString<wchar_t> NameOf(wxZipEntry& entry, const wxZipInputStream& directory, const ZipFile& file)
{
    if (!entry.GetInternalName().empty())
        return FromWx(entry.GetName());
    const auto& source = static_cast<const ZipFileStream&>(*directory.GetFilterInputStream());
    TString<wchar_t> name = ZipNameConverter::Decode(file.ReadDirectoryRecord(source.GetLastRecord()).name);
    Rename(entry, name);
    return entry.GetInternalName().empty() ? name : FromWx(entry.GetName());
}

} // namespace

ZipInputStream::ZipInputStream(const TString<wchar_t>& path)
    : ZipInputStream(std::make_shared<const ZipFile>(path))
{
}

ZipInputStream::ZipInputStream(std::shared_ptr<const ZipFile> file)
    : InputStream(OpenDirectory(file)), m_pFile(std::move(file))
{
}

ZipInputStream::~ZipInputStream() = default;

ZipInputStream& ZipInputStream::operator>>(std::vector<unsigned char>& bytes)
{
    if (m_pContent == nullptr)
        return *this;
    const std::size_t before = bytes.size();
    std::size_t end = before;
    // More than expected, so that the end is met without growing again.
    bytes.reserve(before + m_uCredibleLength + s_uSmallestRead);
    do
    {
        bytes.resize(end + std::clamp(bytes.capacity() - end, s_uSmallestRead, ZipDecoder::s_uBlock));
        end += m_pContent->Read(bytes.data() + end, bytes.size() - end).LastRead();
    } while (end == bytes.size());
    bytes.resize(m_pContent->IsDamaged() ? before : end);
    // The content was shorter than expected.
    if (m_pContent->IsDamaged())
        bytes.shrink_to_fit();
    return *this;
}

ZipInputStream& ZipInputStream::operator>>(TString<wchar_t>& word)
{
    word.clear();
    if (m_pReader != nullptr)
        m_pReader->ReadWord(word);
    return *this;
}

bool ZipInputStream::ReadLine(TString<wchar_t>& line)
{
    const bool read = m_pReader != nullptr && m_pReader->ReadLine(line) && !m_pContent->IsDamaged();
    if (!read)
        line = TString<wchar_t>::Empty();
    return read;
}

bool ZipInputStream::IsOk() const
{
    const bool reading = m_pContent != nullptr && m_pContent->IsFound();
    return m_pFile->Exists() && (reading ? m_pContent->IsOk() : !m_bListed);
}

bool ZipInputStream::CanRead()
{
    if (!m_bAsked)
        m_next = TakeNextEntry();
    return m_bIsArchive;
}

ZipInputStream::Listed ZipInputStream::TakeNextEntry()
{
    CloseEntry();
    m_bAsked = true;
    if (m_next.record != nullptr || GetStream() == nullptr)
        return std::move(m_next);
    const WxLibrary::Silence silence;
    wxZipInputStream& directory = static_cast<wxZipInputStream&>(*GetStream());
    Listed listed;
    listed.record.reset(directory.GetNextEntry());
    m_bIsArchive = m_bIsArchive || listed.record != nullptr || directory.GetLastError() == wxSTREAM_EOF;
    m_bListed = m_bIsArchive && listed.record == nullptr;
    if (listed.record != nullptr)
        listed.name = NameOf(*listed.record, directory, *m_pFile);
    return listed;
}

ZipEntryStream* ZipInputStream::OpenEntry(const wxZipEntry& entry)
{
    CloseEntry();
    // An entry may come from another archive. Where this one has no directory, nothing is read; to look for
    // it is no listing.
    const bool listed = m_bListed;
    const bool canRead = CanRead();
    m_bListed = listed;
    if (!canRead)
        return nullptr;
    m_pContent = std::make_unique<ZipEntryStream>(m_pFile, entry);
    m_uCredibleLength = m_pContent->GetCredibleLength();
    m_pReader = std::make_unique<TextReader>(m_pContent.get());
    if (!m_pContent->IsFound())
        return nullptr;
    m_bListed = false;
    return m_pContent.get();
}

void ZipInputStream::CloseEntry()
{
    m_pReader.reset();
    m_pContent.reset();
}

} // namespace Toolkit
