// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_UTF8CODEC_H
#define TOOLKIT_INTERNAL_TEXT_UTF8CODEC_H

#include "toolkit/core/TString.h"

// The one conversion between wide text and UTF-8 (RFC 3629), strict in both directions: a text that holds an
// overlong form, a surrogate or a value above 10FFFF converts to an empty one. Each conversion ends at the
// first NUL. Any thread may call it.
namespace Toolkit::Utf8Codec
{

TString<wchar_t> Decode(const TString<char>& bytes);
TString<char> Encode(const TString<wchar_t>& text);

// Encodes into `bytes`, whose memory is used again.
void EncodeInto(const TString<wchar_t>& text, TString<char>& bytes);

} // namespace Toolkit::Utf8Codec

#endif
