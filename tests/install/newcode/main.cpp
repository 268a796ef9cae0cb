// SPDX-License-Identifier: MIT
#include <iostream>

#include <toolkit/app/Folders.h>
#include <toolkit/core/LibraryVersion.h>
#include <toolkit/encoding/Text.h>
#include <toolkit/files/Settings.h>
#include <toolkit/files/WholeFile.h>

// Prints the version, and what is wrong with a setting of a file that it makes.
int main(int, char** arguments)
{
    std::cout << Toolkit::LibraryVersion() << '\n';
    if (!Toolkit::WriteFile(arguments[1], "[mail]\npreview = 8o\n") || !Toolkit::Text::IsUtf8("a"))
        return 1;
    const Toolkit::Result<Toolkit::Settings> settings = Toolkit::Settings::Load(arguments[1]);
    const Toolkit::Result<std::optional<int>> preview = settings->Read<int>("mail", "preview");
    std::cout << (preview ? "read" : preview.error().Message()) << '\n';
    return preview ? 1 : 0;
}
