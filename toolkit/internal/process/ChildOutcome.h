// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDOUTCOME_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDOUTCOME_H

#include <string>

#include "toolkit/internal/process/ChildEnd.h"

namespace Toolkit
{

// What is known of a child that has ended.
struct ChildOutcome
{
    ChildEnd m_end;
    bool m_bTimedOut = false;
    bool m_bTruncated = false;
    std::string m_strOutput;
    std::string m_strErrors;
};

} // namespace Toolkit

#endif
