// SPDX-License-Identifier: MIT
#include "toolkit/internal/process/ChildCommand.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include <unistd.h>

#include "toolkit/internal/system/SystemFailure.h"

namespace Toolkit
{

namespace
{

const char* const c_strPath = "PATH";
// Where the C library searches without the variable.
const char* const c_strDefaultPath = "/bin:/usr/bin";

bool HasNul(std::string_view text)
{
    return text.find('\0') != std::string_view::npos;
}

Failure Invalid(const std::string& message)
{
    return Failure(std::make_error_code(std::errc::invalid_argument), message);
}

// The system takes the text for what must not be changed, and changes nothing.
char* Writable(const std::string& text)
{
    return const_cast<char*>(text.c_str());
}

std::string_view NameOf(const char* entry)
{
    const std::string_view whole(entry);
    return whole.substr(0, whole.find('='));
}

} // namespace

Result<void> ChildCommand::Check(const std::vector<std::string>& arguments, const ChildSettings& settings)
{
    if (arguments.empty() || arguments[0].empty())
        return Invalid("cannot run a program without a name");
    const std::string what = "cannot run " + std::string(arguments[0].c_str());
    if (std::any_of(arguments.begin(), arguments.end(), HasNul))
        return Invalid(what + ": an argument has a NUL in it");
    if (settings.m_folder && (settings.m_folder->empty() || HasNul(settings.m_folder->native())))
        return Invalid(what + ": the name of the folder is empty or has a NUL in it");
    for (const auto& [name, value] : settings.m_environment)
        if (name.empty() || HasNul(name) || name.find('=') != std::string::npos || HasNul(value))
            return Invalid(what + ": \"" + std::string(name.c_str()) + "\" cannot be a variable so");
    return {};
}

ChildCommand::ChildCommand(const std::vector<std::string>& arguments, const ChildSettings& settings)
    : m_arguments(arguments), m_settings(settings)
{
    for (const std::string& argument : arguments)
        m_vector.push_back(Writable(argument));
    m_vector.push_back(nullptr);
    FindFiles();
    if (settings.m_bClearEnvironment || !settings.m_environment.empty())
        MakeEnvironment();
}

// Nothing is looked at here: the first that the system runs is meant.
void ChildCommand::FindFiles()
{
    const std::string& name = m_arguments[0];
    if (name.find('/') != std::string::npos)
    {
        m_files = {name.c_str(), nullptr};
        return;
    }
    const auto own = m_settings.m_environment.find(c_strPath);
    const char* const hosts = std::getenv(c_strPath);
    const std::string_view searched = own != m_settings.m_environment.end() ? std::string_view(own->second)
                                      : hosts != nullptr                    ? hosts
                                                                            : c_strDefaultPath;
    for (std::size_t begin = 0, end = 0; end != std::string_view::npos; begin = end + 1)
    {
        end = searched.find(':', begin);
        const std::string folder(searched.substr(begin, end - begin));
        m_paths.push_back(folder.empty() ? name : folder + "/" + name);
    }
    for (const std::string& path : m_paths)
        m_files.push_back(path.c_str());
    m_files.push_back(nullptr);
}

// What is set here comes first, and hides what the host has of that name.
void ChildCommand::MakeEnvironment()
{
    for (const auto& [name, value] : m_settings.m_environment)
        m_variables.push_back(name + "=" + value);
    for (const std::string& variable : m_variables)
        m_environment.push_back(Writable(variable));
    for (char** entry = environ; !m_settings.m_bClearEnvironment && entry != nullptr && *entry != nullptr;
         ++entry)
        if (m_settings.m_environment.find(NameOf(*entry)) == m_settings.m_environment.end())
            m_environment.push_back(*entry);
    m_environment.push_back(nullptr);
}

ChildPlan ChildCommand::Plan() const
{
    ChildPlan plan;
    plan.m_pFiles = m_files.data();
    plan.m_pArguments = m_vector.data();
    plan.m_pEnvironment = m_environment.empty() ? environ : m_environment.data();
    plan.m_bFresh = true;
    plan.m_pFolder = m_settings.m_folder ? m_settings.m_folder->c_str() : nullptr;
    return plan;
}

Failure ChildCommand::FailureOf(const ChildStarter::Trouble& trouble) const
{
    const std::string& name = m_arguments[0];
    switch (trouble.m_step)
    {
    case ChildStarter::Step::Folder:
        return SystemFailure("cannot run " + name + " in the folder", m_settings.m_folder->native(),
                             trouble.m_iError);
    case ChildStarter::Step::Interpreter:
        return SystemFailure("cannot run the interpreter of", name, trouble.m_iError);
    case ChildStarter::Step::Start:
        return SystemFailure("cannot start", name, trouble.m_iError);
    default:
        return SystemFailure("cannot run", name, trouble.m_iError);
    }
}

} // namespace Toolkit
