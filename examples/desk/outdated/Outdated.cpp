// SPDX-License-Identifier: MIT
// Plug-in "outdated": built with the version of the interface that was before, as one that its author did not
// build anew. It is refused, and shows how desk says so.

#include "Reader.h"

namespace Desk
{

namespace
{

class Outdated : public Reader
{
public:
    std::vector<Toolkit::Failure> Configure(const Toolkit::Settings&) override { return {}; }
    bool Takes(const std::filesystem::path&) const override { return false; }
    Toolkit::Result<Document> Read(const std::filesystem::path&) const override { return Document(); }
};

} // namespace

} // namespace Desk

TOOLKIT_PLUGIN(Desk::Outdated, Desk::Reader, "outdated", "1.0");
