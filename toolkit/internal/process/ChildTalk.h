// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDTALK_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDTALK_H

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "toolkit/core/Result.h"
#include "toolkit/internal/process/ChildOutcome.h"
#include "toolkit/internal/process/ChildProcess.h"
#include "toolkit/internal/process/ChildSettings.h"
#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

// A child process and what goes through its pipes. Whatever is waited for, all pipes are served meanwhile, so
// that neither side ever waits for the other for ever. The child is what counts: what a process that it
// started and left behind still writes is not waited for. One thread at a time uses it; when it is destroyed,
// the child and its group are killed. A copy in a forked process has no part in it.
class ChildTalk
{
public:
    using Clock = std::chrono::steady_clock;

    // The moment when that time is over: now where it is negative, and the end of the clock where it is too
    // long.
    static Clock::time_point After(std::chrono::nanoseconds time);

    static Result<std::unique_ptr<ChildTalk>> Start(const std::vector<std::string>& arguments,
                                                    const ChildSettings& settings);

    ~ChildTalk();
    ChildTalk(const ChildTalk&) = delete;
    ChildTalk& operator=(const ChildTalk&) = delete;

    pid_t Id() const { return m_child.Id(); }
    const std::string& Name() const { return m_strName; }

    // Sends that from now on, whenever something is waited for; it is not copied. What was not sent before is
    // forgotten.
    void Send(std::string_view input);
    void SendOwn(std::string input);
    // After all of that; the child has no input from then on.
    void EndInput();
    // Forgets what was not sent yet.
    void ForgetInput() { m_unsent = std::string_view(); }

    // Each waits until `end`, which may be the greatest of all moments: false when it was too short. All is
    // sent, or never will be; there is a line, or never will be one; the child has ended.
    bool AwaitSent(Clock::time_point end);
    bool AwaitLine(Clock::time_point end);
    bool AwaitEnd(Clock::time_point end);

    bool TakesInput() const { return m_input.IsOpen() && !m_bEndsInput; }
    // The next line without its line feed; nothing where there is none.
    std::optional<std::string> TakeLine();

    // Has the group end: by force, or by asking until then and by force after it.
    void Terminate();
    void Terminate(Clock::time_point end);

    // Of a child that has ended; the output without the lines that were taken. It stays as it is.
    std::shared_ptr<const ChildOutcome> TakeOutcome();

private:
    struct Stream
    {
        Descriptor m_descriptor;
        std::string& m_strText;
    };

    ChildTalk(const std::string& name, const ChildSettings& settings);

    Result<void> Open(const std::vector<std::string>& arguments, const ChildSettings& settings);
    template <class Condition>
    bool Await(Condition condition, Clock::time_point end);
    // Waits once for anything to happen, until `end` at most, and does it.
    void Serve(Clock::time_point end);
    // Before `end` something may be due.
    Clock::time_point NextLook(Clock::time_point end) const;
    void SendSome();
    void CloseInput();
    // Returns how much of what is there was taken.
    std::size_t Receive(Stream& stream, std::size_t most);
    // What is there, and nothing that comes later.
    void ReceiveRest(Stream& stream);
    // How much of the text was not handed out.
    std::size_t Kept(const Stream& stream) const;
    bool HasLine();
    void ForgetLines();
    void TimeOut();
    // Takes the rest of the output, and the end.
    void Finish();

    const std::string m_strName;
    const std::uint64_t m_uMost;
    const pid_t m_host;
    ChildProcess m_child;
    // When the child is killed.
    Clock::time_point m_deadline;
    bool m_bEnded = false;
    // The group ends with its leader.
    bool m_bWholeGroup = false;

    UnsharedDescriptor m_input;
    std::string m_strOwnInput;
    std::string_view m_unsent;
    bool m_bEndsInput = false;

    std::shared_ptr<ChildOutcome> m_pOutcome;
    bool m_bTold = false;
    Stream m_output;
    Stream m_errors;
    // Where the next line begins, and up to where no line feed is.
    std::size_t m_uLine = 0;
    std::size_t m_uSearched = 0;
};

} // namespace Toolkit

#endif
