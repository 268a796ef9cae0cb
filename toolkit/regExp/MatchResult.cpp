// SPDX-License-Identifier: MIT
#include "toolkit/regExp/MatchResult.h"

#include "toolkit/internal/regex/RegExpBackend.h"

namespace Toolkit
{

MatchResult::MatchResult() = default;

MatchResult::~MatchResult()
{
    FreeCode();
}

void MatchResult::FreeCode()
{
    RegExpBackend::Free(m_pCode);
    m_pCode = nullptr;
}

} // namespace Toolkit
