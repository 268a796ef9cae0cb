// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCPAYLOAD_H
#define TOOLKIT_INTERNAL_IPC_IPCPAYLOAD_H

#include <cstddef>

#include "toolkit/core/TString.h"

// The data of an execute request as text.
namespace Toolkit::IPCPayload
{

// Decodes `size` bytes by their format, one of wxWidgets' (`wxIPCFormat`): wide text is UTF-16 or
// UTF-32 in the machine's byte order; everything else, plain bytes (`wxIPC_PRIVATE`) included, is strict
// UTF-8. The text ends at its first NUL, or where the data does; bytes that make no whole element at the
// end are left out. False for what is no Unicode text; `text` is then empty.
bool Decode(const void* data, std::size_t size, int format, TString<wchar_t>& text);

} // namespace Toolkit::IPCPayload

#endif
