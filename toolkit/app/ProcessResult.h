// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_PROCESSRESULT_H
#define TOOLKIT_APP_PROCESSRESULT_H

#include <memory>
#include <string>

#include "toolkit/core/Export.h"

namespace Toolkit
{

struct ChildOutcome;

/// How a Process ended, and what it wrote. A value that is cheap to copy; several threads may read one at
/// once.
///
/// @code
/// if (result->ExitCode() != 0)
///     std::cerr << "it failed: " << result->Errors();
/// else
///     std::cout << result->Output();
/// @endcode
class TOOLKIT_API ProcessResult
{
public:
    ProcessResult(const ProcessResult& other) noexcept;
    ProcessResult& operator=(const ProcessResult& other) noexcept;
    ~ProcessResult();

    /// From 0 to 255; -1 when a signal ended it. It is -1 without a signal, too, when the host itself has
    /// waited for all its children meanwhile: then nobody can tell any more.
    int ExitCode() const noexcept;
    /// The number of the signal that ended it, or 0.
    int Signal() const noexcept;
    /// True when it was killed because its time was over.
    bool TimedOut() const noexcept;
    /// True when it wrote more than is kept.
    bool Truncated() const noexcept;
    /// What it wrote, byte for byte, but for the lines that were read before.
    const std::string& Output() const noexcept;
    /// What it wrote to its errors; with `ProcessOptions::MergeErrors` that is part of the output.
    const std::string& Errors() const noexcept;

private:
    friend class Process;

    explicit ProcessResult(std::shared_ptr<const ChildOutcome> outcome) noexcept;

    std::shared_ptr<const ChildOutcome> m_pOutcome;
};

} // namespace Toolkit

#endif
