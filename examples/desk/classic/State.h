// SPDX-License-Identifier: MIT
#ifndef DESK_CLASSIC_STATE_H
#define DESK_CLASSIC_STATE_H

#include <vector>

#include "toolkit/core/TString.h"
#include "toolkit/files/ISerialize.h"
#include "toolkit/files/IStream.h"
#include "toolkit/files/StreamResult.h"

namespace Desk
{

// What a host remembers from one run to the next: how often it ran, and what it worked on last.
class State : public Toolkit::ISerialize
{
public:
    using Text = Toolkit::TString<wchar_t>;

    Toolkit::StreamResult Serialize(Toolkit::IStream& stream) const override;
    Toolkit::StreamResult Deserialize(Toolkit::IStream& stream) override;

    unsigned int m_uRuns = 0;
    std::vector<Text> m_names;
};

} // namespace Desk

#endif
