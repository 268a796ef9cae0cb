// SPDX-License-Identifier: MIT
// Plug-in "mailtext": reads mails.

#include "Reader.h"
#include "mailtext/Mail.h"
#include "toolkit/datetime/Timestamp.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;

namespace
{

// When the mail was written, by the user's clock; empty if it does not say.
std::string ListedDate(const std::string& field)
{
    const Result<Timestamp> date = Timestamp::ParseMail(field);
    if (!date)
        return std::string();
    // "2026-03-02T08:15:00+01:00"
    const std::string text = date->ToRfc3339(Timestamp::Zone::Local, 0);
    return text.substr(0, 10) + ' ' + text.substr(11, 5);
}

class MailText : public Reader
{
public:
    MailText() { TOOLKIT_LOG(LogSeverity::Info) << "mailtext: ready"; }
    ~MailText() override { TOOLKIT_LOG(LogSeverity::Info) << "mailtext: released"; }

    std::vector<Failure> Configure(const Settings& settings) override
    {
        m_strCharset = settings.Get("mailtext", "charset", "utf-8");
        return {};
    }

    bool Takes(const std::filesystem::path& file) const override { return file.extension() == ".eml"; }

    Result<Document> Read(const std::filesystem::path& file) const override
    {
        const Result<std::string> bytes = ReadFile(file);
        if (!bytes)
            return bytes.error();
        Result<Mail> mail = Mail::Parse(*bytes, m_strCharset);
        if (!mail)
            return Failure(mail.error().Code(),
                           "cannot read the mail " + file.string() + ": " + mail.error().Message());
        Document document;
        document.file = file;
        document.title = mail->subject;
        document.from = mail->from;
        document.date = ListedDate(mail->date);
        document.encoding = mail->encoding;
        document.text = mail->text;
        document.attachments = mail->attachments;
        return document;
    }

private:
    std::string m_strCharset;
};

} // namespace

} // namespace Desk

TOOLKIT_PLUGIN(Desk::MailText, Desk::Reader, "mailtext", "2.0");
