// SPDX-License-Identifier: MIT
#ifndef DESK_OPENER_H
#define DESK_OPENER_H

#include <filesystem>
#include <functional>

#include "Document.h"
#include "toolkit/app/ProcessResult.h"
#include "toolkit/core/Result.h"
#include "toolkit/files/Settings.h"
#include "toolkit/threading/Task.h"

namespace Desk
{

// Hands an attachment to the program that the settings name for files of its kind, and fetches what that
// writes, while its thread goes on. One at a time; it belongs to one thread, on which the executor calls.
class Opener
{
public:
    using Executor = Toolkit::TaskBase::Executor;
    using Output = Toolkit::Result<Toolkit::ProcessResult>;

    // Attachments are written into the folder, for this user alone.
    Opener(const std::filesystem::path& folder, Executor executor);

    // Starts the program; the executor calls `done` with what became of it. A program that is under way is
    // ended first. `Errc::Refused` when no program is known for such files; else as `WriteFile` fails.
    Toolkit::Result<void> Open(const Attachment& attachment, const Toolkit::Settings& settings,
                               std::function<void(const Output&)> done);

    // Ends the program, and calls nobody.
    void End();

private:
    const std::filesystem::path m_folder;
    const Executor m_executor;
    Toolkit::Task<Output> m_task;
};

} // namespace Desk

#endif
