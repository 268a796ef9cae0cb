// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_STANDARDFOLDERS_H
#define TOOLKIT_INTERNAL_SYSTEM_STANDARDFOLDERS_H

#include <string>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// Where the platform keeps things for the running application, as the base library's standard paths answer.
// Those cannot be asked while the base library is not started, and they misread names that the current locale
// cannot express; then the same folders are computed here, and the system's names are taken as UTF-8. Any
// thread may ask; a folder that cannot be found out is empty.
class StandardFolders
{
public:
    // The full path of the running executable, as the system's bytes; empty when the system does not tell.
    static std::string ExecutableBytes();
    // The same as text; empty when it has no UTF-8 form.
    static TString<wchar_t> Executable();

    // The current working directory.
    static TString<wchar_t> Working();

    // The user's home folder.
    static TString<wchar_t> Home();

    static TString<wchar_t> Data();
    static TString<wchar_t> UserLocalData();
    static TString<wchar_t> Resources();
    static TString<wchar_t> Documents();

    // The path behind a link to a running executable that the kernel answers: the kernel marks the path of an
    // executable that was deleted, and `isRealName` tells that the mark is a part of the file's name.
    static std::string Unmark(const std::string& link, bool isRealName);

    // The folder of the installation that an executable belongs to: what holds its last "bin" folder.
    static TString<wchar_t> InstallPrefix(const TString<wchar_t>& executable);
};

} // namespace Toolkit

#endif
