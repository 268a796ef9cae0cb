// SPDX-License-Identifier: MIT
#include "toolkit/encoding/Bytes.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/PlainStream.h"
#include "tests/support/BytesContent.h"

using Toolkit::Bytes;
using Toolkit::IsError;
using Toolkit::StreamResult;
using Toolkit::TString;
using ToolkitTest::ContentOf;
using ToolkitTest::PlainStream;
using ToolkitTest::Raw;

namespace
{

const unsigned int s_uMebibyte = 1U << 20;

std::string Counted(unsigned int count, const std::string& bytes)
{
    std::string result(4, '\0');
    std::memcpy(result.data(), &count, 4);
    return result + bytes;
}

// Fails from the given write on, and never tells a length.
class FailingStream : public PlainStream
{
public:
    explicit FailingStream(int writes) : m_iWrites(writes) {}

    using PlainStream::Write;
    StreamResult Write(const void* data, unsigned int size) override
    {
        return m_iWrites-- > 0 ? PlainStream::Write(data, size) : StreamResult::ShortTransfer;
    }

private:
    int m_iWrites;
};

// Records what is asked for.
class RecordingStream : public PlainStream
{
public:
    using PlainStream::PlainStream;
    using PlainStream::Read;

    StreamResult Read(void* data, unsigned int size) override
    {
        m_uLargest = std::max(m_uLargest, size);
        return PlainStream::Read(data, size);
    }

    unsigned int Length() const override
    {
        m_bAsked = true;
        return PlainStream::Length();
    }

    unsigned int m_uLargest = 0;
    mutable bool m_bAsked = false;
};

static_assert(!std::is_copy_constructible_v<Bytes> && !std::is_copy_assignable_v<Bytes>);

} // namespace

TEST(Bytes, ConstructorCopies)
{
    unsigned char data[] = {1, 2, 3};
    const Bytes bytes(data, 3);
    data[0] = 9;
    EXPECT_EQ(ContentOf(bytes), "\x01\x02\x03");
}

TEST(Bytes, ConstructorOfNothingIsEmpty)
{
    const unsigned char byte = 1;
    EXPECT_EQ(ContentOf(Bytes()), "");
    EXPECT_EQ(ContentOf(Bytes(nullptr, 5)), "");
    EXPECT_EQ(ContentOf(Bytes(&byte, 0)), "");
}

TEST(Bytes, SetBytesReplacesTheContent)
{
    Bytes bytes(Raw("old text"), 8);
    EXPECT_TRUE(bytes.SetBytes(Raw("new"), 3));
    EXPECT_EQ(ContentOf(bytes), "new");
}

TEST(Bytes, SetBytesOfNothingLeavesTheBufferAsItWas)
{
    Bytes bytes(Raw("old"), 3);
    EXPECT_FALSE(bytes.SetBytes(nullptr, 5));
    EXPECT_FALSE(bytes.SetBytes(Raw("new"), 0));
    EXPECT_EQ(ContentOf(bytes), "old");
}

TEST(Bytes, GetBytesReplacesTheCallersArray)
{
    const Bytes bytes(Raw("abc"), 3);
    unsigned char* out = new unsigned char[100];
    unsigned int size = 100;
    ASSERT_TRUE(bytes.GetBytes(&out, &size));
    const std::unique_ptr<unsigned char[]> owner(out);
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(std::string(out, out + 3), "abc");
}

TEST(Bytes, GetBytesGivesAFreshArrayEachTime)
{
    const Bytes bytes(Raw("abc"), 3);
    unsigned char* out = nullptr;
    unsigned int size = 0;
    ASSERT_TRUE(bytes.GetBytes(&out, &size));
    out[0] = 'X';
    delete[] out;
    EXPECT_EQ(ContentOf(bytes), "abc");
}

TEST(Bytes, GetBytesOfNothingAnswersFalse)
{
    unsigned char marker = 0;
    unsigned char* out = &marker;
    unsigned int size = 77;
    EXPECT_FALSE(Bytes().GetBytes(&out, &size));
    EXPECT_FALSE(Bytes(Raw("abc"), 3).GetBytes(nullptr, &size));
    EXPECT_FALSE(Bytes(Raw("abc"), 3).GetBytes(&out, nullptr));
    EXPECT_EQ(out, &marker);
    EXPECT_EQ(size, 77U);
}

TEST(Bytes, CopyBytesCopiesItsArgumentAndNotTheBuffer)
{
    const Bytes bytes(Raw("abc"), 3);
    unsigned char* out = nullptr;
    unsigned int size = 0;
    ASSERT_TRUE(bytes.CopyBytes(Raw("other"), 5, &out, &size));
    const std::unique_ptr<unsigned char[]> owner(out);
    EXPECT_EQ(std::string(out, out + size), "other");
    EXPECT_EQ(ContentOf(bytes), "abc");
}

TEST(Bytes, CopyBytesMayCopyTheArrayThatItReplaces)
{
    unsigned char* out = new unsigned char[3]{1, 2, 3};
    unsigned int size = 3;
    ASSERT_TRUE(Bytes().CopyBytes(out, 2, &out, &size));
    const std::unique_ptr<unsigned char[]> owner(out);
    EXPECT_EQ(std::string(out, out + size), "\x01\x02");
}

TEST(Bytes, CopyBytesOfNothingAnswersFalse)
{
    unsigned char marker = 0;
    unsigned char* out = &marker;
    unsigned int size = 77;
    const Bytes bytes(Raw("abc"), 3);
    EXPECT_FALSE(bytes.CopyBytes(nullptr, 3, &out, &size));
    EXPECT_FALSE(bytes.CopyBytes(&marker, 0, &out, &size));
    EXPECT_FALSE(bytes.CopyBytes(&marker, 1, nullptr, &size));
    EXPECT_FALSE(bytes.CopyBytes(&marker, 1, &out, nullptr));
    EXPECT_EQ(out, &marker);
    EXPECT_EQ(size, 77U);
}

TEST(Bytes, SerializesACountAndTheBytes)
{
    PlainStream stream;
    EXPECT_EQ(Bytes(Raw("abc"), 3).Serialize(stream), StreamResult::Ok);
    EXPECT_EQ(stream.GetBytes(), Counted(3, "abc"));
}

TEST(Bytes, SerializesNothingOfAnEmptyBuffer)
{
    PlainStream stream;
    EXPECT_EQ(static_cast<unsigned int>(Bytes().Serialize(stream)), 0x01000000U);
    EXPECT_EQ(stream.GetBytes(), "");
}

TEST(Bytes, FailedWritesAreNotOpen)
{
    const Bytes bytes(Raw("abc"), 3);
    FailingStream atCount(0);
    EXPECT_EQ(bytes.Serialize(atCount), StreamResult::NotOpen);
    FailingStream atData(1);
    EXPECT_EQ(bytes.Serialize(atData), StreamResult::NotOpen);
    EXPECT_EQ(atData.GetBytes(), Counted(3, ""));
}

TEST(Bytes, DeserializesWhatWasSerialized)
{
    for (const unsigned int size : {1U, 3U, 4096U, s_uMebibyte, s_uMebibyte + 1, 5 * s_uMebibyte / 2})
    {
        std::string content(size, 'x');
        for (std::size_t i = 0; i < content.size(); ++i)
            content[i] = static_cast<char>(i * 31 >> 3);
        PlainStream stream(Counted(size, content) + "rest");
        Bytes bytes(Raw("old"), 3);
        EXPECT_EQ(bytes.Deserialize(stream), StreamResult::Ok);
        EXPECT_TRUE(ContentOf(bytes) == content) << size;
        char rest[4];
        EXPECT_EQ(stream.Read(rest, 4), StreamResult::Ok) << size;
    }
}

TEST(Bytes, DeserializedCountOfZeroEmptiesTheBuffer)
{
    PlainStream stream(Counted(0, ""));
    Bytes bytes(Raw("old"), 3);
    EXPECT_EQ(bytes.Deserialize(stream), StreamResult::Ok);
    EXPECT_EQ(ContentOf(bytes), "");
}

TEST(Bytes, MissingCountLeavesTheBufferAsItWas)
{
    PlainStream stream("abc");
    Bytes bytes(Raw("old"), 3);
    EXPECT_EQ(bytes.Deserialize(stream), StreamResult::ShortTransfer);
    EXPECT_EQ(ContentOf(bytes), "old");
}

TEST(Bytes, ShortReadOfASmallCountKeepsTheNewArray)
{
    PlainStream stream(Counted(5, "ab"));
    Bytes bytes(Raw("old text"), 8);
    EXPECT_EQ(bytes.Deserialize(stream), StreamResult::ShortTransfer);
    EXPECT_EQ(ContentOf(bytes), std::string("ab\0\0\0", 5));
}

TEST(Bytes, ForgedHugeCountLeavesTheBufferEmpty)
{
    for (const unsigned int forged : {s_uMebibyte + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
    {
        RecordingStream stream(Counted(forged, "only this"));
        Bytes bytes(Raw("old"), 3);
        EXPECT_EQ(bytes.Deserialize(stream), StreamResult::ShortTransfer) << forged;
        EXPECT_EQ(ContentOf(bytes), "");
        EXPECT_EQ(stream.m_uLargest, s_uMebibyte);
    }
}

TEST(Bytes, DeserializeReadsInSlicesAndAsksForNoLength)
{
    const unsigned int size = 3 * s_uMebibyte + 5;
    RecordingStream stream(Counted(size, std::string(size, 'x')));
    Bytes bytes;
    EXPECT_EQ(bytes.Deserialize(stream), StreamResult::Ok);
    EXPECT_EQ(stream.m_uLargest, s_uMebibyte);
    EXPECT_FALSE(stream.m_bAsked);
}
