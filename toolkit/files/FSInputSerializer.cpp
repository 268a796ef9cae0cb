// SPDX-License-Identifier: MIT
#include "toolkit/files/FSInputSerializer.h"

namespace Toolkit
{

FSInputSerializer::FSInputSerializer(const TString<wchar_t>& path) : FSSerializer(path, ModeRead) {}

FSInputSerializer::~FSInputSerializer() = default;

} // namespace Toolkit
