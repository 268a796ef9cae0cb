// SPDX-License-Identifier: MIT
#include "window/Frame.h"

#include <algorithm>
#include <utility>

#include <wx/button.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/filedlg.h>
#include <wx/gauge.h>
#include <wx/image.h>
#include <wx/listbox.h>
#include <wx/listctrl.h>
#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/splitter.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>
#include <wx/textctrl.h>

namespace Desk
{

namespace
{

const unsigned int s_uLogLines = 100;
const int s_iGap = 6;

enum Column
{
    ColumnDate,
    ColumnFrom,
    ColumnSubject
};

enum Item
{
    ItemAttachment = wxID_HIGHEST + 1,
    ItemHide,
    ItemPlugins,
    ItemRestart
};

wxString ToWindow(const std::string& text)
{
    return wxString::FromUTF8(text);
}

std::string FromWindow(const wxString& text)
{
    return text.utf8_string();
}

// The name of a sender without the address after it.
std::string NameOf(const std::string& sender)
{
    return sender.substr(0, sender.find(" <"));
}

wxFont Bold(const wxFont& font)
{
    return font.Bold().Larger();
}

} // namespace

Frame::Frame(Execute execute)
    : wxFrame(nullptr, wxID_ANY, "Desk", wxDefaultPosition, wxSize(1040, 600)), m_execute(std::move(execute))
{
    MakeMenu();
    CreateStatusBar();
    MakeContent();
}

void Frame::MakeMenu()
{
    wxMenu* const menu = new wxMenu;
    AddItem(*menu, wxID_OPEN, "&Open...\tCtrl+O", [this] { AskForFile(); });
    AddItem(*menu, ItemAttachment, "Open &attachment\tCtrl+T",
            [this] {
                m_execute({"attachment", m_shown.string()});
            });
    menu->AppendCheckItem(ItemHide, "&Hide what is private\tCtrl+H");
    AddItem(*menu, ItemPlugins, "&Plug-ins\tCtrl+P", [this] { m_execute({"plug-ins"}); });
    menu->AppendSeparator();
    AddItem(*menu, ItemRestart, "&Restart\tCtrl+R", [this] { m_execute({"restart"}); });
    AddItem(*menu, wxID_EXIT, "&Quit\tCtrl+Q", [this] { Close(); });
    Bind(
        wxEVT_MENU,
        [this](wxCommandEvent& event) {
            m_execute({"set", event.IsChecked() ? "view/hide yes" : "view/hide no"});
        },
        ItemHide);
    wxMenuBar* const bar = new wxMenuBar;
    bar->Append(menu, "&Desk");
    SetMenuBar(bar);
}

void Frame::AddItem(wxMenu& menu, int id, const char* label, std::function<void()> chosen)
{
    menu.Append(id, label);
    Bind(
        wxEVT_MENU, [chosen = std::move(chosen)](wxCommandEvent&) { chosen(); }, id);
}

void Frame::MakeContent()
{
    const long style = wxSP_LIVE_UPDATE;
    wxSplitterWindow* const rows =
        new wxSplitterWindow(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, style);
    wxSplitterWindow* const columns =
        new wxSplitterWindow(rows, wxID_ANY, wxDefaultPosition, wxDefaultSize, style);
    m_pList = MakeList(columns);
    columns->SetMinimumPaneSize(200);
    columns->SplitVertically(m_pList, MakeReader(columns), 540);
    rows->SetMinimumPaneSize(80);
    rows->SetSashGravity(1);
    rows->SplitHorizontally(columns, MakeLog(rows), -150);
    wxBoxSizer* const sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(rows, wxSizerFlags(1).Expand());
    sizer->Add(MakeProgress(), wxSizerFlags().Expand());
    SetSizer(sizer);
}

wxWindow* Frame::MakeProgress()
{
    m_pProgress = new wxPanel(this);
    m_pGauge = new wxGauge(m_pProgress, wxID_ANY, 1);
    m_pCount = new wxStaticText(m_pProgress, wxID_ANY, "", wxDefaultPosition, wxSize(260, -1));
    wxButton* const cancel = new wxButton(m_pProgress, wxID_CANCEL);
    cancel->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { m_execute({"cancel"}); });
    wxBoxSizer* const sizer = new wxBoxSizer(wxHORIZONTAL);
    sizer->Add(m_pCount, wxSizerFlags().CenterVertical().Border(wxALL, s_iGap));
    sizer->Add(m_pGauge, wxSizerFlags(1).CenterVertical());
    sizer->Add(cancel, wxSizerFlags().Border(wxALL, s_iGap));
    m_pProgress->SetSizer(sizer);
    m_pProgress->Hide();
    return m_pProgress;
}

wxListCtrl* Frame::MakeList(wxWindow* parent)
{
    wxListCtrl* const list =
        new wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT | wxLC_SINGLE_SEL);
    list->AppendColumn("Date", wxLIST_FORMAT_LEFT, 130);
    list->AppendColumn("From", wxLIST_FORMAT_LEFT, 150);
    list->AppendColumn("Subject", wxLIST_FORMAT_LEFT, 250);
    list->Bind(wxEVT_LIST_ITEM_SELECTED, [this](wxListEvent& event)
               { ShowDocument(m_documents[static_cast<std::size_t>(event.GetIndex())]); });
    return list;
}

wxWindow* Frame::MakeReader(wxWindow* parent)
{
    wxPanel* const reader = new wxPanel(parent);
    m_pTitle = new wxStaticText(reader, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_ELLIPSIZE_END);
    m_pTitle->SetFont(Bold(m_pTitle->GetFont()));
    m_pSender = new wxStaticText(reader, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_ELLIPSIZE_END);
    m_pText = new wxTextCtrl(reader, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                             wxTE_MULTILINE | wxTE_READONLY);
    m_pText->SetMargins(s_iGap, s_iGap);
    wxBoxSizer* const sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(m_pTitle, wxSizerFlags().Expand().Border(wxALL, s_iGap));
    sizer->Add(m_pSender, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, s_iGap));
    sizer->Add(m_pText, wxSizerFlags(1).Expand());
    reader->SetSizer(sizer);
    return reader;
}

wxWindow* Frame::MakeLog(wxWindow* parent)
{
    m_pLog = new wxListBox(parent, wxID_ANY);
    m_pLog->SetFont(wxFont(wxFontInfo(9).Family(wxFONTFAMILY_TELETYPE)));
    return m_pLog;
}

void Frame::ShowProgress(const Toolkit::TaskProgress& progress)
{
    const bool running = !progress.IsFinished();
    const int all = std::max(static_cast<int>(progress.All()), 1);
    m_pGauge->SetRange(all);
    m_pGauge->SetValue(std::min(static_cast<int>(progress.Done()), all));
    m_pCount->SetLabelText(ToWindow(std::to_string(progress.Done()) + " of " +
                                    std::to_string(progress.All()) + ' ' + progress.Text()));
    if (m_pProgress->IsShown() == running)
        return;
    m_pProgress->Show(running);
    Layout();
}

void Frame::ShowList(const std::vector<Document>& documents)
{
    m_documents = documents;
    m_pList->DeleteAllItems();
    for (const Document& document : m_documents)
    {
        const long row = m_pList->InsertItem(m_pList->GetItemCount(), ToWindow(document.date));
        m_pList->SetItem(row, ColumnFrom, ToWindow(NameOf(document.from)));
        m_pList->SetItem(row, ColumnSubject, ToWindow(document.title));
    }
    const auto shown = std::find_if(m_documents.begin(), m_documents.end(),
                                    [this](const Document& document) { return document.file == m_shown; });
    if (shown != m_documents.end())
        ShowDocument(*shown);
    else if (m_pTitle->GetLabelText().empty() && !m_documents.empty())
        ShowDocument(m_documents.front());
}

void Frame::ShowSettings(const Toolkit::Settings& settings)
{
    GetMenuBar()->Check(ItemHide, settings.Get("view", "hide", true));
}

void Frame::ShowDocument(const Document& document)
{
    // A copy: selecting it in the list shows the list's own.
    const Document shown = document;
    m_shown = shown.file;
    m_pTitle->SetLabelText(ToWindow(shown.title));
    m_pSender->SetLabelText(
        ToWindow(shown.from.empty() ? shown.file.string() : shown.from + ", " + shown.date));
    m_pText->ChangeValue(ToWindow(shown.text));
    GetMenuBar()->Enable(ItemAttachment, !shown.attachments.empty());
    SelectShown();
}

void Frame::SelectShown()
{
    const auto shown = std::find_if(m_documents.begin(), m_documents.end(),
                                    [this](const Document& document) { return document.file == m_shown; });
    const long row = shown == m_documents.end() ? -1 : static_cast<long>(shown - m_documents.begin());
    const long selected = m_pList->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
    if (row == selected)
        return;
    if (row == -1)
        m_pList->SetItemState(selected, 0, wxLIST_STATE_SELECTED);
    else
        m_pList->SetItemState(row, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
}

void Frame::AskForFile()
{
    wxFileDialog dialog(this, "Open a mail or a note", "", "", "Mails and notes|*.eml;*.txt",
                        wxFD_OPEN | wxFD_FILE_MUST_EXIST);
    if (dialog.ShowModal() == wxID_OK)
        m_execute({"open", FromWindow(dialog.GetPath())});
}

void Frame::AddLogLine(const std::string& line)
{
    m_pLog->Append(ToWindow(line));
    if (m_pLog->GetCount() > s_uLogLines)
        m_pLog->Delete(0);
    m_pLog->EnsureVisible(static_cast<int>(m_pLog->GetCount()) - 1);
}

std::string Frame::Describe() const
{
    std::string text = DescribeMenu() + DescribeList() + DescribeText();
    for (const wxString& line : m_pLog->GetStrings())
        text += "log: " + FromWindow(line) + '\n';
    if (m_pProgress->IsShown())
        text += "progress: " + FromWindow(m_pCount->GetLabelText()) + '\n';
    return text + "status: " + FromWindow(GetStatusBar()->GetStatusText()) + '\n';
}

std::string Frame::DescribeMenu() const
{
    std::string text;
    for (const wxMenuItem* item : GetMenuBar()->GetMenu(0)->GetMenuItems())
        if (!item->IsSeparator())
            text += "menu: " + FromWindow(item->GetItemLabelText()) +
                    (item->IsCheckable() && item->IsChecked() ? " (checked)\n" : "\n");
    return text;
}

std::string Frame::DescribeList() const
{
    std::string text;
    for (int row = 0; row < m_pList->GetItemCount(); ++row)
        text += "mail: " + FromWindow(m_pList->GetItemText(row, ColumnDate)) + " | " +
                FromWindow(m_pList->GetItemText(row, ColumnFrom)) + " | " +
                FromWindow(m_pList->GetItemText(row, ColumnSubject)) + '\n';
    const long selected = m_pList->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
    return text + "selected: " + (selected < 0 ? std::string("none") : std::to_string(selected)) + '\n';
}

std::string Frame::DescribeText() const
{
    std::string text = "title: " + FromWindow(m_pTitle->GetLabelText()) +
                       "\nsender: " + FromWindow(m_pSender->GetLabelText()) + '\n';
    for (int line = 0; line < m_pText->GetNumberOfLines(); ++line)
        text += "text: " + FromWindow(m_pText->GetLineText(line)) + '\n';
    return text;
}

bool Frame::SavePicture(const std::filesystem::path& file) const
{
    const wxSize size = GetClientSize();
    wxBitmap bitmap(size);
    wxClientDC window(const_cast<Frame*>(this));
    wxMemoryDC memory(bitmap);
    memory.Blit(wxPoint(0, 0), size, &window, wxPoint(0, 0));
    memory.SelectObject(wxNullBitmap);
    return bitmap.SaveFile(ToWindow(file.string()), wxBITMAP_TYPE_PNG);
}

} // namespace Desk
