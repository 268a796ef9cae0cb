#include "toolkit/app/NewDescriptors.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/stat.h>

#include "toolkit/app/Descriptor.h"

namespace Toolkit
{

namespace
{

// The base library opens three for its first loop.
const std::size_t s_uMost = 4;

bool IsOfLoop(const struct stat& status)
{
    return S_ISFIFO(status.st_mode) || (status.st_mode & S_IFMT) == 0;
}

} // namespace

NewDescriptors::NewDescriptors()
{
    std::vector<Descriptor> taken;
    for (std::size_t i = 0; i < s_uMost; ++i)
    {
        taken.emplace_back(eventfd(0, EFD_CLOEXEC));
        if (taken.back().IsOpen())
            m_numbers.push_back(taken.back().Get());
    }
}

void NewDescriptors::KeepFromPrograms(const std::function<bool(const struct stat&)>& isMeant) const
{
    for (const int number : m_numbers)
        if (struct stat status = {}; fstat(number, &status) == 0 && isMeant(status))
            fcntl(number, F_SETFD, FD_CLOEXEC);
}

void NewDescriptors::KeepLoopFromPrograms() const
{
    KeepFromPrograms(&IsOfLoop);
}

} // namespace Toolkit
