// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_TASK_H
#define TOOLKIT_THREADING_TASK_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// How far a task is: a snapshot, which any thread may read and copy at no cost. Before the first report it
/// is 0 of 0 without a text.
///
/// @code
/// Toolkit::TaskProgress progress = task.Progress();
/// if (!progress.IsFinished())
///     std::cout << progress.Done() << '/' << progress.All() << ' ' << progress.Text() << '\n';
/// @endcode
class TOOLKIT_API TaskProgress
{
public:
    TaskProgress() noexcept;
    ~TaskProgress();
    TaskProgress(const TaskProgress& other) noexcept;
    TaskProgress& operator=(const TaskProgress& other) noexcept;

    /// How much is done, in the unit of the work.
    std::int64_t Done() const noexcept;
    /// How much there is to do; 0 before the first report.
    std::int64_t All() const noexcept;
    /// What the work says that it does.
    const std::string& Text() const noexcept;
    /// True once the work has returned or thrown.
    bool IsFinished() const noexcept;

private:
    friend class TaskBase;
    friend class TaskContext;
    struct Content;

    std::shared_ptr<const Content> m_pContent;
};

/// What the work of a task gets: how to rest, to report, and to learn that it is to end. It lives as long as
/// the work runs, which may hand it to threads of its own.
///
/// @code
/// int Index(Toolkit::TaskContext& context)
/// {
///     int done = 0;
///     for (; done < 10 && context.SleepFor(std::chrono::milliseconds(10)); ++done)
///         context.Report(done, 10, "a name");
///     return done;
/// }
/// @endcode
class TOOLKIT_API TaskContext
{
public:
    TaskContext(const TaskContext&) = delete;
    TaskContext& operator=(const TaskContext&) = delete;

    /// True when the task was cancelled, or when its owner destroys it.
    bool IsCancelled() const noexcept;
    /// Sleeps. True after that time; false as soon as the task is cancelled.
    bool SleepFor(std::chrono::nanoseconds time);
    /// Sets the progress of the task. Any thread may report.
    void Report(std::int64_t done, std::int64_t all, std::string_view text = std::string_view());

private:
    friend class TaskBase;
    explicit TaskContext(void* state) noexcept : m_pState(state) {}

    void* const m_pState;
};

/// What a `Task` is without its type; see there.
class TOOLKIT_API TaskBase
{
public:
    /// How a host has functions called on a thread of its own: it takes one and calls it there, later or at
    /// once.
    using Executor = std::function<void(std::function<void()>)>;

    /// Asks the work to end; it ends when it looks. What it returns then is its value all the same.
    void Cancel() noexcept;
    /// True once `Cancel` was called.
    bool IsCancelled() const noexcept;
    /// True until the work has returned or thrown, and the last call of `OnChange` was made or handed over.
    bool IsRunning() const noexcept;
    /// Blocks until the task runs no more.
    void Wait() const noexcept;
    /// Blocks until the task runs no more, or for that time; true when it runs no more.
    bool WaitFor(std::chrono::nanoseconds time) const noexcept;

    /// How far the work is, as it reported last.
    TaskProgress Progress() const;

    /// Has `changed` called after reports, at most every 50 ms, and once more at the end, with a progress
    /// that is finished; after that never again. It is called on the task's thread while that reports or
    /// sleeps, or by `executor`. A function that is given after the end is called at once. A new one replaces
    /// the one before, and an empty one ends the calls. Destroying the task ends them, too, and waits for one
    /// that is under way on another thread. What `changed` or `executor` throws is dropped.
    void OnChange(std::function<void(const TaskProgress&)> changed, Executor executor = Executor());

    TaskBase(const TaskBase&) = delete;
    TaskBase& operator=(const TaskBase&) = delete;

protected:
    TaskBase() noexcept;
    /// Starts the work on a new thread; `value` is where it stores its result.
    TaskBase(std::function<void(TaskContext&)> work, std::shared_ptr<void> value);
    TaskBase(TaskBase&& other) noexcept;
    TaskBase& operator=(TaskBase&& other) noexcept;
    ~TaskBase();

    /// Waits for the end and rethrows what the work threw; what the work stored else.
    std::shared_ptr<void> Take();

private:
    friend class TaskContext;
    struct State;

    void End() noexcept;

    std::shared_ptr<State> m_pState;
};

/// Work on a thread of its own, with progress, a way to cancel it, and a value at its end. The owner destroys
/// it or assigns another over it at any time, which cancels it and waits for its end; on the task's own
/// thread it waits for nothing. Every other operation may be called from any thread. What the work throws is
/// thrown by `Get`; a thread that the system refuses is a `std::system_error` there. One that was moved from,
/// or made without work, has ended and holds nothing.
///
/// @code
/// auto index = Toolkit::Task<int>::Start([](Toolkit::TaskContext& context) { return Index(context); });
/// index.OnChange([](const Toolkit::TaskProgress& progress) { Show(progress.Text()); }, executor);
/// if (!index.WaitFor(std::chrono::seconds(2)))
///     index.Cancel();
/// int done = index.Get();
/// @endcode
template <typename T>
class Task : public TaskBase
{
    static_assert(std::is_void_v<T> || (std::is_object_v<T> && !std::is_array_v<T>),
                  "the value of a task is an object or nothing");

public:
    Task() noexcept = default;
    Task(Task&& other) noexcept = default;
    Task& operator=(Task&& other) noexcept = default;

    /// Calls `work(TaskContext&)`, or `work()`, on a new thread. The function is destroyed there, before the
    /// task ends.
    template <typename Function>
    static Task Start(Function&& work)
    {
        auto shared = std::make_shared<std::decay_t<Function>>(std::forward<Function>(work));
        auto value = std::make_shared<Value>();
        return Task(
            [shared, slot = value.get()](TaskContext& context)
            {
                if constexpr (std::is_void_v<T>)
                    Call(*shared, context);
                else
                    slot->emplace(Call(*shared, context));
            },
            value);
    }

    /// Waits for the end and returns the value, once; throws what the work threw. A second call, one without
    /// work and one on the task's own thread throw a `std::logic_error`.
    T Get()
    {
        const std::shared_ptr<void> value = Take();
        if constexpr (!std::is_void_v<T>)
            return std::move(**static_cast<Value*>(value.get()));
    }

private:
    using Value = std::optional<std::conditional_t<std::is_void_v<T>, bool, T>>;

    Task(std::function<void(TaskContext&)> work, std::shared_ptr<void> value)
        : TaskBase(std::move(work), std::move(value))
    {
    }

    template <typename Function>
    static decltype(auto) Call(Function& work, TaskContext& context)
    {
        if constexpr (std::is_invocable_v<Function&, TaskContext&>)
            return std::invoke(work, context);
        else
            return std::invoke(work);
    }
};

} // namespace Toolkit

#endif
