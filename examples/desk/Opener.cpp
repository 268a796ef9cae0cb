// SPDX-License-Identifier: MIT
#include "Opener.h"

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/app/Process.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;
using namespace std::chrono_literals;

namespace
{

// Runs a program that ends at the latest with its task.
Result<ProcessResult> RunWithin(TaskContext& context, const std::vector<std::string>& arguments)
{
    Result<Process> process = Process::Start(arguments, ProcessOptions().Timeout(60s).MaxOutput(1 << 20));
    if (!process)
        return process.error();
    process->CloseInput();
    while (true)
    {
        Result<ProcessResult> ended = process->Wait(50ms);
        if (ended || ended.error().Code() != Errc::NotAnswered)
            return ended;
        if (context.IsCancelled())
            process->Terminate(1s);
    }
}

} // namespace

Opener::Opener(const std::filesystem::path& folder, Executor executor)
    : m_folder(folder), m_executor(std::move(executor))
{
}

Result<void> Opener::Open(const Attachment& attachment, const Settings& settings,
                          std::function<void(const Output&)> done)
{
    // The last part of the name alone: no sender chooses the folder.
    const std::filesystem::path file = m_folder / std::filesystem::path(attachment.name).filename();
    const std::string program = settings.Get("programs", file.extension().string(), "");
    if (program.empty())
        return Failure(Errc::Refused,
                       "cannot open " + attachment.name + ": the settings name no program for such files");
    if (Result<void> written = WriteFile(file, attachment.bytes); !written)
        return written;
    End();
    TOOLKIT_LOG(LogSeverity::Info) << "handing " << file << " to " << program;
    m_task = Task<Output>::Start([arguments = std::vector<std::string>{program, file.string()}](
                                     TaskContext& context) { return RunWithin(context, arguments); });
    m_task.OnChange(
        [this, done = std::move(done)](const TaskProgress& progress)
        {
            if (progress.IsFinished())
                done(m_task.Get());
        },
        m_executor);
    return Result<void>();
}

void Opener::End()
{
    m_task = Task<Output>();
}

} // namespace Desk
