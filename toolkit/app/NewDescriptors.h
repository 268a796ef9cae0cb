#ifndef TOOLKIT_APP_NEWDESCRIPTORS_H
#define TOOLKIT_APP_NEWDESCRIPTORS_H

#include <functional>
#include <vector>

namespace Toolkit
{

// The descriptors that the base library opens while the object lives. It lets every program that the process
// starts inherit them, and so a host that restarts itself would hand on more each time. They are known by
// their numbers, as the system gives the lowest free ones; which of those are meant is for the caller to
// tell, since another thread may have been given some meanwhile.
class NewDescriptors
{
public:
    NewDescriptors();

    // Has those that are meant closed in other programs. Asked are the links by which the system shows them,
    // for one that is another thread's had better not be touched.
    void KeepFromPrograms(const std::function<bool(const char* link)>& isMeant) const;
    // Those of the base library's loops.
    void KeepLoopFromPrograms() const;

private:
    std::vector<int> m_numbers;
};

} // namespace Toolkit

#endif
