// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_VERSION_H
#define TOOLKIT_APP_VERSION_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"

namespace Toolkit
{

/// A version number of four parts: major, minor, build and revision. A plain value; nothing fails.
///
/// @code
/// const Toolkit::Version needed(1, 0, 865, 0);
/// if (**Toolkit::Version::s_pInstance < needed)
///     return Fail("the library is too old");
/// @endcode
class TOOLKIT_API Version
{
public:
    /// The library's own version; null before the modules are initialised and after they are released.
    static smart_ptr<Version>* s_pInstance;

    /// 0.0.0.0.
    Version();
    /// The version of these four parts.
    Version(unsigned int majorPart, unsigned int minorPart, unsigned int buildPart,
            unsigned int revisionPart);
    /// Decimal numbers with dots in between, read as a wide stream in the classic locale reads an unsigned
    /// number: white space in front is skipped, what follows the digits is ignored. What is no number and
    /// what is missing is 0; empty parts and those after the fourth are ignored.
    /// Quirk: "-1" is 4294967295, and so is a number that is too large.
    explicit Version(const TString<wchar_t>& text);

    /// The first part.
    unsigned int GetMajor() const { return m_uMajor; }
    /// The second part.
    unsigned int GetMinor() const { return m_uMinor; }
    /// The third part.
    unsigned int GetBuild() const { return m_uBuild; }
    /// The fourth part.
    unsigned int GetRevision() const { return m_uRevision; }

    /// True when this is the greater one: the first part that differs decides.
    bool operator>(const Version& other) const;
    /// True when `other` is the greater one.
    bool operator<(const Version& other) const;
    /// True when all four parts are equal.
    bool operator==(const Version& other) const;

    /// 0 when equal, 1 when this version is greater, -1 otherwise.
    int CompareVersion(const Version& other) const;
    /// The same with the version that `text` stands for.
    int CompareVersion(const TString<wchar_t>& text) const;

    /// The four parts with dots in between.
    TString<wchar_t> ToString() const;

    /// The library's own version, a new object that the caller owns.
    static Version* Create();

private:
    unsigned int m_uMajor;
    unsigned int m_uMinor;
    unsigned int m_uBuild;
    unsigned int m_uRevision;
};

} // namespace Toolkit

#endif
