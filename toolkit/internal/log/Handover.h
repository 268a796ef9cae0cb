// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOG_HANDOVER_H
#define TOOLKIT_INTERNAL_LOG_HANDOVER_H

// How what the threads of a program log comes to the one thread that writes it, in the order in which it was
// pushed. `Guard` locks a mutex for a scope. The mutex is never held while anything is written, so that
// nobody who logs waits for the disk.
namespace Toolkit::Handover
{

// `push` adds to what is pending. True when there was nothing before, so that the writing thread must be
// told.
template <class Guard, class Mutex, class Items, class Push>
bool Add(Mutex& mutex, Items& pending, Push push)
{
    const Guard lock(mutex);
    const bool wasEmpty = pending.empty();
    push(pending);
    return wasEmpty;
}

// For the writing thread: takes all that is pending and hands it to `write`, until there is nothing more.
// `taken` is empty before and afterwards; as the two change places, it needs no memory.
template <class Guard, class Mutex, class Items, class Write>
void Drain(Mutex& mutex, Items& pending, Items& taken, Write write)
{
    const auto take = [&]
    {
        const Guard lock(mutex);
        pending.swap(taken);
    };
    for (take(); !taken.empty(); take())
    {
        write(taken);
        taken.clear();
    }
}

} // namespace Toolkit::Handover

#endif
