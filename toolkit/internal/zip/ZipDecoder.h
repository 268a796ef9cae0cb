// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZIP_ZIPDECODER_H
#define TOOLKIT_INTERNAL_ZIP_ZIPDECODER_H

#include <cstddef>
#include <memory>

#include <zlib.h>

#include "toolkit/internal/zip/ZipFile.h"

namespace Toolkit
{

// Decodes the content of one entry, stored or deflated, straight into the reader's memory. Nothing is yielded
// of a block in which damage, a wrong length or a wrong checksum shows, nor after it.
class ZipDecoder
{
public:
    // What is best read at a time: between two reads the decoder keeps a copy of the last 32 KiB.
    static constexpr std::size_t s_uBlock = 262144;

    ZipDecoder(std::shared_ptr<const ZipFile> file, const ZipFile::ContentRecord& entry);
    ~ZipDecoder();

    ZipDecoder(const ZipDecoder&) = delete;
    ZipDecoder& operator=(const ZipDecoder&) = delete;

    // True when there is a record in front of the content.
    bool IsFound() const { return m_content.found; }

    // True when the content, met so far or not, cannot be read to its end.
    bool IsDamaged() const { return m_state == State::Damaged; }

    // Decodes up to `count` bytes, of which it takes 4 GiB at most. Returns how many; they are fewer only
    // where the content ends, and none after it and in damage.
    std::size_t Read(void* buffer, std::size_t count);

    // For who knows of damage further on: nothing more is yielded.
    void GiveUp() { m_state = State::Damaged; }

private:
    enum class State
    {
        Open,
        Complete,
        Damaged
    };

    void Inflate();
    void Copy();
    bool Refill();

    const std::shared_ptr<const ZipFile> m_pFile;
    const unsigned int m_uChecksum;
    const bool m_bDeflated;
    ZipFile::Content m_content;
    State m_state = State::Damaged;
    unsigned long m_uChecksumSoFar = 0;
    // What of the file was not decoded yet.
    std::unique_ptr<unsigned char[]> m_pInput;
    // Where the decoder stands, in its memory and in the reader's. It knows its own address.
    z_stream m_zlib = {};
};

} // namespace Toolkit

#endif
