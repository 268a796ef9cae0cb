// SPDX-License-Identifier: MIT
#include "toolkit/files/InputStream.h"

#include <wx/stream.h>

namespace Toolkit
{

InputStream::InputStream(wxInputStream* stream) : m_pStream(stream) {}

InputStream::~InputStream() = default;

} // namespace Toolkit
