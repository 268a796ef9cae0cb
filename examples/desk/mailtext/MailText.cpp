// Plug-in "mailtext": reads mails (RFC 5322) and tells what is in them.

#include "Plugin.h"

namespace Desk
{

namespace
{

const wchar_t* const c_strExtension = L".eml";

// A mail's header fields that the user wants to see, and the size of its body.
struct Mail
{
    Text m_strFrom;
    Text m_strSubject;
    std::size_t m_uBodyLines = 0;
};

// The value of the field when `line` holds it; field names have no case.
bool ReadField(const Text& line, const Text& field, Text& value)
{
    if (line.size() <= field.size() || Text(line.substr(0, field.size())).compareNoCase(field) != 0 ||
        line[field.size()] != L':')
        return false;
    const std::size_t start = line.find_first_not_of(L" \t", field.size() + 1);
    value = start == line.npos ? Text() : Text(line.substr(start));
    return true;
}

bool ReadMail(const Text& path, Mail& mail)
{
    Toolkit::TextFile file;
    if (!file.Open(path))
        return false;
    bool header = true;
    for (Text line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
    {
        if (!header)
            ++mail.m_uBodyLines;
        else if (line.empty())
            header = false;
        else if (!ReadField(line, L"From", mail.m_strFrom))
            ReadField(line, L"Subject", mail.m_strSubject);
    }
    return true;
}

class MailText : public Plugin
{
public:
    void Initialize() override { TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"mailtext: ready"; }
    void Release() override { TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"mailtext: released"; }

    Text GetName() const override { return L"mailtext"; }

    bool Takes(const Text& fileName) const override
    {
        const std::size_t length = Text(c_strExtension).size();
        return fileName.size() > length && fileName.substr(fileName.size() - length) == c_strExtension;
    }

    bool Work(const Text& path, const Text&, std::vector<Text>& report) override
    {
        Mail mail;
        if (!ReadMail(path, mail))
        {
            TOOLKIT_LOG(Toolkit::LogSeverity::Warning) << L"mailtext: cannot read " << path;
            return false;
        }
        TOOLKIT_LOG(Toolkit::LogSeverity::Info) << L"mailtext: read " << path;
        report.push_back(L"\"" + mail.m_strSubject + L"\" from " + mail.m_strFrom + L", " +
                         std::to_wstring(mail.m_uBodyLines) + L" lines of text");
        return true;
    }
};

} // namespace

extern "C" Plugin* DeskPluginLoad()
{
    static MailText s_module;
    Toolkit::LibModuleManager::s_pInstance->Register(&s_module);
    return &s_module;
}

} // namespace Desk
