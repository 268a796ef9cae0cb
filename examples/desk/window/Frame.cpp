// SPDX-License-Identifier: MIT
#include "window/Frame.h"

#include <algorithm>

#include <wx/dcmemory.h>
#include <wx/dcscreen.h>
#include <wx/filedlg.h>
#include <wx/image.h>
#include <wx/listbox.h>
#include <wx/listctrl.h>
#include <wx/menu.h>
#include <wx/sizer.h>
#include <wx/splitter.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>
#include <wx/textctrl.h>

namespace Desk
{

namespace
{

const int s_iLogInterval = 250;
const std::size_t s_uLogLines = 100;
const int s_iGap = 6;

enum Column
{
    ColumnDate,
    ColumnFrom,
    ColumnSubject
};

enum Command
{
    CommandPlugins = wxID_HIGHEST + 1,
    CommandRestart
};

wxString ToWindow(const Text& text)
{
    return wxString(text.data(), text.size());
}

// The name of a sender without the address behind it.
Text NameOf(const Text& sender)
{
    return Text(sender.substr(0, sender.find(L" <")));
}

Text FromWindow(const wxString& text)
{
    return Text(text.ToStdWstring());
}

wxFont Bold(const wxFont& font)
{
    return font.Bold().Larger();
}

} // namespace

Frame::Frame(const Actions& actions, const Text& logPath)
    : wxFrame(nullptr, wxID_ANY, "Desk", wxDefaultPosition, wxSize(1040, 580)),
      m_actions(actions),
      m_strLogPath(logPath),
      m_timer(this)
{
    MakeMenu();
    CreateStatusBar();
    MakeContent();
    Bind(wxEVT_TIMER, [this](wxTimerEvent&) { UpdateLog(); });
    m_timer.Start(s_iLogInterval);
}

void Frame::MakeMenu()
{
    wxMenu* const file = new wxMenu;
    file->Append(wxID_OPEN, "&Open...\tCtrl+O");
    file->Append(CommandPlugins, "&Plug-ins\tCtrl+P");
    file->AppendSeparator();
    file->Append(CommandRestart, "&Restart\tCtrl+R");
    file->Append(wxID_EXIT, "&Quit\tCtrl+Q");
    wxMenuBar* const bar = new wxMenuBar;
    bar->Append(file, "&Desk");
    SetMenuBar(bar);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { AskForFile(); }, wxID_OPEN);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { m_actions.m_plugins(); }, CommandPlugins);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { m_actions.m_restart(); }, CommandRestart);
    Bind(
        wxEVT_MENU, [this](wxCommandEvent&) { Close(); }, wxID_EXIT);
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
    columns->SplitVertically(m_pList, MakeReader(columns), 500);
    rows->SetMinimumPaneSize(80);
    rows->SetSashGravity(1);
    rows->SplitHorizontally(columns, MakeLog(rows), -150);
}

wxListCtrl* Frame::MakeList(wxWindow* parent)
{
    wxListCtrl* const list =
        new wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT | wxLC_SINGLE_SEL);
    list->AppendColumn("Date", wxLIST_FORMAT_LEFT, 90);
    list->AppendColumn("From", wxLIST_FORMAT_LEFT, 160);
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

void Frame::ShowList(const std::vector<Document>& documents)
{
    m_documents = documents;
    m_pList->DeleteAllItems();
    for (const Document& document : m_documents)
    {
        const long row = m_pList->InsertItem(m_pList->GetItemCount(), ToWindow(document.m_strDate));
        m_pList->SetItem(row, ColumnFrom, ToWindow(NameOf(document.m_strFrom)));
        m_pList->SetItem(row, ColumnSubject, ToWindow(document.m_strTitle));
    }
    if (m_strShown.empty() && !m_documents.empty())
        ShowDocument(m_documents.front());
    SelectShown();
}

void Frame::ShowDocument(const Document& document)
{
    m_strShown = document.m_strPath;
    m_pTitle->SetLabelText(ToWindow(document.m_strTitle));
    m_pSender->SetLabelText(ToWindow(document.m_strFrom.empty()
                                         ? document.m_strPath
                                         : Text(document.m_strFrom + L", " + document.m_strDate)));
    m_pText->ChangeValue(ToWindow(document.m_strText));
    SelectShown();
}

void Frame::SelectShown()
{
    const auto shown =
        std::find_if(m_documents.begin(), m_documents.end(),
                     [this](const Document& document) { return document.m_strPath == m_strShown; });
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
        m_actions.m_open(FromWindow(dialog.GetPath()));
}

void Frame::UpdateLog()
{
    std::vector<Text> lines;
    if (!ReadLines(m_strLogPath, lines))
        return;
    lines.erase(lines.begin(),
                lines.end() - static_cast<std::ptrdiff_t>(std::min(lines.size(), s_uLogLines)));
    if (lines == m_log)
        return;
    m_log = lines;
    wxArrayString texts;
    for (const Text& line : lines)
        texts.Add(ToWindow(line));
    m_pLog->Set(texts);
    if (!texts.empty())
        m_pLog->EnsureVisible(static_cast<int>(texts.size()) - 1);
}

void Frame::Describe(std::vector<Text>& lines) const
{
    const wxMenu& menu = *GetMenuBar()->GetMenu(0);
    for (const wxMenuItem* item : menu.GetMenuItems())
        if (!item->IsSeparator())
            lines.push_back(L"menu: " + FromWindow(item->GetItemLabelText()));
    for (int row = 0; row < m_pList->GetItemCount(); ++row)
        lines.push_back(L"mail: " + FromWindow(m_pList->GetItemText(row, ColumnDate)) + L" | " +
                        FromWindow(m_pList->GetItemText(row, ColumnFrom)) + L" | " +
                        FromWindow(m_pList->GetItemText(row, ColumnSubject)));
    const long selected = m_pList->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
    lines.push_back(L"selected: " +
                    (selected < 0 ? Text(L"none") : ToText(static_cast<unsigned long>(selected))));
    lines.push_back(L"title: " + FromWindow(m_pTitle->GetLabelText()));
    lines.push_back(L"sender: " + FromWindow(m_pSender->GetLabelText()));
    for (int line = 0; line < m_pText->GetNumberOfLines(); ++line)
        lines.push_back(L"text: " + FromWindow(m_pText->GetLineText(line)));
    for (const wxString& line : m_pLog->GetStrings())
        lines.push_back(L"log: " + FromWindow(line));
    lines.push_back(L"status: " + FromWindow(GetStatusBar()->GetStatusText()));
}

bool Frame::SavePicture(const Text& path) const
{
    const wxRect area = GetScreenRect();
    wxBitmap bitmap(area.GetSize());
    wxScreenDC screen;
    wxMemoryDC memory(bitmap);
    memory.Blit(wxPoint(0, 0), area.GetSize(), &screen, area.GetPosition());
    memory.SelectObject(wxNullBitmap);
    return bitmap.SaveFile(ToWindow(path), wxBITMAP_TYPE_PNG);
}

} // namespace Desk
