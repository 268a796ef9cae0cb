// SPDX-License-Identifier: MIT
#include "toolkit/regExp/Match.h"

#include <string>
#include <utility>

#include "toolkit/internal/regex/CompiledPattern.h"
#include "toolkit/internal/regex/RegexPart.h"

namespace Toolkit
{

namespace
{

struct ReleaseSearch
{
    void operator()(PatternSearch* search) const { LoadedRegex().releaseSearch(search); }
};

Failure SearchFailure(const PatternSearch& search)
{
    const std::string what = "cannot search the text: ";
    switch (search.result)
    {
    case PCRE2_ERROR_MATCHLIMIT:
    case PCRE2_ERROR_DEPTHLIMIT:
    case PCRE2_ERROR_HEAPLIMIT:
    case PCRE2_ERROR_JIT_STACKLIMIT:
        return Failure(Errc::LimitReached, what + LoadedRegex().describe(search.result));
    default:
        break;
    }
    if (search.result > PCRE2_ERROR_UTF8_ERR1 || search.result < PCRE2_ERROR_UTF8_ERR21)
        return Failure(Errc::Malformed, what + LoadedRegex().describe(search.result));
    return Failure(Errc::Malformed, what + "it is not UTF-8 at byte " + std::to_string(search.place) + ": " +
                                        LoadedRegex().describe(search.result));
}

} // namespace

Match::Match() noexcept = default;

Match::Match(PatternSearch* search)
{
    std::unique_ptr<PatternSearch, ReleaseSearch> owner(search);
    if (search->IsFound())
        m_pSearch = owner.release();
    else if (search->result != PCRE2_ERROR_NOMATCH)
        m_pError = std::make_unique<const Failure>(SearchFailure(*search));
}

Match::Match(const Match& other)
{
    if (other.m_pError != nullptr)
        m_pError = std::make_unique<const Failure>(*other.m_pError);
    if (other.m_pSearch != nullptr)
        m_pSearch = LoadedRegex().copySearch(*other.m_pSearch);
}

Match::Match(Match&& other) noexcept
    : m_pSearch(std::exchange(other.m_pSearch, nullptr)), m_pError(std::move(other.m_pError))
{
}

Match& Match::operator=(const Match& other)
{
    if (this != &other)
        *this = Match(other);
    return *this;
}

Match& Match::operator=(Match&& other) noexcept
{
    std::swap(m_pSearch, other.m_pSearch);
    std::swap(m_pError, other.m_pError);
    return *this;
}

Match::~Match()
{
    Release();
}

Match::operator bool() const noexcept
{
    return m_pSearch != nullptr && m_pSearch->IsFound();
}

const Failure* Match::Error() const noexcept
{
    return m_pError.get();
}

std::string_view Match::operator[](std::size_t group) const noexcept
{
    return Has(group) ? m_pSearch->subject.substr(Position(group), Length(group)) : std::string_view();
}

std::string_view Match::operator[](std::string_view name) const noexcept
{
    return (*this)[NumberOf(name)];
}

bool Match::Has(std::size_t group) const noexcept
{
    return m_pSearch != nullptr && m_pSearch->Has(group);
}

bool Match::Has(std::string_view name) const noexcept
{
    return Has(NumberOf(name));
}

std::size_t Match::Position(std::size_t group) const noexcept
{
    return Has(group) ? m_pSearch->offsets[2 * group] : std::string_view::npos;
}

std::size_t Match::Position(std::string_view name) const noexcept
{
    return Position(NumberOf(name));
}

std::size_t Match::Length(std::size_t group) const noexcept
{
    return Has(group) ? m_pSearch->offsets[2 * group + 1] - m_pSearch->offsets[2 * group] : 0;
}

std::size_t Match::Length(std::string_view name) const noexcept
{
    return Length(NumberOf(name));
}

std::size_t Match::Count() const noexcept
{
    return m_pSearch != nullptr ? m_pSearch->pattern->GetGroupCount() + 1 : 0;
}

std::size_t Match::NumberOf(std::string_view name) const noexcept
{
    return m_pSearch != nullptr ? LoadedRegex().findGroup(*m_pSearch->pattern, name, m_pSearch)
                                : CompiledPattern::s_uNoGroup;
}

void Match::Release() noexcept
{
    if (m_pSearch != nullptr)
        ReleaseSearch()(std::exchange(m_pSearch, nullptr));
}

} // namespace Toolkit
