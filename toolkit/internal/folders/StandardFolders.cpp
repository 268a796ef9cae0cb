// SPDX-License-Identifier: MIT
#include "toolkit/internal/folders/StandardFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/filename.h>
#include <wx/stdpaths.h>

#include "toolkit/internal/system/BaseDirectories.h"
#include "toolkit/internal/text/Utf8Codec.h"
#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/internal/wx/WxText.h"

namespace Toolkit
{

namespace
{

using StandardFolders::Program;

const char* const c_strSelf = "/proc/self/exe";
// What the kernel writes behind the path of an executable that was deleted.
const std::string_view s_strMark = " (deleted)";

bool IsMarked(const std::string& link)
{
    return link.size() >= s_strMark.size() &&
           link.compare(link.size() - s_strMark.size(), s_strMark.size(), s_strMark) == 0;
}

// True when the file of that name is the one that runs.
bool IsRunning(const std::string& path)
{
    struct stat named = {};
    struct stat running = {};
    return stat(path.c_str(), &named) == 0 && stat(c_strSelf, &running) == 0 &&
           named.st_dev == running.st_dev && named.st_ino == running.st_ino;
}

// True when wxWidgets, which converts by the current locale, reads the bytes as UTF-8 does.
bool IsReadAlike(const char* bytes)
{
    return bytes == nullptr || wxString(bytes, wxConvLibc) == ToWx(Utf8Codec::Decode(bytes));
}

TString<wchar_t> Environment(const char* name)
{
    return Utf8Codec::Decode(TString<char>(std::getenv(name)));
}

// Where HOME is set and names nothing, wxWidgets takes the root folder for the user's home.
bool CanAskWxOfUser(const Program& program)
{
    const bool isHomeNamed = std::getenv("HOME") == nullptr || !Environment("HOME").empty();
    return isHomeNamed && program.canAskWx && IsReadAlike(std::getenv("HOME")) &&
           IsReadAlike(std::getenv("XDG_CONFIG_HOME"));
}

// The name that wxWidgets gives an application without one: that of its file, without the last
// extension.
wxString ExecutableName(const Program& program)
{
    wxString name;
    wxFileName::SplitPath(ToWx(program.executable), nullptr, &name, nullptr);
    return name;
}

// The name that the host gave to wxWidgets, if it did; what wxWidgets made of the program's name itself is
// none.
wxString ApplicationName(const Program& program)
{
    wxString ofProgram;
    wxFileName::SplitPath(wxString(program_invocation_name, wxConvLibc), nullptr, &ofProgram, nullptr);
    const wxString name = WxLibrary::IsStarted() ? wxAppConsole::GetInstance()->GetAppName() : wxString();
    return name.empty() || name == ofProgram ? ExecutableName(program) : name;
}

TString<wchar_t> SharedData(const Program& program)
{
    return StandardFolders::InstallPrefix(program.executable) + L"/share/" + FromWx(ApplicationName(program));
}

void EraseAll(std::string& text, std::string_view what)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at))
        text.erase(at, what.size());
}

// The value of a line of "user-dirs.dirs" (xdg-user-dirs): quoted, perhaps beginning with $HOME.
std::string UserFolderOf(const std::string& line, const std::string& home)
{
    const std::string_view variable = "$HOME";
    std::string value = line.substr(line.find('=') + 1);
    for (std::size_t at = value.find(variable); at != std::string::npos;
         at = value.find(variable, at + home.size()))
        value.replace(at, variable.size(), home);
    value.erase(0, value.find_first_not_of(" \t\r"));
    value.erase(value.find_last_not_of(" \t\r") + 1);
    EraseAll(value, "\"");
    return value;
}

// The folder that the user's own list gives for documents; empty when there is none.
TString<wchar_t> ListedDocuments(const TString<wchar_t>& home)
{
    TString<wchar_t> configuration = Environment("XDG_CONFIG_HOME");
    if (configuration.empty())
        configuration = home + L"/.config";
    const std::string path = Utf8Codec::Encode(configuration + L"/user-dirs.dirs");
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored))
        return TString<wchar_t>();
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        if (line.find("XDG_DOCUMENTS_DIR") != std::string::npos)
        {
            const std::string folder = UserFolderOf(line, Utf8Codec::Encode(home));
            return std::filesystem::is_directory(folder, ignored) ? Utf8Codec::Decode(folder)
                                                                  : TString<wchar_t>();
        }
    return TString<wchar_t>();
}

} // namespace

// The system gives no path that is longer.
std::string StandardFolders::ExecutableBytes()
{
    std::array<char, PATH_MAX> bytes;
    const ssize_t length = readlink(c_strSelf, bytes.data(), bytes.size());
    const std::string link(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return IsMarked(link) ? Unmark(link, IsRunning(link)) : link;
}

TString<wchar_t> StandardFolders::Working()
{
    std::error_code ignored;
    return Utf8Codec::Decode(std::filesystem::current_path(ignored).string());
}

TString<wchar_t> StandardFolders::Home()
{
    const TString<wchar_t> home = Environment("HOME");
    if (!home.empty())
        return home;
    const Result<std::filesystem::path> listed = BaseDirectories::Home();
    return listed ? Utf8Codec::Decode(TString<char>(listed->native())) : TString<wchar_t>();
}

StandardFolders::Program::Program()
{
    const std::string bytes = ExecutableBytes();
    executable = Utf8Codec::Decode(bytes);
    canAskWx = WxLibrary::IsStarted() && IsReadAlike(bytes.c_str()) && IsReadAlike(program_invocation_name);
}

TString<wchar_t> StandardFolders::Data(const Program& program)
{
    return program.canAskWx ? FromWx(wxStandardPaths::Get().GetDataDir()) : SharedData(program);
}

TString<wchar_t> StandardFolders::UserLocalData(const Program& program)
{
    if (CanAskWxOfUser(program))
        return FromWx(wxStandardPaths::Get().GetUserLocalDataDir());
    const TString<wchar_t> home = Home();
    return home.empty() ? home : TString<wchar_t>(home + L"/." + FromWx(ApplicationName(program)));
}

TString<wchar_t> StandardFolders::Resources(const Program& program)
{
    return program.canAskWx ? FromWx(wxStandardPaths::Get().GetResourcesDir()) : SharedData(program);
}

TString<wchar_t> StandardFolders::Documents(const Program& program)
{
    if (CanAskWxOfUser(program))
        return FromWx(wxStandardPaths::Get().GetDocumentsDir());
    const TString<wchar_t> home = Home();
    const TString<wchar_t> listed = ListedDocuments(home);
    return listed.empty() ? home : listed;
}

std::string StandardFolders::Unmark(const std::string& link, bool isRealName)
{
    return IsMarked(link) && !isRealName ? link.substr(0, link.size() - s_strMark.size()) : link;
}

TString<wchar_t> StandardFolders::InstallPrefix(const TString<wchar_t>& executable)
{
    const std::size_t bin = executable.rfind(L"/bin/");
    return bin == TString<wchar_t>::npos || bin == 0 ? TString<wchar_t>(L"/usr/local")
                                                     : TString<wchar_t>(executable.substr(0, bin));
}

} // namespace Toolkit
