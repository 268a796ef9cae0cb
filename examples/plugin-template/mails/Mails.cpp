// SPDX-License-Identifier: MIT
// A plug-in that reads mails: the text after the header.

#include <fstream>
#include <sstream>

#include <Importer.h>

namespace
{

class Mails : public desk::Importer
{
public:
    explicit Mails(desk::Desk& desk) : m_desk(desk)
    {
        m_desk.Say("here is " + Info().Name() + " " + Info().Version());
    }
    ~Mails() override { m_desk.Say("good bye from " + Info().Name()); }

    std::string Import(const std::filesystem::path& file) override
    {
        if (file.extension() != ".eml")
            return std::string();
        std::ostringstream text;
        text << std::ifstream(file).rdbuf();
        const std::size_t end = text.str().find("\n\n");
        return end != std::string::npos ? text.str().substr(end + 2) : std::string();
    }

private:
    desk::Desk& m_desk;
};

} // namespace

TOOLKIT_PLUGIN(Mails, desk::Importer, "mails", "1.2.0");
