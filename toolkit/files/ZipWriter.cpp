// SPDX-License-Identifier: MIT
#include "toolkit/files/ZipWriter.h"

#include <cerrno>
#include <ctime>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <wx/datetime.h>
#include <wx/zipstrm.h>

#include "toolkit/internal/system/AbsolutePath.h"
#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/MovedFrom.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SafeReplace.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/text/Utf8Codec.h"
#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/internal/wx/WxText.h"
#include "toolkit/internal/zip/ZipEntryPath.h"
#include "toolkit/internal/zip/ZipFileOutput.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uBlock = 65536;
const std::size_t s_uLongestName = 65535;
const int s_iFolderMode = 0755;
const int s_iFileMode = 0644;

} // namespace

struct ZipWriter::Content
{
    Content(std::string path, std::unique_ptr<SafeReplace::Writer> writer)
        : m_strPath(std::move(path)),
          m_pWriter(std::move(writer)),
          m_output(m_pWriter->Get()),
          m_pZip(new wxZipOutputStream(m_output, -1, wxConvUTF8))
    {
    }

    ~Content()
    {
        const WxLibrary::Silence silence;
        m_pZip.reset();
    }

    Content(const Content&) = delete;
    Content& operator=(const Content&) = delete;

    std::string What(std::string_view name) const { return std::string(name) + " to " + m_strPath; }

    // From now on everything fails so.
    Result<void> Break(std::string_view name, int error)
    {
        const int first = m_output.GetError() != 0 ? m_output.GetError() : error;
        m_failure = SystemFailure("cannot add", What(name), first);
        return *m_failure;
    }

    Result<void> CheckName(std::string_view name) const
    {
        if (m_pZip == nullptr)
            return SystemFailure("cannot add", What(name), EINVAL);
        if (m_failure)
            return *m_failure;
        const char* wrong = WrongInZipPath(name);
        if (wrong == nullptr && Utf8Codec::Decode(TString<char>(std::string(name))).empty())
            wrong = "its name is no UTF-8";
        if (wrong == nullptr && m_names.count(std::string(name)) != 0)
            wrong = "its name is another one's";
        if (wrong != nullptr)
            return Failure(Errc::Refused, "cannot add " + What(name) + ": " + wrong);
        if (name.size() > s_uLongestName)
            return SystemFailure("cannot add", What(name), ENAMETOOLONG);
        return {};
    }

    bool Begin(std::string_view name, std::time_t modified, std::size_t size)
    {
        const bool folder = name.back() == '/';
        auto entry =
            std::make_unique<wxZipEntry>(wxString(), wxDateTime(modified), static_cast<wxFileOffset>(size));
        entry->SetName(ToWx(Utf8Codec::Decode(TString<char>(std::string(name)))), wxPATH_UNIX);
        entry->SetIsDir(folder);
        entry->SetSystemMadeBy(wxZIP_SYSTEM_UNIX);
        entry->SetMode(folder ? s_iFolderMode : s_iFileMode);
        m_names.emplace(name);
        return m_pZip->PutNextEntry(entry.release());
    }

    bool Write(const char* bytes, std::size_t count)
    {
        return count == 0 || m_pZip->Write(bytes, count).LastWrite() == count;
    }

    const std::string m_strPath;
    const std::unique_ptr<SafeReplace::Writer> m_pWriter;
    ZipFileOutput m_output;
    // Null once the archive is finished.
    std::unique_ptr<wxZipOutputStream> m_pZip;
    std::set<std::string> m_names;
    std::optional<Failure> m_failure;
};

ZipWriter::ZipWriter(std::unique_ptr<Content> content) noexcept : m_pContent(std::move(content)) {}
ZipWriter::ZipWriter(ZipWriter&& other) noexcept = default;
ZipWriter& ZipWriter::operator=(ZipWriter&& other) noexcept = default;
ZipWriter::~ZipWriter() = default;

Result<ZipWriter> ZipWriter::Create(const std::filesystem::path& path)
{
    if (path.native().find('\0') != std::string::npos)
        return SystemFailure("cannot write", path.native(), EINVAL);
    SafeReplace::Options options;
    options.m_bFollowsDangling = true;
    std::error_code ignored;
    if (path.has_parent_path())
        std::filesystem::create_directories(path.parent_path(), ignored);
    Result<std::unique_ptr<SafeReplace::Writer>> writer =
        SafeReplace::Writer::Begin(NativePath::OfBytes(AbsolutePath(path).native()), options);
    if (!writer)
        return writer.error();
    return ZipWriter(std::make_unique<Content>(path.native(), *std::move(writer)));
}

Result<void> ZipWriter::Add(std::string_view name, std::string_view bytes)
{
    if (m_pContent == nullptr)
        return MovedFrom::Refused("cannot add " + std::string(name));
    const WxLibrary::Silence silence;
    if (Result<void> checked = m_pContent->CheckName(name); !checked)
        return checked;
    if (name.back() == '/' && !bytes.empty())
        return SystemFailure("cannot add", m_pContent->What(name), EISDIR);
    if (!m_pContent->Begin(name, std::time(nullptr), bytes.size()) ||
        !m_pContent->Write(bytes.data(), bytes.size()) || !m_pContent->m_pZip->CloseEntry())
        return m_pContent->Break(name, EIO);
    return {};
}

Result<void> ZipWriter::AddFile(std::string_view name, const std::filesystem::path& file)
{
    if (m_pContent == nullptr)
        return MovedFrom::Refused("cannot add " + std::string(name));
    const WxLibrary::Silence silence;
    if (Result<void> checked = m_pContent->CheckName(name); !checked)
        return checked;
    if (name.back() == '/')
        return SystemFailure("cannot add", m_pContent->What(name), EISDIR);
    if (file.native().find('\0') != std::string::npos)
        return SystemFailure("cannot read", file.native(), EINVAL);
    const Descriptor descriptor = NativePath::OfBytes(file.native()).Open(O_RDONLY);
    struct stat status = {};
    if ((!descriptor.IsOpen() && errno != ENXIO) ||
        (descriptor.IsOpen() && fstat(descriptor.Get(), &status) != 0))
        return SystemFailure("cannot read", file.native(), errno);
    if (!S_ISREG(status.st_mode))
        return Failure(Errc::Refused, "cannot read " + file.native() + ": it is no regular file");
    if (!m_pContent->Begin(name, status.st_mtim.tv_sec, static_cast<std::size_t>(status.st_size)))
        return m_pContent->Break(name, EIO);
    const std::unique_ptr<char[]> block(new char[s_uBlock]);
    for (std::size_t count = s_uBlock; count == s_uBlock;)
    {
        count = ReadUpTo(descriptor.Get(), block.get(), s_uBlock);
        const int error = errno;
        if ((count < s_uBlock && error != 0) || !m_pContent->Write(block.get(), count))
            return m_pContent->Break(name, error != 0 ? error : EIO);
    }
    return m_pContent->m_pZip->CloseEntry() ? Result<void>() : m_pContent->Break(name, EIO);
}

Result<void> ZipWriter::Finish()
{
    if (m_pContent == nullptr)
        return MovedFrom::Refused("cannot finish the archive");
    const WxLibrary::Silence silence;
    Content& content = *m_pContent;
    if (content.m_failure)
        return *content.m_failure;
    if (content.m_pZip == nullptr)
        return SystemFailure("cannot write", content.m_strPath, EINVAL);
    const bool closed = content.m_pZip->Close() && content.m_output.GetError() == 0;
    content.m_pZip.reset();
    if (closed)
        return content.m_pWriter->Finish();
    const int error = content.m_output.GetError();
    content.m_failure = SystemFailure("cannot write", content.m_strPath, error != 0 ? error : EIO);
    return *content.m_failure;
}

} // namespace Toolkit
