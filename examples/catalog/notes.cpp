// SPDX-License-Identifier: MIT
// A plug-in that reads notes: the first line of each.

#include "Importer.h"

#include <toolkit/files/WholeFile.h>

namespace
{

using namespace Toolkit;

class Notes : public catalog::Importer
{
public:
    bool Takes(const std::filesystem::path& file) const override { return file.extension() == ".txt"; }

    Result<catalog::Document> Import(const std::filesystem::path& file) const override
    {
        const Result<std::string> note = ReadFile(file);
        if (!note)
            return note.error();
        return catalog::Document{note->substr(0, note->find('\n')), std::string()};
    }
};

} // namespace

TOOLKIT_PLUGIN(Notes, catalog::Importer, "notes", "1.0");
