// SPDX-License-Identifier: MIT
#include "classic/State.h"

namespace Desk
{

using Toolkit::IsError;
using Toolkit::StreamResult;

StreamResult State::Serialize(Toolkit::IStream& stream) const
{
    StreamResult result = stream.Write(m_uRuns);
    if (!IsError(result))
        result = stream.Write(static_cast<unsigned int>(m_names.size()));
    for (const Text& name : m_names)
        if (!IsError(result))
            result = stream.Write(name);
    return result;
}

StreamResult State::Deserialize(Toolkit::IStream& stream)
{
    unsigned int names = 0;
    StreamResult result = stream.Read(m_uRuns);
    if (!IsError(result))
        result = stream.Read(names);
    m_names.clear();
    for (; names > 0 && !IsError(result); --names)
    {
        Text name;
        result = stream.Read(name);
        if (!IsError(result))
            m_names.push_back(name);
    }
    return result;
}

} // namespace Desk
