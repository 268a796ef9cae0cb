// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_CMDLINEOPTION_H
#define TOOLKIT_APP_CMDLINEOPTION_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// An option that a command line may carry, and what `CmdLineParser::Parse` found of it. The caller and the
/// parser share it through a smart pointer; it belongs to one thread at a time.
///
/// @code
/// Toolkit::smart_ptr<Toolkit::CmdLineOption> width(new Toolkit::CmdLineOption(L"width", false));
/// Toolkit::CmdLineParser parser(Toolkit::TString<wchar_t>(L"desk -width 800"));
/// parser.AddOption(width);
/// if (parser.Parse() && width->IsFound())
///     Show(Toolkit::UTF8::ToUTF8(width->GetValue())); // 800
/// @endcode
class TOOLKIT_API CmdLineOption
{
public:
    /// `name` is without the dash; each of its characters goes through the narrow `tolower`.
    CmdLineOption(const TString<wchar_t>& name, bool required);
    virtual ~CmdLineOption();

    CmdLineOption(const CmdLineOption&) = default;
    CmdLineOption& operator=(const CmdLineOption&) = default;

    /// In lower case.
    const TString<wchar_t>& GetName() const { return m_strName; }
    /// Empty when no value followed the option.
    const TString<wchar_t>& GetValue() const { return m_strValue; }
    /// True when the command line has the option.
    bool IsFound() const { return m_bFound; }
    /// True when `CmdLineParser::Parse` fails without it.
    bool IsRequired() const { return m_bRequired; }

private:
    friend class CmdLineParser;

    TString<wchar_t> m_strName;
    TString<wchar_t> m_strValue;
    bool m_bFound = false;
    bool m_bRequired;
};

} // namespace Toolkit

#endif
