#ifndef TOOLKIT_APP_NEWDESCRIPTORS_H
#define TOOLKIT_APP_NEWDESCRIPTORS_H

#include <functional>
#include <vector>

struct stat;

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

    // Has those that are meant closed in other programs.
    void KeepFromPrograms(const std::function<bool(const struct stat&)>& isMeant) const;
    // Those of the base library's loops: pipes, and what is no file at all.
    void KeepLoopFromPrograms() const;

private:
    std::vector<int> m_numbers;
};

} // namespace Toolkit

#endif
