// SPDX-License-Identifier: MIT
// desk-window: desk with a window. It takes the options and the commands of the console's desk, but for the
// tour.

#include <iostream>
#include <memory>

#include <wx/app.h>
#include <wx/image.h>
#include <wx/weakref.h>

#include "Application.h"
#include "toolkit/datetime/Timestamp.h"
#include "toolkit/log/CallbackLog.h"
#include "window/Frame.h"
#include "window/WxLogTarget.h"

namespace Desk
{

// wxWidgets' application object and the view of the desk; the window may close before they end.
class WindowApp : public wxApp, public View
{
public:
    bool OnInit() override;
    int OnRun() override;
    int OnExit() override;

    void Post(std::function<void()> function) override;
    void Tell(const std::string& line) override;
    void ShowProgress(const Toolkit::TaskProgress& progress) override;
    void ShowIndex(const std::vector<Document>& documents) override;
    void ShowSettings(const Toolkit::Settings& settings) override;
    void Show(const Document& document) override;
    std::shared_ptr<Toolkit::LogSink> MakeLogSink() override;
    std::string Describe() const override;
    bool SavePicture(const std::filesystem::path& file) override;
    void Leave() override;

    // Read from the arguments as they are: wxWidgets would convert them by the locale.
    static const Options* s_pOptions;
    static const Toolkit::Folders* s_pFolders;

private:
    void Execute(const std::vector<std::string>& command);

    std::unique_ptr<Application> m_application;
    std::optional<Application::Answer> m_answer;
    wxWeakRef<Frame> m_frame;
};

const Options* WindowApp::s_pOptions = nullptr;
const Toolkit::Folders* WindowApp::s_pFolders = nullptr;

namespace
{

// "18:20:05 read /home/samuel/1.eml"
std::string LineOf(const Toolkit::LogRecord& record)
{
    const std::string time =
        Toolkit::Timestamp(record.time).ToRfc3339(Toolkit::Timestamp::Zone::Local, 0).substr(11, 8);
    return time + (record.severity <= Toolkit::LogSeverity::Warning ? " ! " : " ") + record.message;
}

} // namespace

bool WindowApp::OnInit()
{
    delete wxLog::SetActiveTarget(new WxLogTarget);
    wxImage::AddHandler(new wxPNGHandler);
    m_frame = new Frame([this](const std::vector<std::string>& command) { Execute(command); });
    m_application = std::make_unique<Application>(*s_pOptions, *s_pFolders, *this);
    m_answer = m_application->Begin();
    if (m_answer)
        m_frame->Destroy();
    else
        m_frame->Show();
    return true;
}

int WindowApp::OnRun()
{
    if (!m_answer)
        return wxApp::OnRun();
    std::cout << m_answer->Text();
    return m_answer->Code();
}

int WindowApp::OnExit()
{
    m_application.reset();
    return wxApp::OnExit();
}

void WindowApp::Execute(const std::vector<std::string>& command)
{
    const Application::Answer answer =
        m_application->Execute(Application::Command(command, std::filesystem::current_path()));
    if (answer.Code() != 0)
        Tell(answer.Text());
}

void WindowApp::Post(std::function<void()> function)
{
    CallAfter([function = std::move(function)] { function(); });
}

void WindowApp::Tell(const std::string& line)
{
    if (m_frame != nullptr)
        m_frame->SetStatusText(wxString::FromUTF8(line));
}

void WindowApp::ShowProgress(const Toolkit::TaskProgress& progress)
{
    if (m_frame != nullptr)
        m_frame->ShowProgress(progress);
}

void WindowApp::ShowIndex(const std::vector<Document>& documents)
{
    if (m_frame != nullptr)
        m_frame->ShowList(documents);
}

void WindowApp::ShowSettings(const Toolkit::Settings& settings)
{
    if (m_frame != nullptr)
        m_frame->ShowSettings(settings);
}

void WindowApp::Show(const Document& document)
{
    if (m_frame != nullptr)
        m_frame->ShowDocument(document);
}

std::shared_ptr<Toolkit::LogSink> WindowApp::MakeLogSink()
{
    const auto show = [this](const Toolkit::LogRecord& record)
    {
        Post(
            [this, line = LineOf(record)]
            {
                if (m_frame != nullptr)
                    m_frame->AddLogLine(line);
            });
    };
    return std::make_shared<Toolkit::CallbackLog>(Toolkit::LogSeverity::Info, show);
}

std::string WindowApp::Describe() const
{
    return m_frame != nullptr ? m_frame->Describe() : std::string();
}

bool WindowApp::SavePicture(const std::filesystem::path& file)
{
    return m_frame != nullptr && m_frame->SavePicture(file);
}

void WindowApp::Leave()
{
    if (m_frame != nullptr)
        m_frame->Close();
}

} // namespace Desk

wxIMPLEMENT_APP_NO_MAIN(Desk::WindowApp);

int main(int argc, char** argv)
{
    const Desk::Options options(argc, argv);
    const Toolkit::Result<Toolkit::Folders> folders = Toolkit::Folders::Of("desk");
    if (!folders)
    {
        std::cerr << folders.error().Message() << '\n';
        return 1;
    }
    Desk::WindowApp::s_pOptions = &options;
    Desk::WindowApp::s_pFolders = &*folders;
    return wxEntry(argc, argv);
}
