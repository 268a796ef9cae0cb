// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_FSOUTPUTSERIALIZER_H
#define TOOLKIT_FILES_FSOUTPUTSERIALIZER_H

#include "toolkit/files/FSSerializer.h"

namespace Toolkit
{

/// Writes objects into a file, which is created or emptied at construction.
///
/// @code
/// const Toolkit::Bytes key;
/// Toolkit::FSOutputSerializer output(L"key.bin");
/// if (Toolkit::IsError(output.Serialize(key)))
///     return Fail("the key was not written");
/// @endcode
class TOOLKIT_API FSOutputSerializer : public FSSerializer
{
public:
    /// Creates or empties the file.
    explicit FSOutputSerializer(const TString<wchar_t>& path);
    ~FSOutputSerializer() override;
};

} // namespace Toolkit

#endif
