// SPDX-License-Identifier: MIT
#ifndef DESK_CONSOLE_H
#define DESK_CONSOLE_H

#include "Options.h"
#include "View.h"
#include "toolkit/app/EventPump.h"

namespace Desk
{

// A desk whose user reads lines. It has no event loop but the pump.
class Console : public View
{
public:
    // Runs a desk from its start to its end; answers the exit code of the process.
    int Run(const Options& options);

    void Tell(const Text& line) override;
    void ShowIndex() override {}
    void Show(const Document& document) override;
    void Describe(std::vector<Text>& lines) const override;
    bool SavePicture(const Text&) override { return false; }
    void Leave() override;

private:
    Toolkit::EventPump m_pump;
    Text m_strShown;
};

} // namespace Desk

#endif
