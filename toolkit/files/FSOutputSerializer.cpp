// SPDX-License-Identifier: MIT
#include "toolkit/files/FSOutputSerializer.h"

namespace Toolkit
{

FSOutputSerializer::FSOutputSerializer(const TString<wchar_t>& path) : FSSerializer(path, ModeWrite) {}

FSOutputSerializer::~FSOutputSerializer() = default;

} // namespace Toolkit
