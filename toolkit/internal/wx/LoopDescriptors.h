// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_WX_LOOPDESCRIPTORS_H
#define TOOLKIT_INTERNAL_WX_LOOPDESCRIPTORS_H

#include <vector>

namespace Toolkit
{

// The descriptors of the event loops of wxWidgets, which lets every program that the process starts inherit
// them: a host that restarts itself would hand on more each time. They are found by what the system tells of
// them: the one that polls is the one that watches a descriptor of ours, and the loop that is made while the
// object lives is the one whose pipe it watches from then on. Nothing is done to any other descriptor, and
// nothing at all where the system does not tell. For the main thread of wxWidgets.
class LoopDescriptors
{
public:
    // `watched` is a source of the loops.
    explicit LoopDescriptors(int watched);

    // Has the descriptor that polls closed in other programs.
    void KeepPollFromPrograms() const;
    // The same for the pipe of the loop that was made since this object was.
    void KeepNewLoopFromPrograms() const;

private:
    // -1 when it was not found.
    int m_iPoll;
    std::vector<int> m_before;
};

} // namespace Toolkit

#endif
