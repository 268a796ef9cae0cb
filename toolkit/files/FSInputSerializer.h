// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_FSINPUTSERIALIZER_H
#define TOOLKIT_FILES_FSINPUTSERIALIZER_H

#include "toolkit/files/FSSerializer.h"

namespace Toolkit
{

/// Reads objects from an existing file, from its start.
class TOOLKIT_API FSInputSerializer : public FSSerializer
{
public:
    /// Opens the file for reading.
    explicit FSInputSerializer(const TString<wchar_t>& path);
    ~FSInputSerializer() override;
};

} // namespace Toolkit

#endif
