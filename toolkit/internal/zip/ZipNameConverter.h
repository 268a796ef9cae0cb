// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPNAMECONVERTER_H
#define TOOLKIT_INTERNAL_ZIP_ZIPNAMECONVERTER_H

#include <cstddef>

#include <wx/strconv.h>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// Decodes the names of an archive's entries as UTF-8, else by the local character set, else byte by byte, so
// that two names that differ stay different whatever they are written in. What is well-formed UTF-8 is hardly
// ever anything else, while the local character set depends on the environment. Any thread may use it.
class ZipNameConverter : public wxMBConv
{
public:
    static TString<wchar_t> Decode(const TString<char>& name);

    // One converter for every stream, for as long as the process lives.
    static ZipNameConverter& Instance();

    std::size_t ToWChar(wchar_t* to, std::size_t capacity, const char* from,
                        std::size_t length = wxNO_LEN) const override;
    // Nothing is written.
    std::size_t FromWChar(char* to, std::size_t capacity, const wchar_t* from,
                          std::size_t length = wxNO_LEN) const override;
    wxMBConv* Clone() const override;
};

} // namespace Toolkit

#endif
