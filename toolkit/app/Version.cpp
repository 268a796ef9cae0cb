#include "toolkit/app/Version.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>

namespace Toolkit
{

namespace
{

const wchar_t c_strLibraryVersion[] = L"1.0.865.8";
const wchar_t s_chDelimiter = L'.';
const std::uint64_t s_uLargest = std::numeric_limits<unsigned int>::max();

// White space of the classic locale.
bool IsSpace(wchar_t character)
{
    return character == L' ' || (character >= L'\t' && character <= L'\r');
}

// What a wide stream in the classic locale reads from [text, end): a negative number wraps round, one that is
// too large, with either sign, is the largest.
unsigned int ReadNumber(const wchar_t* text, const wchar_t* end)
{
    while (text != end && IsSpace(*text))
        ++text;
    const bool negative = text != end && *text == L'-';
    if (text != end && (*text == L'-' || *text == L'+'))
        ++text;
    std::uint64_t value = 0;
    for (; text != end && *text >= L'0' && *text <= L'9'; ++text)
    {
        value = value * 10 + static_cast<std::uint64_t>(*text - L'0');
        if (value > s_uLargest)
            return static_cast<unsigned int>(s_uLargest);
    }
    return static_cast<unsigned int>(negative ? 0 - value : value);
}

} // namespace

smart_ptr<Version>* Version::s_pInstance = nullptr;

Version::Version() : Version(0, 0, 0, 0) {}

Version::Version(unsigned int majorPart, unsigned int minorPart, unsigned int buildPart,
                 unsigned int revisionPart)
    : m_uMajor(majorPart), m_uMinor(minorPart), m_uBuild(buildPart), m_uRevision(revisionPart)
{
}

Version::Version(const TString<wchar_t>& text) : Version()
{
    const std::array<unsigned int*, 4> parts = {&m_uMajor, &m_uMinor, &m_uBuild, &m_uRevision};
    std::size_t end = 0;
    for (unsigned int* const part : parts)
    {
        const std::size_t begin = text.find_first_not_of(s_chDelimiter, end);
        if (begin == text.npos)
            return;
        end = std::min(text.find(s_chDelimiter, begin), text.size());
        *part = ReadNumber(text.data() + begin, text.data() + end);
    }
}

bool Version::operator>(const Version& other) const
{
    return other < *this;
}

bool Version::operator<(const Version& other) const
{
    return CompareVersion(other) < 0;
}

bool Version::operator==(const Version& other) const
{
    return CompareVersion(other) == 0;
}

int Version::CompareVersion(const Version& other) const
{
    const auto mine = std::tie(m_uMajor, m_uMinor, m_uBuild, m_uRevision);
    const auto others = std::tie(other.m_uMajor, other.m_uMinor, other.m_uBuild, other.m_uRevision);
    if (mine == others)
        return 0;
    return mine > others ? 1 : -1;
}

int Version::CompareVersion(const TString<wchar_t>& text) const
{
    return CompareVersion(Version(text));
}

TString<wchar_t> Version::ToString() const
{
    return std::to_wstring(m_uMajor) + s_chDelimiter + std::to_wstring(m_uMinor) + s_chDelimiter +
           std::to_wstring(m_uBuild) + s_chDelimiter + std::to_wstring(m_uRevision);
}

Version* Version::Create()
{
    return new Version(c_strLibraryVersion);
}

} // namespace Toolkit
