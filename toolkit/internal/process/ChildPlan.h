// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDPLAN_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDPLAN_H

namespace Toolkit
{

// What a child is to become: prepared texts and numbers alone, as nothing is made between the start of the
// child and that of its program. It owns nothing.
struct ChildPlan
{
    // The file that is run: the first that can be, of those up to the null at the end.
    const char* const* m_pFiles = nullptr;
    char* const* m_pArguments = nullptr;
    char* const* m_pEnvironment = nullptr;

    // A fresh child has a process group of its own, no signal blocked or ignored, and no descriptors but the
    // three below, which become its standard streams and are above them here. Another child has the mask, the
    // ignored signals and the descriptors of its host.
    bool m_bFresh = false;
    int m_standard[3] = {-1, -1, -1};
    // Where a fresh child works; null is where the host does.
    const char* m_pFolder = nullptr;
};

} // namespace Toolkit

#endif
