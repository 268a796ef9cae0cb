// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_ROUNDS_H
#define TOOLKIT_TESTS_SUPPORT_ROUNDS_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace ToolkitTest
{

// The rounds of a test of load, each of which does the same and leaves nothing behind:
//   Rounds rounds("commands", "TOOLKIT_TEST_COMMANDS", 2000);
//   while (rounds.GoOn())
//       rounds.Did(1000);
// They go on until as much is done as the environment variable says, or a number that suits every day, and as
// many seconds have passed as TOOLKIT_TEST_SECONDS says; and no further when something failed.
//
// Memory and descriptors are compared between rounds. What the allocator and the libraries keep for
// themselves grows by leaps and then no more, and shrinks at times; what a round loses grows with each of
// them. So one round that leaves no memory behind is the proof, and more rounds are made until there is one.
// In a long run, the later half must not need more than the quarter before it, either.
class Rounds
{
public:
    Rounds(const char* what, const char* variable, unsigned long everyDay);
    // Prints what was done.
    ~Rounds();

    Rounds(const Rounds&) = delete;
    Rounds& operator=(const Rounds&) = delete;

    // Judges the round before, if there was one; false when no more is needed, or when a test failed.
    bool GoOn();
    // How much the next round is to do: what is left, and as on every day when nothing is, but not more than
    // `most`.
    unsigned long Size(unsigned long most) const;
    // Tells that the round did so much.
    void Did(unsigned long count) { m_uDone += count; }

private:
    using Clock = std::chrono::steady_clock;

    struct Use
    {
        long long m_iHeap;
        long long m_iResident;
    };

    void Judge();
    void CompareWithBefore() const;
    long long Lowest(long long Use::*what, std::size_t begin, std::size_t end) const;

    const std::string m_strWhat;
    const unsigned long m_uEveryDay;
    const unsigned long m_uWanted;
    const Clock::time_point m_end;
    unsigned long m_uDone = 0;
    std::size_t m_uRounds = 0;
    std::size_t m_uExtraRounds = 0;
    bool m_bLeftNothing = false;
    long m_lDescriptors = 0;
    std::vector<Use> m_uses;
};

} // namespace ToolkitTest

#endif
