// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_CMDLINEPARSER_H
#define TOOLKIT_APP_CMDLINEPARSER_H

#include <map>
#include <vector>

#include "toolkit/app/CmdLineOption.h"
#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"

namespace Toolkit
{

/// The arguments of a program, matched against options that the caller declares: one leading dash marks an
/// option, and the next argument without one becomes its value. Arguments come from a vector or from one
/// text, in which spaces and tabs separate and double quotation marks group. It belongs to one thread at a
/// time; unknown options and stray arguments are ignored.
///
/// @code
/// const char* arguments[] = {"desk", "-quiet", "1.eml"};
/// Toolkit::CmdLineParser parser(3, arguments);
/// Toolkit::smart_ptr<Toolkit::CmdLineOption> quiet(new Toolkit::CmdLineOption(L"quiet", false));
/// parser.AddOption(quiet);
/// if (parser.Parse() && !quiet->IsFound())
///     Show("not quiet");
/// @endcode
class TOOLKIT_API CmdLineParser
{
public:
    /// Space and tab.
    static const TString<wchar_t> c_strSeparators;
    /// The double quotation mark.
    static const TString<wchar_t> c_strDelimiters;
    /// The dash.
    static const TString<wchar_t> c_strIdentifiers;

    /// All `argc` entries, the first one included. A null entry is an empty argument, a null `argv` none at
    /// all. The narrow entries are UTF-8.
    CmdLineParser(int argc, const char** argv);
    /// The same for wide entries.
    CmdLineParser(int argc, const wchar_t** argv);

    /// The arguments that `Tokenize` finds in `line`, which is UTF-8 if narrow.
    explicit CmdLineParser(const TString<wchar_t>& line);
    /// The same for a line in UTF-8.
    explicit CmdLineParser(const TString<char>& line);

    /// Replaces `tokens` by the arguments of a command line. A quotation mark at the start of an argument
    /// groups up to the next one, where the argument ends; elsewhere it is an ordinary character.
    /// Quirk: an opening quotation mark without a closing one ends the list, and nothing tells so.
    static void Tokenize(const TString<wchar_t>& line, std::vector<TString<wchar_t>>& tokens);

    /// Declares an option. False when it is null, or when one of the same name is declared already.
    bool AddOption(smart_ptr<CmdLineOption, smart_ptr_policy> option);

    /// Stores in the declared options what was found; false when a required one is missing.
    /// Quirk: names are compared exactly while declared ones went through the narrow `tolower`, so an
    /// argument with a capital letter that this knows never matches. Quirk: what an earlier call found stays.
    bool Parse();

    /// The arguments, in their order.
    const std::vector<TString<wchar_t>>& GetArguments() const { return m_vecArguments; }

private:
    std::map<TString<wchar_t>, smart_ptr<CmdLineOption, smart_ptr_policy>> m_mapOptions;
    std::vector<TString<wchar_t>> m_vecArguments;
};

} // namespace Toolkit

#endif
