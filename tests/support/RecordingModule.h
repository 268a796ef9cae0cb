// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_RECORDINGMODULE_H
#define TOOLKIT_TESTS_SUPPORT_RECORDINGMODULE_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/core/LibModule.h"

namespace ToolkitTest
{

using Journal = std::vector<std::string>;

// A module that writes "+name" and "-name" into a journal when it is initialised and released, and then does
// what the test gave it to do.
class RecordingModule : public Toolkit::LibModule
{
public:
    RecordingModule(std::string name, Journal& journal) : m_strName(std::move(name)), m_journal(journal) {}

    void Initialize() override { Record("+", m_onInitialize); }
    void Release() override { Record("-", m_onRelease); }

    std::function<void()> m_onInitialize;
    std::function<void()> m_onRelease;

private:
    void Record(const char* event, const std::function<void()>& action)
    {
        m_journal.push_back(event + m_strName);
        if (action)
            action();
    }

    const std::string m_strName;
    Journal& m_journal;
};

} // namespace ToolkitTest

#endif
