// SPDX-License-Identifier: MIT
// Reads a setting of a file and changes it: settings <file>

#include <iostream>

#include <toolkit/files/Settings.h>

using namespace Toolkit;

static Result<int> Widen(const char* file)
{
    Result<Settings> settings = Settings::LoadOrNew(file);
    if (!settings)
        return settings.error();
    // Nothing where the key is missing, and a failure where it is no number.
    const Result<std::optional<int>> width = settings->Read<int>("window", "width");
    if (!width)
        return width.error();
    const int wider = width->value_or(620) + 20;
    if (const Result<void> set = settings->Set("window", "width", wider); !set)
        return set.error();
    if (const Result<void> saved = settings->Save(); !saved)
        return saved.error();
    return wider;
}

int main(int argc, char** argv)
{
    const Result<int> width = Widen(argc == 2 ? argv[1] : "settings.ini");
    if (width)
        std::cout << "width: " << *width << '\n';
    else
        std::cerr << width.error().Message() << '\n';
    return width ? 0 : 1;
}
