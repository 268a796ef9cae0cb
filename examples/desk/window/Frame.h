// SPDX-License-Identifier: MIT
#ifndef DESK_WINDOW_FRAME_H
#define DESK_WINDOW_FRAME_H

#include <functional>
#include <vector>

#include <wx/frame.h>
#include <wx/timer.h>

#include "Document.h"

class wxListBox;
class wxListCtrl;
class wxStaticText;
class wxTextCtrl;

namespace Desk
{

// The window: the mails in a list, the text of the one that is shown, and the end of the log. It shows what
// it is given; what the user wants goes through the functions.
class Frame : public wxFrame
{
public:
    struct Actions
    {
        std::function<void(const Text& path)> m_open;
        std::function<void()> m_plugins;
        std::function<void()> m_restart;
    };

    Frame(const Actions& actions, const Text& logPath);

    void ShowList(const std::vector<Document>& documents);
    // Also selects it in the list if it is there.
    void ShowDocument(const Document& document);
    // Appends what can be seen.
    void Describe(std::vector<Text>& lines) const;
    // Saves the window's content as PNG.
    bool SavePicture(const Text& path) const;

private:
    void MakeMenu();
    void MakeContent();
    wxListCtrl* MakeList(wxWindow* parent);
    wxWindow* MakeReader(wxWindow* parent);
    wxWindow* MakeLog(wxWindow* parent);
    void AskForFile();
    void SelectShown();
    void UpdateLog();

    const Actions m_actions;
    const Text m_strLogPath;
    std::vector<Document> m_documents;
    Text m_strShown;
    std::vector<Text> m_log;
    wxListCtrl* m_pList = nullptr;
    wxStaticText* m_pTitle = nullptr;
    wxStaticText* m_pSender = nullptr;
    wxTextCtrl* m_pText = nullptr;
    wxListBox* m_pLog = nullptr;
    wxTimer m_timer;
};

} // namespace Desk

#endif
