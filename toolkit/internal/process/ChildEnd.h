// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDEND_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDEND_H

#include <sys/wait.h>

namespace Toolkit
{

// How a child ended: by an exit code, or by a signal. As it is made, nobody knows.
struct ChildEnd
{
    // As `waitid` tells it.
    static ChildEnd Of(const siginfo_t& info)
    {
        ChildEnd end;
        (info.si_code == CLD_EXITED ? end.m_iExitCode : end.m_iSignal) = info.si_status;
        return end;
    }

    int m_iExitCode = -1;
    int m_iSignal = 0;
};

} // namespace Toolkit

#endif
