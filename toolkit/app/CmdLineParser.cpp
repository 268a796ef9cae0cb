// SPDX-License-Identifier: MIT
#include "toolkit/app/CmdLineParser.h"

#include <cwchar>
#include <functional>

#include "toolkit/encoding/UTF8.h"

namespace Toolkit
{

namespace
{

const wchar_t c_separators[] = L" \t";
const wchar_t c_delimiters[] = L"\"";
const wchar_t c_identifiers[] = L"-";

bool IsSeparator(wchar_t c)
{
    return c == c_separators[0] || c == c_separators[1];
}

TString<wchar_t> ToWide(const char* text)
{
    return UTF8::ToUNICODE(text);
}

TString<wchar_t> ToWide(const wchar_t* text)
{
    return text;
}

template <class C>
void Append(std::vector<TString<wchar_t>>& arguments, int argc, const C* const* argv)
{
    if (argv == nullptr || argc <= 0)
        return;
    arguments.reserve(static_cast<std::size_t>(argc));
    for (int i = 0; i < argc; ++i)
        arguments.push_back(ToWide(argv[i]));
}

bool Holds(const std::vector<TString<wchar_t>>& tokens, const TString<wchar_t>& text)
{
    const std::less<const TString<wchar_t>*> before;
    return !before(&text, tokens.data()) && before(&text, tokens.data() + tokens.size());
}

} // namespace

TOOLKIT_ONCE const TString<wchar_t> CmdLineParser::c_strSeparators = c_separators;
TOOLKIT_ONCE const TString<wchar_t> CmdLineParser::c_strDelimiters = c_delimiters;
TOOLKIT_ONCE const TString<wchar_t> CmdLineParser::c_strIdentifiers = c_identifiers;

CmdLineParser::CmdLineParser(int argc, const char** argv)
{
    Append(m_vecArguments, argc, argv);
}

CmdLineParser::CmdLineParser(int argc, const wchar_t** argv)
{
    Append(m_vecArguments, argc, argv);
}

CmdLineParser::CmdLineParser(const TString<wchar_t>& line)
{
    Tokenize(line, m_vecArguments);
}

CmdLineParser::CmdLineParser(const TString<char>& line)
{
    Tokenize(UTF8::ToUNICODE(line), m_vecArguments);
}

void CmdLineParser::Tokenize(const TString<wchar_t>& line, std::vector<TString<wchar_t>>& tokens)
{
    if (Holds(tokens, line))
        return Tokenize(TString<wchar_t>(line), tokens);
    tokens.clear();
    const wchar_t* at = line.data();
    const wchar_t* const stop = at + line.size();
    for (;;)
    {
        while (at != stop && IsSeparator(*at))
            ++at;
        if (at == stop)
            return;
        const bool quoted = *at == c_delimiters[0];
        const wchar_t* const start = quoted ? at + 1 : at;
        if (quoted)
            at = std::wmemchr(start, c_delimiters[0], static_cast<std::size_t>(stop - start));
        else
            while (at != stop && !IsSeparator(*at))
                ++at;
        if (at == nullptr)
            return;
        tokens.emplace_back(std::wstring(start, at));
        if (quoted)
            ++at;
    }
}

bool CmdLineParser::AddOption(smart_ptr<CmdLineOption, smart_ptr_policy> option)
{
    return !option.IsNull() && m_mapOptions.emplace(option->GetName(), option).second;
}

bool CmdLineParser::Parse()
{
    CmdLineOption* current = nullptr;
    for (const TString<wchar_t>& argument : m_vecArguments)
    {
        if (!argument.empty() && argument.front() == c_identifiers[0])
        {
            const auto found = m_mapOptions.find(argument.substr(1));
            current = found != m_mapOptions.end() ? found->second.get() : nullptr;
            if (current != nullptr)
                current->m_bFound = true;
        }
        else if (current != nullptr)
        {
            current->m_strValue = argument;
            current = nullptr;
        }
    }
    for (const auto& [name, option] : m_mapOptions)
        if (option->IsRequired() && !option->IsFound())
            return false;
    return true;
}

} // namespace Toolkit
