// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_NONEWTHREADS_H
#define TOOLKIT_TESTS_SUPPORT_NONEWTHREADS_H

#include <cstddef>

#include <pthread.h>

namespace ToolkitTest
{

// The system refuses every new thread, for a scope: none has as much room as it is told to have.
class NoNewThreads
{
public:
    NoNewThreads()
    {
        pthread_getattr_default_np(&m_before);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, std::size_t{1} << 47);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }
    ~NoNewThreads()
    {
        pthread_setattr_default_np(&m_before);
        pthread_attr_destroy(&m_before);
    }
    NoNewThreads(const NoNewThreads&) = delete;
    NoNewThreads& operator=(const NoNewThreads&) = delete;

private:
    pthread_attr_t m_before;
};

} // namespace ToolkitTest

#endif
