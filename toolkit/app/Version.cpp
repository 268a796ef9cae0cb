// SPDX-License-Identifier: MIT
#include "toolkit/app/Version.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <tuple>

#include "toolkit/core/LibraryVersion.h"
#include "toolkit/internal/text/ParseNumber.h"

namespace Toolkit
{

namespace
{

const wchar_t s_chDelimiter = L'.';

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
        const wchar_t* number = text.data() + begin;
        ParseNumber::Read(number, text.data() + end, *part);
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
    const std::string text = LibraryVersion();
    return new Version(TString<wchar_t>(text.begin(), text.end()));
}

} // namespace Toolkit
