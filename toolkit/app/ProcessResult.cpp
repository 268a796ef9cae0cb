// SPDX-License-Identifier: MIT
#include "toolkit/app/ProcessResult.h"

#include <utility>

#include "toolkit/internal/process/ChildOutcome.h"

namespace Toolkit
{

ProcessResult::ProcessResult(std::shared_ptr<const ChildOutcome> outcome) noexcept
    : m_pOutcome(std::move(outcome))
{
}

ProcessResult::ProcessResult(const ProcessResult& other) noexcept = default;
ProcessResult& ProcessResult::operator=(const ProcessResult& other) noexcept = default;
ProcessResult::~ProcessResult() = default;

int ProcessResult::ExitCode() const noexcept
{
    return m_pOutcome->m_end.m_iExitCode;
}

int ProcessResult::Signal() const noexcept
{
    return m_pOutcome->m_end.m_iSignal;
}

bool ProcessResult::TimedOut() const noexcept
{
    return m_pOutcome->m_bTimedOut;
}

bool ProcessResult::Truncated() const noexcept
{
    return m_pOutcome->m_bTruncated;
}

const std::string& ProcessResult::Output() const noexcept
{
    return m_pOutcome->m_strOutput;
}

const std::string& ProcessResult::Errors() const noexcept
{
    return m_pOutcome->m_strErrors;
}

} // namespace Toolkit
