// SPDX-License-Identifier: MIT
#ifndef CATALOG_IMPORTER_H
#define CATALOG_IMPORTER_H

#include <filesystem>
#include <string>

#include <toolkit/core/Plugin.h>
#include <toolkit/core/Result.h>

namespace catalog
{

// What the catalog keeps of a file.
struct Document
{
    std::string title;
    std::string date;
};

// The interface of the plug-ins: each reads one kind of file.
class Importer : public Toolkit::Plugin
{
public:
    virtual bool Takes(const std::filesystem::path& file) const = 0;
    virtual Toolkit::Result<Document> Import(const std::filesystem::path& file) const = 0;
};
TOOLKIT_PLUGIN_INTERFACE(Importer, "org.example.catalog.Importer", 1);

} // namespace catalog

#endif
