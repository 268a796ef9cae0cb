// SPDX-License-Identifier: MIT
#include "tour/Tour.h"

#include <algorithm>
#include <utility>

#include "Archive.h"
#include "Text.h"
#include "classic/Dates.h"
#include "classic/State.h"
#include "toolkit/files/FSInputSerializer.h"
#include "toolkit/files/FSOutputSerializer.h"
#include "toolkit/files/FSStream.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/StreamResult.h"
#include "toolkit/files/WholeFile.h"
#include "tour/TourText.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

void Tour::ReadSettings()
{
    const std::filesystem::path file = m_bundle / "desk.ini";
    Begin("The host reads its settings from " + file.string());
    // The user's own are the tour's, so that it changes nobody's.
    std::filesystem::remove(m_output / "desk.ini");
    Result<Preferences> preferences = Preferences::Load(file, m_output / "desk.ini");
    if (preferences)
        m_preferences = *std::move(preferences);
    else
        Say(preferences.error().Message());
    const IniFile classic(Wide(file.string()));
    bool same = m_preferences && classic.IsLoaded();
    for (const char* const section : {"view", "archive", "mailtext", "programs", "redact"})
        for (const std::string& key :
             same ? m_preferences->Current().Keys(section) : std::vector<std::string>())
        {
            const std::string value = m_preferences->Current().Get(section, key, "");
            Say('[' + std::string(section) + "] " + key + " = " + value);
            same = same && Narrow(classic.GetValue(Wide(section), Wide(key), Wide(""))) == value;
        }
    Say(same ? "IniFile reads the same" : "IniFile reads something else");
    End(same && m_preferences->Current().Get("view", "preview", 0) == 60);
}

void Tour::LoadPlugins()
{
    Begin("The plug-ins are loaded, but for one that was made for another version of their interface");
    m_host = std::make_unique<Host>(Folders::Executable().parent_path() / "plugins");
    const std::vector<Failure> problems = m_host->Configure(m_preferences->Current());
    for (const std::shared_ptr<Reader>& reader : m_host->Readers())
        Say(reader->Info().Name() + ' ' + reader->Info().Version());
    for (const Failure& failure : m_host->Refused())
        Say("refused: " + failure.Message());
    for (const Failure& problem : problems)
        Say("a setting is left out: " + problem.Message());
    const std::vector<std::string> lines = LinesOf(m_log->File());
    Say("redact registered a module, which was initialised at once");
    End(m_host->Readers().size() == 2 && m_host->Refused().size() == 1 &&
        m_host->Refused().front().Code() == Errc::WrongInterface && problems.size() == 1 &&
        BeginsWith(problems.front().Message(), "unfinished") &&
        FindMessage(lines, "redact: module initialised") < FindMessage(lines, "redact: ready"));
}

void Tour::ReadMails()
{
    const std::filesystem::path folder = m_bundle / "mails";
    Begin("Plug-in mailtext reads the mails in " + folder.string());
    const std::vector<std::filesystem::path> files = FilesIn(folder);
    End(!files.empty() &&
        std::count_if(files.begin(), files.end(), [this](const auto& file) { return ReadMail(file); }) ==
            static_cast<std::ptrdiff_t>(files.size()));
}

void Tour::ShowDates()
{
    Begin("The same date in the short forms of five locales, which LC_ALL names, and relative to now");
    std::vector<std::string> report;
    const bool five = ShowInFiveLocales(report);
    const bool relative = ShowRelativeToNow(report);
    for (const std::string& line : report)
        Say(line);
    End(five && relative);
}

void Tour::HideInNotes()
{
    const std::filesystem::path folder = m_bundle / "notes";
    Begin("Plug-in redact hides what its patterns find in " + folder.string());
    bool all = true;
    for (const std::filesystem::path& file : FilesIn(folder))
        all = HideInNote(file) && all;
    const std::string members = ReadFile(m_output / "members.txt").value_or(std::string());
    End(all && members.find("nora.lindqvist@") == members.npos &&
        members.find("[telephone]") != members.npos);
}

void Tour::ReadArchive()
{
    const Settings& settings = m_preferences->Current();
    const std::filesystem::path archive = m_bundle / settings.Get("archive", "file", "");
    const std::string wanted = settings.Get("archive", "entries", "");
    Begin("Mails are taken from the ZIP archive " + archive.string() + ", those that " + wanted + " matches");
    const auto extracted = ExtractFiles(archive, wanted, m_output);
    if (extracted)
        m_mails = *extracted;
    else
        Say(extracted.error().Message());
    bool all = true;
    for (const std::filesystem::path& mail : m_mails)
        all = ReadMail(mail) && all;
    End(all && m_mails.size() == 2);
}

void Tour::ChangeSetting()
{
    Begin("A changed setting changes what is shown, and is written back: [view] preview = 12");
    const Result<Document> before = m_host->Read(m_mails.front());
    const Result<void> saved = m_preferences->Set("view", "preview", "12");
    m_host->Configure(m_preferences->Current());
    const Result<Document> after = m_host->Read(m_mails.front());
    Say("before: " + before->preview);
    Say("after:  " + after->preview);
    for (const std::string& line : LinesOf(m_output / "desk.ini"))
        Say("in " + (m_output / "desk.ini").string() + ": " + line);
    const IniFile written(Wide((m_output / "desk.ini").string()));
    End(saved && before->title == after->title && after->preview.size() < before->preview.size() &&
        written.GetUint32(L"view", L"preview", 0) == 12);
}

void Tour::SaveState()
{
    const std::filesystem::path file = m_output / "state.bin";
    Begin("The host saves its state through the classic serializer and reads it back");
    State saved;
    saved.m_uRuns = 1;
    for (const std::filesystem::path& mail : m_mails)
        saved.m_names.push_back(Wide(mail.string()));
    const StreamResult written = FSOutputSerializer(Wide(file.string())).Serialize(saved);
    State read;
    const StreamResult readResult = FSInputSerializer(Wide(file.string())).Deserialize(read);
    Say(file.string() + ", " + std::to_string(FSStream(Wide(file.string()), FSStream::ModeRead).Length()) +
        " bytes: " + std::to_string(read.m_uRuns) + " run, " + std::to_string(read.m_names.size()) +
        " mails");
    End(!IsError(written) && !IsError(readResult) && read.m_uRuns == saved.m_uRuns &&
        read.m_names == saved.m_names);
}

std::optional<Document> Tour::Read(const std::filesystem::path& file) const
{
    Result<Document> document = m_host->Read(file);
    if (document)
        return *std::move(document);
    Say(document.error().Message());
    return std::nullopt;
}

bool Tour::ReadMail(const std::filesystem::path& file) const
{
    const std::optional<Document> mail = Read(file);
    if (!mail)
        return false;
    Say(file.filename().string() + ':');
    Say("  \"" + mail->title + "\" from " + mail->from + ", " + mail->encoding);
    Say("  " + mail->date + ", " + std::to_string(mail->attachments.size()) + " attached");
    Say("  " + mail->preview);
    return !mail->title.empty() && !mail->from.empty() && !mail->date.empty() && !mail->preview.empty();
}

bool Tour::HideInNote(const std::filesystem::path& file) const
{
    const std::optional<Document> note = Read(file);
    if (!note)
        return false;
    const std::vector<std::string> before = LinesOf(file);
    const std::vector<std::string> after = Lines(note->text);
    Say(file.filename().string() + ':');
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i)
        if (before[i] != after[i])
            Say("  " + after[i]);
    const std::filesystem::path copy = m_output / file.filename();
    const Result<void> written = WriteFile(copy, note->text);
    Say("  " + std::to_string(note->hidden) + " places hidden, in " + copy.string());
    return written && note->hidden > 0 && before.size() == after.size();
}

} // namespace Desk
