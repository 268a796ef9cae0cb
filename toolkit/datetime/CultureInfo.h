// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_DATETIME_CULTUREINFO_H
#define TOOLKIT_DATETIME_CULTUREINFO_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// A culture as a host lists it: its name and the text that the user sees for it. A plain record for the
/// host's use.
///
/// @code
/// const Toolkit::CultureInfo cultures[] = {{L"de_DE", L"Deutsch"}, {L"en_GB", L"English"}};
/// for (const Toolkit::CultureInfo& culture : cultures)
///     std::wcout << culture.m_strName << L": " << culture.m_strDisplayName << L'\n';
/// @endcode
class TOOLKIT_API CultureInfo
{
public:
    /// Keeps copies of both texts.
    CultureInfo(const TString<wchar_t>& name, const TString<wchar_t>& displayName);

    /// The name of the culture.
    TString<wchar_t> m_strName;
    /// The text that the user sees.
    TString<wchar_t> m_strDisplayName;
};

} // namespace Toolkit

#endif
