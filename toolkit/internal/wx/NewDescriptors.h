// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_WX_NEWDESCRIPTORS_H
#define TOOLKIT_INTERNAL_WX_NEWDESCRIPTORS_H

#include <vector>

namespace Toolkit
{

// The descriptors that the base library opens while the object lives. It lets every program that the process
// starts inherit them, and so a host that restarts itself would hand on more each time. They are known by
// their numbers, as the system gives the lowest free ones, and by what the system shows them to be, since
// another thread may have been given some meanwhile.
class NewDescriptors
{
public:
    NewDescriptors();

    // Has those of the base library's loops closed in other programs.
    void KeepLoopFromPrograms() const;

private:
    std::vector<int> m_numbers;
};

} // namespace Toolkit

#endif
