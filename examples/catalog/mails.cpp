// SPDX-License-Identifier: MIT
// A plug-in that reads mails: the subject and the date of each.

#include "Importer.h"

#include <toolkit/datetime/Timestamp.h>
#include <toolkit/encoding/EncodedWords.h>
#include <toolkit/files/WholeFile.h>
#include <toolkit/regExp/Pattern.h>

namespace
{

using namespace Toolkit;

class Mails : public catalog::Importer
{
public:
    // What is thrown here is the reason why the plug-in is refused.
    Mails()
        : m_fold(Pattern::Compile(R"(\r?\n(?=[ \t]))").value()),
          m_field(Pattern::Compile(R"(^(subject|date):\s*(.*))", Pattern::IgnoreCase | Pattern::Multiline)
                      .value())
    {
    }

    bool Takes(const std::filesystem::path& file) const override { return file.extension() == ".eml"; }

    Result<catalog::Document> Import(const std::filesystem::path& file) const override
    {
        const Result<std::string> mail = ReadFile(file);
        if (!mail)
            return mail.error();
        catalog::Document document;
        // A line that begins with a blank goes on with the one before.
        const std::string header = m_fold.Replace(mail->substr(0, mail->find("\n\n")), "").value();
        for (const Match& field : m_field.All(header))
        {
            const std::string value(field[2]);
            if (field[1][0] == 'S' || field[1][0] == 's')
                document.title = EncodedWords::Decode(value);
            else if (const Result<Timestamp> date = Timestamp::ParseMail(value))
                document.date = date->ToRfc3339();
        }
        if (document.title.empty())
            return Failure(Errc::Malformed, "cannot catalog " + file.string() + ": it has no subject");
        return document;
    }

private:
    const Pattern m_fold;
    const Pattern m_field;
};

} // namespace

TOOLKIT_PLUGIN(Mails, catalog::Importer, "mails", "1.0");
