// SPDX-License-Identifier: MIT
// desk-window: desk with a window. It takes the options and the commands of the console's desk, but for the
// tour.

#include <memory>

#include <wx/app.h>
#include <wx/image.h>
#include <wx/log.h>
#include <wx/weakref.h>

#include "Application.h"
#include "window/Frame.h"

namespace Desk
{

// wxWidgets' application object and the view of the desk; the window may close before they end.
class WindowApp : public wxApp, public View
{
public:
    bool OnInit() override;
    int OnRun() override;
    int OnExit() override;

    void Tell(const Text& line) override;
    void ShowIndex() override;
    void Show(const Document& document) override;
    void Describe(std::vector<Text>& lines) const override;
    bool SavePicture(const Text& path) override;
    void Leave() override;

    // Read from the arguments as they are: wxWidgets would convert them by the locale.
    static const Options* s_pOptions;

private:
    std::unique_ptr<Application> m_application;
    Application::Start m_start = Application::Start::Failed;
    wxWeakRef<Frame> m_frame;
    // What is told and shown before there is a window.
    Text m_strStatus;
    Document m_shown;
};

const Options* WindowApp::s_pOptions = nullptr;

bool WindowApp::OnInit()
{
    // What wxWidgets says goes to the log and never into a dialog; without a log, nowhere.
    wxLog::DontCreateOnDemand();
    delete wxLog::SetActiveTarget(nullptr);
    wxImage::AddHandler(new wxPNGHandler);
    m_application = std::make_unique<Application>(*s_pOptions, *this);
    m_start = m_application->Begin();
    if (m_start != Application::Start::First)
        return true;
    Frame::Actions actions;
    actions.m_open = [this](const Text& path) { m_application->Execute(L"open " + path); };
    actions.m_plugins = [this] { m_application->Execute(L"plug-ins"); };
    actions.m_restart = [this] { m_application->Execute(L"restart"); };
    m_frame = new Frame(actions, m_application->GetHost().GetLogPath());
    m_frame->SetStatusText(wxString(m_strStatus.data(), m_strStatus.size()));
    if (!m_shown.m_strPath.empty())
        m_frame->ShowDocument(m_shown);
    m_frame->Show();
    return true;
}

int WindowApp::OnRun()
{
    switch (m_start)
    {
    case Application::Start::First:
        return wxApp::OnRun();
    case Application::Start::HandedOver:
        return 0;
    default:
        return 1;
    }
}

int WindowApp::OnExit()
{
    m_application.reset();
    return wxApp::OnExit();
}

void WindowApp::Tell(const Text& line)
{
    CallAfter(
        [this, line]
        {
            m_strStatus = line;
            if (m_frame != nullptr)
                m_frame->SetStatusText(wxString(line.data(), line.size()));
        });
}

void WindowApp::ShowIndex()
{
    CallAfter(
        [this]
        {
            if (m_frame != nullptr)
                m_frame->ShowList(m_application->GetDocuments());
        });
}

void WindowApp::Show(const Document& document)
{
    m_shown = document;
    if (m_frame != nullptr)
        m_frame->ShowDocument(document);
}

void WindowApp::Describe(std::vector<Text>& lines) const
{
    if (m_frame != nullptr)
        m_frame->Describe(lines);
}

bool WindowApp::SavePicture(const Text& path)
{
    return m_frame != nullptr && m_frame->SavePicture(path);
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
    Desk::WindowApp::s_pOptions = &options;
    return wxEntry(argc, argv);
}
