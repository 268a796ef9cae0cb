// SPDX-License-Identifier: MIT
#include "toolkit/files/Serializer.h"

#include "toolkit/files/ISerialize.h"

namespace Toolkit
{

Serializer::~Serializer() = default;

StreamResult Serializer::Serialize(const ISerialize& object) const
{
    return object.Serialize(GetStream());
}

StreamResult Serializer::Deserialize(ISerialize& object)
{
    return object.Deserialize(GetStream());
}

} // namespace Toolkit
