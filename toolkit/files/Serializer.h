// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_SERIALIZER_H
#define TOOLKIT_FILES_SERIALIZER_H

#include "toolkit/core/Export.h"
#include "toolkit/files/StreamResult.h"

namespace Toolkit
{

class ISerialize;
class IStream;

/// Binds objects to one stream: each call hands the stream to the object, adds nothing and returns what the
/// object returns. Objects are read in the order in which they were written. One thread at a time.
///
/// @code
/// Toolkit::StreamResult Save(const Toolkit::Serializer& serializer, const Toolkit::Bytes& key)
/// {
///     return serializer.Serialize(key);
/// }
/// @endcode
class TOOLKIT_API Serializer
{
public:
    virtual ~Serializer();

    /// The stream, which belongs to the serializer.
    virtual IStream& GetStream() const = 0;

    /// Has the object write itself to the stream.
    StreamResult Serialize(const ISerialize& object) const;
    /// Has the object read itself from the stream.
    StreamResult Deserialize(ISerialize& object);
};

} // namespace Toolkit

#endif
