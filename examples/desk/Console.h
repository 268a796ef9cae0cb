// SPDX-License-Identifier: MIT
#ifndef DESK_CONSOLE_H
#define DESK_CONSOLE_H

#include <utility>

#include "Loop.h"
#include "Options.h"
#include "View.h"
#include "toolkit/app/Folders.h"

namespace Desk
{

// A desk whose user reads lines.
class Console : public View
{
public:
    // Runs a desk from its start to its end; returns the exit code of the process.
    int Run(const Options& options, const Toolkit::Folders& folders);

    void Post(std::function<void()> function) override { m_loop.Post(std::move(function)); }
    void Tell(const std::string& line) override;
    void ShowProgress(const Toolkit::TaskProgress&) override {}
    void ShowIndex(const std::vector<Document>&) override {}
    void ShowSettings(const Toolkit::Settings&) override {}
    void Show(const Document& document) override;
    std::shared_ptr<Toolkit::LogSink> MakeLogSink() override { return nullptr; }
    std::string Describe() const override;
    bool SavePicture(const std::filesystem::path&) override { return false; }
    void Leave() override { m_loop.Leave(); }

private:
    Loop m_loop;
    std::string m_strShown;
};

} // namespace Desk

#endif
