// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_INPUTSTREAM_H
#define TOOLKIT_FILES_INPUTSTREAM_H

#include <memory>

#include "toolkit/core/Export.h"

class wxInputStream;

namespace Toolkit
{

/// Owns a source of bytes of any kind, and deletes it when it is destroyed itself. The derived classes say
/// what is read from it, and how. It belongs to one thread at a time.
class TOOLKIT_API InputStream
{
public:
    /// Takes ownership of `stream`; null stands for a stream without anything in it.
    explicit InputStream(wxInputStream* stream);
    virtual ~InputStream();

    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;

protected:
    /// The owned stream, null if there is none; it stays this object's.
    wxInputStream* GetStream() const { return m_pStream.get(); }

private:
    const std::unique_ptr<wxInputStream> m_pStream;
};

} // namespace Toolkit

#endif
