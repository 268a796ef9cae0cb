// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ICU_LOCALENAME_H
#define TOOLKIT_INTERNAL_ICU_LOCALENAME_H

#include <string>

namespace Toolkit
{

// The name of a locale as the environment gives it, "sr_RS.UTF-8@latin", taken apart: a language, then, each
// of them optional, a script, a country and a variant, a character set, which does not matter here, and a
// modifier, of which those that stand for a script or a variant matter. Anything of another form is no name,
// "C" and "POSIX" included: ICU does not survive each of them.
class LocaleName
{
public:
    explicit LocaleName(const std::string& name);

    // The name in the environment: the first of LC_ALL, LC_TIME and LANG that is not empty, or no name.
    static const char* OfUser();

    bool IsValid() const { return !m_strId.empty(); }

    // "sr_Latn_RS"; empty when invalid.
    const std::string& Id() const { return m_strId; }
    // "sr"; empty when invalid.
    std::string Language() const { return m_strId.substr(0, m_strId.find('_')); }
    // "Latn"; empty when there is none.
    const std::string& Script() const { return m_strScript; }
    // "sr_RS".
    LocaleName WithoutScript() const;

private:
    std::string m_strId;
    std::string m_strScript;
};

} // namespace Toolkit

#endif
