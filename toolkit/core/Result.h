// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_RESULT_H
#define TOOLKIT_CORE_RESULT_H

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "toolkit/core/Failure.h"

namespace Toolkit
{

template <typename T>
class Result;

namespace ResultDetail
{

template <typename T>
struct IsResult : std::false_type
{
};

template <typename T>
struct IsResult<Result<T>> : std::true_type
{
};

} // namespace ResultDetail

/// What an operation returns that can fail: its value, or the `Failure` that says why there is none. The
/// names are those of `std::expected`. A result is a value like what it holds: its owner decides which thread
/// uses it. Whoever reads the value of a failure with `*` or `->` ends the process, with the message on the
/// standard error output; `value()` throws a `FailureError` instead, and `value_or` returns its argument. One
/// that was moved from keeps its kind.
///
/// @code
/// Toolkit::Result<std::string> text = Toolkit::ReadFile("/etc/hostname");
/// if (!text)
///     std::cerr << text.error().Message() << '\n';
/// else
///     std::cout << *text;
/// @endcode
template <typename T>
class [[nodiscard]] Result
{
    static_assert(std::is_object_v<T> && !std::is_array_v<T> && !std::is_same_v<std::remove_cv_t<T>, Failure>,
                  "the value of a result is an object, and no failure");

    template <typename U>
    static constexpr bool s_bIsValue =
        std::is_constructible_v<T, U&&> && !ResultDetail::IsResult<std::decay_t<U>>::value &&
        !std::is_same_v<std::decay_t<U>, Failure>;

public:
    /// The type of the value.
    using value_type = T;
    /// The type of the failure.
    using error_type = Failure;

    /// A success with this value, which is taken implicitly where `T` takes it implicitly.
    template <typename U = T, std::enable_if_t<s_bIsValue<U> && std::is_convertible_v<U&&, T>, int> = 0>
    Result(U&& value) : m_value(std::in_place, std::forward<U>(value))
    {
    }
    /// A success with this value, where `T` takes it explicitly alone.
    template <typename U = T, std::enable_if_t<s_bIsValue<U> && !std::is_convertible_v<U&&, T>, int> = 0>
    explicit Result(U&& value) : m_value(std::in_place, std::forward<U>(value))
    {
    }

    /// A failure.
    Result(Failure failure) noexcept : m_failure(std::move(failure)) {}

    /// The same of a value that converts, a pointer to a derived class for instance.
    template <typename U, std::enable_if_t<!std::is_same_v<U, T> && std::is_convertible_v<U&&, T> &&
                                               !std::is_convertible_v<Result<U>&&, T>,
                                           int> = 0>
    Result(Result<U> other) : m_failure(std::move(other.m_failure))
    {
        if (other.m_value)
            m_value.emplace(*std::move(other.m_value));
    }

    /// True for a success.
    bool has_value() const noexcept { return m_value.has_value(); }
    /// True for a success.
    explicit operator bool() const noexcept { return m_value.has_value(); }

    /// The value. A failure ends the process with its message.
    T& operator*() &
    {
        NeedValue();
        return *m_value;
    }
    /// The value of a constant result.
    const T& operator*() const&
    {
        NeedValue();
        return *m_value;
    }
    /// The value of a result that is about to end, by value, so that a range-based `for` may loop over it.
    T operator*() &&
    {
        NeedValue();
        return *std::move(m_value);
    }
    /// The members of the value. A failure ends the process with its message.
    T* operator->()
    {
        NeedValue();
        return std::addressof(*m_value);
    }
    /// The members of the value of a constant result.
    const T* operator->() const
    {
        NeedValue();
        return std::addressof(*m_value);
    }

    /// The value. A failure is thrown as a `FailureError`.
    T& value() &
    {
        ThrowFailure();
        return *m_value;
    }
    /// The value of a constant result.
    const T& value() const&
    {
        ThrowFailure();
        return *m_value;
    }
    /// The value of a result that is about to end, by value.
    T value() &&
    {
        ThrowFailure();
        return *std::move(m_value);
    }

    /// The value, or this one in place of a failure.
    template <typename U>
    T value_or(U&& fallback) const&
    {
        return m_value.value_or(std::forward<U>(fallback));
    }
    /// The same of a result that is about to end.
    template <typename U>
    T value_or(U&& fallback) &&
    {
        return std::move(m_value).value_or(std::forward<U>(fallback));
    }

    /// The failure. A success ends the process, with that on the standard error output.
    const Failure& error() const&
    {
        NeedFailure();
        return m_failure;
    }
    /// The failure of a result that is about to end, by value.
    Failure error() &&
    {
        NeedFailure();
        return std::move(m_failure);
    }

private:
    template <typename U>
    friend class Result;

    void NeedValue() const
    {
        if (!m_value)
            m_failure.EndProcess();
    }
    void NeedFailure() const
    {
        if (m_value)
            Failure::EndProcessWithoutFailure();
    }
    void ThrowFailure() const
    {
        if (!m_value)
            m_failure.Throw();
    }

    std::optional<T> m_value;
    Failure m_failure;
};

/// What an operation returns that can fail and has no value: that it succeeded, or the `Failure`.
///
/// @code
/// if (Toolkit::Result<void> done = Toolkit::WriteFile(path, text); !done)
///     std::cerr << done.error().Message() << '\n';
/// @endcode
template <>
class [[nodiscard]] Result<void>
{
public:
    /// There is no value.
    using value_type = void;
    /// The type of the failure.
    using error_type = Failure;

    /// A success.
    Result() noexcept = default;
    /// A failure.
    Result(Failure failure) noexcept : m_bSucceeded(false), m_failure(std::move(failure)) {}

    /// True for a success.
    bool has_value() const noexcept { return m_bSucceeded; }
    /// True for a success.
    explicit operator bool() const noexcept { return m_bSucceeded; }

    /// Nothing. A failure ends the process with its message.
    void operator*() const
    {
        if (!m_bSucceeded)
            m_failure.EndProcess();
    }

    /// Nothing. A failure is thrown as a `FailureError`.
    void value() const
    {
        if (!m_bSucceeded)
            m_failure.Throw();
    }

    /// The failure. A success ends the process, with that on the standard error output.
    const Failure& error() const&
    {
        NeedFailure();
        return m_failure;
    }
    /// The failure of a result that is about to end, by value.
    Failure error() &&
    {
        NeedFailure();
        return std::move(m_failure);
    }

private:
    void NeedFailure() const
    {
        if (m_bSucceeded)
            Failure::EndProcessWithoutFailure();
    }

    bool m_bSucceeded = true;
    Failure m_failure;
};

} // namespace Toolkit

#endif
