// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDCOMMAND_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDCOMMAND_H

#include <string>
#include <vector>

#include "toolkit/core/Result.h"
#include "toolkit/internal/process/ChildPlan.h"
#include "toolkit/internal/process/ChildSettings.h"
#include "toolkit/internal/process/ChildStarter.h"

namespace Toolkit
{

// The texts of a child in the forms of the system: which files may be meant, the arguments, the environment.
// Arguments and settings live as long as it.
class ChildCommand
{
public:
    ChildCommand(const std::vector<std::string>& arguments, const ChildSettings& settings);
    ChildCommand(const ChildCommand&) = delete;
    ChildCommand& operator=(const ChildCommand&) = delete;

    // Fails where the system has no form for a text (`std::errc::invalid_argument`).
    static Result<void> Check(const std::vector<std::string>& arguments, const ChildSettings& settings);

    // All but the standard streams of a fresh child.
    ChildPlan Plan() const;

    Failure FailureOf(const ChildStarter::Trouble& trouble) const;

private:
    void FindFiles();
    void MakeEnvironment();

    const std::vector<std::string>& m_arguments;
    const ChildSettings& m_settings;
    std::vector<std::string> m_paths;
    std::vector<std::string> m_variables;
    std::vector<const char*> m_files;
    std::vector<char*> m_vector;
    // Empty where it is the host's.
    std::vector<char*> m_environment;
};

} // namespace Toolkit

#endif
