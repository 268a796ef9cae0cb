// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_FOLDERS_STANDARDFOLDERS_H
#define TOOLKIT_INTERNAL_FOLDERS_STANDARDFOLDERS_H

#include <string>

#include "toolkit/core/TString.h"

// Where the platform keeps things for the running application, as wxWidgets' standard paths return it.
// Those cannot be asked while wxWidgets is not started, and they misread names that the current locale
// cannot express; then the same folders are computed here, and the system's names are taken as UTF-8. Any
// thread may ask; a folder that cannot be found out is empty.
namespace Toolkit::StandardFolders
{

// The full path of the running executable, as the bytes of the system; empty when the system does not tell.
std::string ExecutableBytes();

// The current working directory.
TString<wchar_t> Working();

// The user's home folder.
TString<wchar_t> Home();

// What the folders below depend on. Whoever wants several of them looks at it once.
struct Program
{
    Program();

    // The running executable as text; empty when it has no UTF-8 form.
    TString<wchar_t> executable;
    bool canAskWx;
};

TString<wchar_t> Data(const Program& program = Program());
TString<wchar_t> UserLocalData(const Program& program = Program());
TString<wchar_t> Resources(const Program& program = Program());
TString<wchar_t> Documents(const Program& program = Program());

// The target of a link to a running executable that the kernel gives: the kernel marks the path of an
// executable that was deleted, and `isRealName` tells that the mark is a part of the file's name.
std::string Unmark(const std::string& link, bool isRealName);

// The folder of the installation that an executable belongs to: what holds its last "bin" folder.
TString<wchar_t> InstallPrefix(const TString<wchar_t>& executable);

} // namespace Toolkit::StandardFolders

#endif
