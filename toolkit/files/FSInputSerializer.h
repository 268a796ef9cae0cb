// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_FSINPUTSERIALIZER_H
#define TOOLKIT_FILES_FSINPUTSERIALIZER_H

#include "toolkit/files/FSSerializer.h"

namespace Toolkit
{

/// Reads objects from an existing file, from its start.
///
/// @code
/// Toolkit::Bytes key;
/// Toolkit::FSInputSerializer input(L"key.bin");
/// if (Toolkit::IsError(input.Deserialize(key)))
///     return Fail("there is no key");
/// @endcode
class TOOLKIT_API FSInputSerializer : public FSSerializer
{
public:
    /// Opens the file for reading.
    explicit FSInputSerializer(const TString<wchar_t>& path);
    ~FSInputSerializer() override;
};

} // namespace Toolkit

#endif
