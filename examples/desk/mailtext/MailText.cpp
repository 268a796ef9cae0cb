// SPDX-License-Identifier: MIT
// Plug-in "mailtext": reads mails and tells what is in them.

#include "Plugin.h"
#include "mailtext/Mail.h"
#include "mailtext/MailDate.h"
#include "toolkit/core/LibModuleManager.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogStatement.h"

namespace Desk
{

namespace
{

const unsigned int s_uDefaultPreview = 60;

// The beginning of a text as one line: white space becomes single spaces.
Text Preview(const Text& text, std::size_t length)
{
    Text line;
    for (const wchar_t character : text)
    {
        const bool space =
            character == L' ' || character == L'\n' || character == L'\r' || character == L'\t';
        if (!space)
            line += character;
        else if (!line.empty() && line.back() != L' ')
            line += L' ';
    }
    if (!line.empty() && line.back() == L' ')
        line.pop_back();
    return line.size() <= length ? line : Text(line.substr(0, length) + L"...");
}

// When the mail was written, as a list shows it; empty if it does not say.
Text ListedDate(const Text& field)
{
    Toolkit::DateTime date;
    Text listed;
    if (ReadMailDate(field, date))
        date.GetRelativeStringFromNow(listed);
    return listed;
}

// The same in the user's short form, and how a list shows that.
Text DescribeDate(const Text& field)
{
    Toolkit::DateTime date;
    if (!ReadMailDate(field, date))
        return L"without a date";
    Text both;
    date.GetString(both);
    return both + L", listed as " + ListedDate(field);
}

class MailText : public Plugin
{
public:
    void Initialize() override { TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"mailtext: ready"; }
    void Release() override { TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"mailtext: released"; }

    Text GetName() const override { return L"mailtext"; }

    void Configure(const Toolkit::IniFile& settings, std::vector<Text>&) override
    {
        m_uPreview = settings.GetUint32(GetName(), L"preview", s_uDefaultPreview);
    }

    bool Takes(const Text& fileName) const override { return HasExtension(fileName, L".eml"); }

    bool Work(const Text& path, const Text&, std::vector<Text>& report) override
    {
        Mail mail;
        if (!ReadMail(path, mail))
            return false;
        report.push_back(L"\"" + mail.m_strSubject + L"\" from " + mail.m_strFrom + L", " +
                         mail.m_strEncoding);
        report.push_back(DescribeDate(mail.m_strDate));
        if (m_uPreview > 0)
            report.push_back(Preview(mail.m_strText, m_uPreview));
        return true;
    }

    bool Read(const Text& path, Document& document) override
    {
        Mail mail;
        if (!Takes(path) || !ReadMail(path, mail))
            return false;
        document = {path, mail.m_strSubject, mail.m_strFrom, ListedDate(mail.m_strDate), mail.m_strText, 0};
        return true;
    }

private:
    static bool ReadMail(const Text& path, Mail& mail)
    {
        const bool done = mail.Read(path);
        TOOLKIT_LOG(done ? Toolkit::LogSeverity::Info : Toolkit::LogSeverity::Warning)
            << (done ? L"mailtext: read " : L"mailtext: cannot read ") << path;
        return done;
    }

    unsigned int m_uPreview = s_uDefaultPreview;
};

} // namespace

extern "C" Plugin* DeskPluginLoad()
{
    static MailText s_module;
    Toolkit::LibModuleManager::s_pInstance->Register(&s_module);
    return &s_module;
}

} // namespace Desk
