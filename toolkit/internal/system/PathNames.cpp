// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/PathNames.h"

#include <algorithm>
#include <cctype>

#include "toolkit/internal/text/Utf8Codec.h"

namespace Toolkit
{

PathNames::Executable PathNames::SplitExecutable(const TString<wchar_t>& path, wchar_t separator,
                                                 TString<wchar_t> (*workingFolder)())
{
    const std::size_t last = path.rfind(separator);
    if (last == TString<wchar_t>::npos)
        return {workingFolder(), TString<wchar_t>()};
    const std::size_t dot = path.rfind(L'.');
    const std::size_t end = dot != TString<wchar_t>::npos && dot > last ? dot : path.size();
    return {path.substr(0, last), path.substr(last + 1, end - last - 1)};
}

TString<wchar_t> PathNames::MakeUniqueInstanceName(const TString<wchar_t>& folder,
                                                   const TString<wchar_t>& name, const TString<wchar_t>& user,
                                                   wchar_t separator)
{
    TString<wchar_t> key(folder);
    const auto dropped = [separator](wchar_t c) { return c == separator || c == L':'; };
    key.erase(std::remove_if(key.begin(), key.end(), dropped), key.end());
    key += name;
    key += user;
    for (wchar_t& c : key)
        c = static_cast<wchar_t>(std::tolower(static_cast<int>(c)));
    return key;
}

void PathNames::Join(TString<wchar_t>& result, const TString<wchar_t>& base, const TString<wchar_t>& name,
                     wchar_t separator)
{
    if (&result == &name)
        return Join(result, base, TString<wchar_t>(name), separator);
    const std::size_t separators = base.empty() || base.back() == separator ? 0 : 1;
    if (&result != &base)
    {
        result.clear();
        result.reserve(base.size() + separators + name.size());
        result.append(base);
    }
    result.append(separators, separator).append(name);
}

TString<char> PathNames::ToNative(const TString<wchar_t>& path)
{
    return path.find(L'\0') == TString<wchar_t>::npos ? Utf8Codec::Encode(path) : TString<char>();
}

} // namespace Toolkit
