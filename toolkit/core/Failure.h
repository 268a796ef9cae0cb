// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_FAILURE_H
#define TOOLKIT_CORE_FAILURE_H

#include <string>
#include <system_error>

#include "toolkit/core/Export.h"

namespace Toolkit
{

template <typename T>
class Result;

/// The failures of which the system has no code of its own. @ingroup failures
enum class Errc : int
{
    /// Another program changed what was to be changed here.
    ChangedByOther = 1,
    /// A limit that the caller or the library sets was reached.
    LimitReached = 2,
    /// A plug-in was made for another interface, or for another version of it.
    WrongInterface = 3,
    /// The other side gave no answer in time, or none at all.
    NotAnswered = 4,
    /// What was read is not in the form that it should have.
    Malformed = 5,
    /// What was asked for is not allowed.
    Refused = 6,
};

/// The category of the codes that are an `Errc`; its name is "toolkit". @ingroup failures
TOOLKIT_API const std::error_category& ErrcCategory() noexcept;

/// The code of an `Errc`; it is what makes `failure.Code() == Errc::Malformed` work. @ingroup failures
TOOLKIT_API std::error_code make_error_code(Errc code) noexcept;

/// Why an operation failed: a code for the program and a message for its user. The code is that of the system
/// where it has one, so that it compares with `std::errc`, and an `Errc` otherwise. The message says what was
/// tried, on which file or name, and the reason. A failure is a value that is cheap to copy; several threads
/// may read one at once, and copies of one are independent of each other. Only making one can throw, for want
/// of memory. One that was moved from has no code and an empty message.
///
/// @code
/// Toolkit::Failure failure(Toolkit::Errc::Malformed, "cannot read a.ini: line 3 has no name");
/// if (failure.Code() == Toolkit::Errc::Malformed)
///     std::cerr << failure.Message() << '\n';
/// @endcode
class TOOLKIT_API Failure
{
public:
    /// A code that stands for success is the caller's mistake; it is kept as it is.
    Failure(std::error_code code, std::string message);
    Failure(const Failure& other) noexcept;
    Failure(Failure&& other) noexcept;
    Failure& operator=(const Failure& other) noexcept;
    Failure& operator=(Failure&& other) noexcept;
    ~Failure();

    /// Compares with `std::errc` and with `Errc`.
    std::error_code Code() const noexcept;

    /// UTF-8, but for names of files, which are the system's own bytes. It ends with no line feed.
    const std::string& Message() const noexcept;

private:
    template <typename T>
    friend class Result;

    struct Content;

    // What stands in a result that succeeded.
    Failure() noexcept = default;

    // What a result does when its caller takes a failure for a value, or a value for a failure.
    [[noreturn]] void EndProcess() const noexcept;
    [[noreturn]] static void EndProcessWithoutFailure() noexcept;
    [[noreturn]] void Throw() const;

    Content* m_pContent = nullptr;
};

/// What `Result::value()` throws in place of a value: the failure as an exception, whose `what()` is the
/// message and whose `code()` is the code.
///
/// @code
/// try
/// {
///     use(Toolkit::ReadFile(path).value());
/// }
/// catch (const std::system_error& error)
/// {
///     std::cerr << error.what() << '\n';
/// }
/// @endcode
class TOOLKIT_API FailureError : public std::system_error
{
public:
    /// Takes a copy of the failure.
    explicit FailureError(const Failure& failure);
    FailureError(const FailureError& other) noexcept;
    FailureError& operator=(const FailureError& other) noexcept;
    ~FailureError() override;

    const char* what() const noexcept override;

    /// The failure itself.
    const Failure& Error() const noexcept { return m_failure; }

private:
    Failure m_failure;
};

} // namespace Toolkit

/// Says that an Errc is an error code without being named one.
template <>
struct std::is_error_code_enum<Toolkit::Errc> : std::true_type
{
};

#endif
