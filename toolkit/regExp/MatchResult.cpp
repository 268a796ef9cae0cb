// SPDX-License-Identifier: MIT
#include "toolkit/regExp/MatchResult.h"

#include "toolkit/internal/regex/RegexPart.h"

namespace Toolkit
{

MatchResult::MatchResult() = default;

MatchResult::~MatchResult()
{
    FreeCode();
}

void MatchResult::FreeCode()
{
    if (m_pCode != nullptr)
        LoadedRegex().free(m_pCode);
    m_pCode = nullptr;
}

} // namespace Toolkit
