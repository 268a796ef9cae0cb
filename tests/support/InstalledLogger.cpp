// SPDX-License-Identifier: MIT
#include "tests/support/InstalledLogger.h"

namespace ToolkitTest
{

using Toolkit::ILogger;
using Toolkit::smart_ptr;

void Record::Add(const std::wstring& piece)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_pieces.push_back(piece);
}

std::vector<std::wstring> Record::Pieces() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_pieces;
}

std::wstring Record::Text() const
{
    std::wstring text;
    for (const std::wstring& piece : Pieces())
        text += piece;
    return text;
}

void Record::Clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_pieces.clear();
}

InstalledLogger::InstalledLogger()
{
    ILogger::s_pInstance = new smart_ptr<ILogger>(ILogger::Create());
}

InstalledLogger::InstalledLogger(ILogger* logger)
{
    ILogger::s_pInstance = new smart_ptr<ILogger>(logger);
}

InstalledLogger::~InstalledLogger()
{
    delete ILogger::s_pInstance;
    ILogger::s_pInstance = nullptr;
}

} // namespace ToolkitTest
