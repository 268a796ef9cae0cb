// SPDX-License-Identifier: MIT
#ifndef DESK_WINDOW_FRAME_H
#define DESK_WINDOW_FRAME_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <wx/frame.h>

#include "Document.h"
#include "toolkit/files/Settings.h"
#include "toolkit/threading/Task.h"

class wxGauge;
class wxListBox;
class wxListCtrl;
class wxPanel;
class wxSizer;
class wxStaticText;
class wxTextCtrl;

namespace Desk
{

// The window: the mails in a list, the text of the one that is shown, and the end of the log; while the index
// is under way, how far it is. It shows what it is given. What the user wants goes through the function, as a
// command of the application.
class Frame : public wxFrame
{
public:
    using Execute = std::function<void(const std::vector<std::string>& command)>;

    explicit Frame(Execute execute);

    void ShowProgress(const Toolkit::TaskProgress& progress);
    // Also shows the document that is shown anew, if it is there.
    void ShowList(const std::vector<Document>& documents);
    void ShowSettings(const Toolkit::Settings& settings);
    // Also selects it in the list if it is there.
    void ShowDocument(const Document& document);
    void AddLogLine(const std::string& line);

    // What can be seen, line by line.
    std::string Describe() const;
    // Saves what lies between the menu bar and the status bar as PNG.
    bool SavePicture(const std::filesystem::path& file) const;

private:
    void MakeMenu();
    void AddItem(wxMenu& menu, int id, const char* label, std::function<void()> chosen);
    void MakeContent();
    wxWindow* MakeProgress();
    wxListCtrl* MakeList(wxWindow* parent);
    wxWindow* MakeReader(wxWindow* parent);
    wxWindow* MakeLog(wxWindow* parent);
    void AskForFile();
    void SelectShown();
    std::string DescribeMenu() const;
    std::string DescribeList() const;
    std::string DescribeText() const;

    const Execute m_execute;
    std::vector<Document> m_documents;
    std::filesystem::path m_shown;
    wxPanel* m_pProgress = nullptr;
    wxGauge* m_pGauge = nullptr;
    wxStaticText* m_pCount = nullptr;
    wxListCtrl* m_pList = nullptr;
    wxStaticText* m_pTitle = nullptr;
    wxStaticText* m_pSender = nullptr;
    wxTextCtrl* m_pText = nullptr;
    wxListBox* m_pLog = nullptr;
};

} // namespace Desk

#endif
