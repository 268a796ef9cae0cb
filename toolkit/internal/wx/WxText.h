// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_WX_WXTEXT_H
#define TOOLKIT_INTERNAL_WX_WXTEXT_H

#include <wx/string.h>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// Between the library's wide text and wxWidgets' strings, whole and without any conversion of
// characters.
inline wxString ToWx(const TString<wchar_t>& text)
{
    return wxString(text.data(), text.size());
}

inline TString<wchar_t> FromWx(const wxString& text)
{
    return TString<wchar_t>(text.ToStdWstring());
}

} // namespace Toolkit

#endif
