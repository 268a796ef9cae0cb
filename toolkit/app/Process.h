// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_PROCESS_H
#define TOOLKIT_APP_PROCESS_H

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/app/ProcessOptions.h"
#include "toolkit/app/ProcessResult.h"
#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

class ChildTalk;

/// A child process with pipes to its input, output and errors. The program is searched in PATH (that of the
/// options, if they set it) unless its name has a slash in it, and gets its arguments exactly, no descriptors
/// but these three, no signal blocked or ignored, and a process group of its own. Signals, their handlers and
/// other children of the host are left alone. An operation that waits serves all pipes, so that neither side
/// waits for the other for ever. It waits for the process alone: processes that this one leaves behind go on,
/// and what they write later is lost. An object is used by one thread at a time; one that was moved from has
/// the number 0 and no process, and its operations fail with `Errc::Refused`. A forked copy of the host has
/// no part in it.
///
/// @code
/// Toolkit::Result<Toolkit::ProcessResult> version = Toolkit::Process::Run({"git", "--version"});
/// if (!version)
///     std::cerr << version.error().Message() << '\n';
/// else if (version->ExitCode() == 0)
///     std::cout << version->Output();
/// @endcode
class TOOLKIT_API Process
{
public:
    /// Runs a program to its end: `arguments` are its name and what it gets. A program that ends with another
    /// exit code than 0, by a signal or by the time-out is no failure. `std::errc::invalid_argument` for
    /// texts that the system has no form for; otherwise the code of the system:
    /// `no_such_file_or_directory`, `permission_denied`, `executable_format_error` (a script that names no
    /// interpreter), `argument_list_too_long`, `too_many_files_open` and others.
    static Result<ProcessResult> Run(const std::vector<std::string>& arguments,
                                     const ProcessOptions& options = ProcessOptions());

    /// Starts a program, to talk with; fails as `Run` does.
    static Result<Process> Start(const std::vector<std::string>& arguments,
                                 const ProcessOptions& options = ProcessOptions());

    /// Becomes the program of this process anew, from its file, with these arguments after its name: a
    /// restart. The process keeps its number, its folder and its environment, and of its descriptors the
    /// standard streams alone. It only comes back with a failure, and then all is as before. Nothing is
    /// destroyed or flushed, and other threads end wherever they are.
    static Result<void> ReplaceSelf(const std::vector<std::string>& arguments);

    Process(Process&& other) noexcept;
    Process& operator=(Process&& other) noexcept;
    /// Kills the process group at once, unless the process is known to have ended, and waits for the end.
    ~Process();

    /// The number of the process, which may be another's once `Wait` has succeeded.
    int Id() const noexcept;

    /// Writes to its input, and waits until the system has taken all. `std::errc::broken_pipe` when it takes
    /// no more input or the input was closed.
    Result<void> Write(std::string_view text);
    /// The same with a time-out, after which it fails with `Errc::NotAnswered`; some of the text may have
    /// been written then.
    Result<void> Write(std::string_view text, std::chrono::nanoseconds timeout);
    /// The end of its input.
    void CloseInput();

    /// The next line of its output without its line feed; the last one need not have one.
    /// `std::errc::no_message_available` when there are no more.
    Result<std::string> ReadLine();
    /// The same with a time-out, after which it fails with `Errc::NotAnswered`.
    Result<std::string> ReadLine(std::chrono::nanoseconds timeout);

    /// Closes its input, as nothing will be written any more, and waits for its end. The output of the result
    /// is what was not read as lines before. Another call gives the same result again.
    Result<ProcessResult> Wait();
    /// The same with a time-out, after which it fails with `Errc::NotAnswered`. The input stays open.
    Result<ProcessResult> Wait(std::chrono::nanoseconds timeout);

    /// Kills the process group at once. Then the process has ended, and `Wait` tells how.
    void Terminate();
    /// The same with patience: sends SIGTERM to the process group, waits that long for the process, and kills
    /// what is left.
    void Terminate(std::chrono::nanoseconds patience);

private:
    explicit Process(std::unique_ptr<ChildTalk> talk) noexcept;

    std::unique_ptr<ChildTalk> m_pTalk;
};

} // namespace Toolkit

#endif
