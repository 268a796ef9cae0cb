// SPDX-License-Identifier: MIT
#include "toolkit/core/Failure.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include <sys/uio.h>
#include <unistd.h>

namespace Toolkit
{

namespace
{

class Category : public std::error_category
{
public:
    const char* name() const noexcept override { return "toolkit"; }

    std::string message(int code) const override
    {
        switch (static_cast<Errc>(code))
        {
        case Errc::ChangedByOther:
            return "changed by another program";
        case Errc::LimitReached:
            return "a limit was reached";
        case Errc::WrongInterface:
            return "made for another interface";
        case Errc::NotAnswered:
            return "not answered";
        case Errc::Malformed:
            return "malformed";
        case Errc::Refused:
            return "refused";
        }
        return "unknown failure " + std::to_string(code);
    }
};

// It is never destroyed, as codes are compared to the last moment of the process.
union LastingCategory
{
    constexpr LastingCategory() noexcept : m_category() {}
    ~LastingCategory() {}

    Category m_category;
};
const LastingCategory s_category;

const std::string& NoMessage() noexcept
{
    static const std::string s_strNone;
    return s_strNone;
}

// One call of the system, without the streams, whose state is the host's.
[[noreturn]] void EndProcessWith(const char* reason, const std::string& message) noexcept
{
    const std::size_t length = std::char_traits<char>::length(reason);
    char lineFeed = '\n';
    const iovec parts[] = {{const_cast<char*>(reason), length},
                           {const_cast<char*>(message.data()), message.size()},
                           {&lineFeed, 1}};
    const ssize_t ignored = writev(STDERR_FILENO, parts, 3);
    static_cast<void>(ignored);
    std::abort();
}

} // namespace

const std::error_category& ErrcCategory() noexcept
{
    return s_category.m_category;
}

std::error_code make_error_code(Errc code) noexcept
{
    return std::error_code(static_cast<int>(code), ErrcCategory());
}

struct Failure::Content
{
    Content(std::error_code code, std::string message) noexcept
        : m_code(code), m_strMessage(std::move(message))
    {
    }

    std::atomic<std::size_t> m_uHolders{1};
    const std::error_code m_code;
    const std::string m_strMessage;
};

Failure::Failure(std::error_code code, std::string message)
    : m_pContent(new Content(code, std::move(message)))
{
}

Failure::Failure(const Failure& other) noexcept : m_pContent(other.m_pContent)
{
    if (m_pContent != nullptr)
        m_pContent->m_uHolders.fetch_add(1, std::memory_order_relaxed);
}

Failure::Failure(Failure&& other) noexcept : m_pContent(std::exchange(other.m_pContent, nullptr)) {}

Failure& Failure::operator=(const Failure& other) noexcept
{
    Failure copy(other);
    std::swap(m_pContent, copy.m_pContent);
    return *this;
}

Failure& Failure::operator=(Failure&& other) noexcept
{
    Failure taken(std::move(other));
    std::swap(m_pContent, taken.m_pContent);
    return *this;
}

Failure::~Failure()
{
    if (m_pContent != nullptr && m_pContent->m_uHolders.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete m_pContent;
}

std::error_code Failure::Code() const noexcept
{
    return m_pContent != nullptr ? m_pContent->m_code : std::error_code();
}

const std::string& Failure::Message() const noexcept
{
    return m_pContent != nullptr ? m_pContent->m_strMessage : NoMessage();
}

void Failure::EndProcess() const noexcept
{
    EndProcessWith("the value of a failure was asked for: ", Message());
}

void Failure::EndProcessWithoutFailure() noexcept
{
    EndProcessWith("the failure of a success was asked for", NoMessage());
}

void Failure::Throw() const
{
    throw FailureError(*this);
}

FailureError::FailureError(const Failure& failure) : std::system_error(failure.Code()), m_failure(failure) {}

FailureError::FailureError(const FailureError& other) noexcept = default;
FailureError& FailureError::operator=(const FailureError& other) noexcept = default;
FailureError::~FailureError() = default;

const char* FailureError::what() const noexcept
{
    return m_failure.Message().c_str();
}

} // namespace Toolkit
