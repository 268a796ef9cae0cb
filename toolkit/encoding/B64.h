// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_B64_H
#define TOOLKIT_ENCODING_B64_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"

namespace Toolkit
{

class Bytes;

/// @ingroup classic_text
/// The length of the Base64 text for `n` bytes, padding included; 0 when an int cannot hold it.
TOOLKIT_API int GetCodeLength(int n);
/// @ingroup classic_text
/// The bytes to set aside for `n` characters of Base64.
TOOLKIT_API int GetDataLength(int n);

/// @ingroup classic_text
/// Bytes to Base64 text (RFC 4648, the standard alphabet), without line breaks and without a terminating NUL.
/// Returns 1 with a new array in `*out`, which the caller frees with `delete[]`, and its length in
/// `*outSize`; 0, with both untouched, when there is nothing to produce, a pointer is null, or an int cannot
/// hold a length. Quirk: the names are the reverse of what the two functions do.
TOOLKIT_API int b64_decode_binary(const unsigned char* data, unsigned int size, unsigned char** out,
                                  unsigned int* outSize);

/// @ingroup classic_text
/// Base64 text to bytes, with the same results. `*outSize` may be 0 with an array all the same.
/// Quirk: a character outside the alphabet is not skipped but counts as the value 0.
/// Quirk: the first "=" ends the text: a group that ends in one "=" gives three bytes, the last of them 0.
/// Quirk: a last group of fewer than four characters without "=" is dropped.
TOOLKIT_API int b64_encode_binary(const unsigned char* text, unsigned int size, unsigned char** out,
                                  unsigned int* outSize);

/// The same conversions between wide text and a buffer. Any thread may call them; nothing fails but for
/// yielding nothing.
///
/// @code
/// const Toolkit::TString<wchar_t> code(L"Ynl0ZXM=");
/// const Toolkit::smart_ptr<Toolkit::Bytes> decoded = Toolkit::B64::ToB64(code);
/// const bool same = Toolkit::B64::ToUNICODE(decoded) == code;
/// @endcode
class TOOLKIT_API B64
{
public:
    /// Base64 text to bytes; never null, and an empty buffer when nothing was decoded.
    static smart_ptr<Bytes, smart_ptr_policy> ToB64(const TString<wchar_t>& text);
    /// Bytes to Base64 text; empty for a null pointer or an empty buffer.
    static TString<wchar_t> ToUNICODE(const smart_ptr<Bytes, smart_ptr_policy>& bytes);
};

} // namespace Toolkit

#endif
