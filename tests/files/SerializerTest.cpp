// SPDX-License-Identifier: MIT
#include "toolkit/files/Serializer.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/reference/PlainStream.h"
#include "tests/support/Document.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/B64.h"
#include "toolkit/encoding/Bytes.h"
#include "toolkit/files/FSInputSerializer.h"
#include "toolkit/files/FSOutputSerializer.h"
#include "toolkit/files/ISerialize.h"

using Toolkit::B64;
using Toolkit::Bytes;
using Toolkit::FSInputSerializer;
using Toolkit::FSOutputSerializer;
using Toolkit::FSSerializer;
using Toolkit::ISerialize;
using Toolkit::IStream;
using Toolkit::Serializer;
using Toolkit::StreamResult;
using Toolkit::TString;
using ToolkitTest::DocumentedBytes;
using ToolkitTest::PlainStream;
using ToolkitTest::ReadBytes;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

static_assert(
    std::is_same_v<decltype(&Serializer::Serialize), StreamResult (Serializer::*)(const ISerialize&) const>);
static_assert(std::is_same_v<decltype(&Serializer::Deserialize), StreamResult (Serializer::*)(ISerialize&)>);

namespace
{

static_assert(FSSerializer::ModeRead == 0 && FSSerializer::ModeWrite == 1 &&
              FSSerializer::ModeReadWrite == 2 && FSSerializer::ModeAppend == 3 &&
              FSSerializer::ModeCreate == 4);
static_assert(std::is_base_of_v<FSSerializer, FSInputSerializer> &&
              std::is_base_of_v<FSSerializer, FSOutputSerializer>);
static_assert(!std::is_convertible_v<TString<wchar_t>, FSInputSerializer>);
static_assert(!std::is_convertible_v<TString<wchar_t>, FSOutputSerializer>);

// A host's own object.
class Person : public ISerialize
{
public:
    explicit Person(const std::wstring& name = L"", unsigned int age = 0) : m_strName(name), m_uAge(age) {}

    StreamResult Serialize(IStream& stream) const override
    {
        const StreamResult result = stream.Write(m_strName);
        return IsError(result) ? result : stream.Write(m_uAge);
    }

    StreamResult Deserialize(IStream& stream) override
    {
        const StreamResult result = stream.Read(m_strName);
        return IsError(result) ? result : stream.Read(m_uAge);
    }

    TString<wchar_t> m_strName;
    unsigned int m_uAge;
};

// Answers what it is told, and remembers the stream.
class Answering : public ISerialize
{
public:
    explicit Answering(StreamResult result) : m_result(result) {}

    StreamResult Serialize(IStream& stream) const override
    {
        m_pStream = &stream;
        return m_result;
    }

    StreamResult Deserialize(IStream& stream) override
    {
        m_pStream = &stream;
        return m_result;
    }

    mutable IStream* m_pStream = nullptr;

private:
    const StreamResult m_result;
};

class MemorySerializer : public Serializer
{
public:
    IStream& GetStream() const override { return m_stream; }
    mutable PlainStream m_stream;
};

// The items of the documented example.
class Example : public ISerialize
{
public:
    StreamResult Serialize(IStream& stream) const override
    {
        const unsigned char man[] = {0x4D, 0x61, 0x6E};
        EXPECT_EQ(stream.Write(TString<wchar_t>(L"ab")), StreamResult::Ok);
        EXPECT_EQ(stream.Write(258U), StreamResult::Ok);
        EXPECT_EQ(stream.Write(TString<wchar_t>()), StreamResult::Empty);
        EXPECT_EQ(stream.Write(TString<wchar_t>(L"\u00E9\u20AC")), StreamResult::Ok);
        EXPECT_EQ(Bytes(man, 3).Serialize(stream), StreamResult::Ok);
        return stream.Write("\xFF\x00", 2);
    }

    StreamResult Deserialize(IStream& stream) override
    {
        TString<wchar_t> text;
        unsigned int value = 0;
        Toolkit::smart_ptr<Bytes> bytes(new Bytes);
        EXPECT_EQ(stream.Read(text), StreamResult::Ok);
        EXPECT_EQ(text, L"ab");
        EXPECT_EQ(stream.Read(value), StreamResult::Ok);
        EXPECT_EQ(value, 258U);
        EXPECT_EQ(stream.Read(text), StreamResult::Empty);
        EXPECT_EQ(stream.Read(text), StreamResult::Ok);
        EXPECT_EQ(text, L"\u00E9\u20AC");
        EXPECT_EQ(bytes->Deserialize(stream), StreamResult::Ok);
        EXPECT_EQ(B64::ToUNICODE(bytes), L"TWFu");
        std::string block(2, 'x');
        EXPECT_EQ(stream.Read(block.data(), 2), StreamResult::Ok);
        EXPECT_EQ(block, std::string("\xFF\x00", 2));
        return stream.Read(block.data(), 1);
    }
};

} // namespace

TEST(Serializer, HandsItsStreamToTheObjectAndAnswersWhatThatAnswers)
{
    MemorySerializer serializer;
    for (const StreamResult result : {StreamResult::Ok, StreamResult::Empty, StreamResult::LengthWriteFailed})
    {
        Answering object(result);
        EXPECT_EQ(serializer.Serialize(object), result);
        EXPECT_EQ(object.m_pStream, &serializer.GetStream());
        object.m_pStream = nullptr;
        EXPECT_EQ(serializer.Deserialize(object), result);
        EXPECT_EQ(object.m_pStream, &serializer.GetStream());
    }
    EXPECT_EQ(serializer.m_stream.GetBytes(), "");
}

TEST(Serializer, ObjectsComeBackInTheirOrder)
{
    const TemporaryFolder folder;
    const unsigned char data[] = {1, 0, 255};
    {
        const FSOutputSerializer output(folder.Wide("file"));
        EXPECT_EQ(output.Serialize(Person(L"Zo\u00EB", 41)), StreamResult::Ok);
        EXPECT_EQ(output.Serialize(Bytes(data, 3)), StreamResult::Ok);
        EXPECT_EQ(output.Serialize(Person(L"", 7)), StreamResult::Ok);
    }
    FSInputSerializer input(folder.Wide("file"));
    Person first;
    Toolkit::smart_ptr<Bytes> bytes(new Bytes);
    Person second(L"kept");
    EXPECT_EQ(input.Deserialize(first), StreamResult::Ok);
    EXPECT_EQ(input.Deserialize(*bytes), StreamResult::Ok);
    EXPECT_EQ(input.Deserialize(second), StreamResult::Ok);
    EXPECT_EQ(first.m_strName, L"Zo\u00EB");
    EXPECT_EQ(first.m_uAge, 41U);
    EXPECT_EQ(B64::ToUNICODE(bytes), L"AQD/");
    EXPECT_EQ(second.m_strName, L"kept");
    EXPECT_EQ(second.m_uAge, 7U);
    EXPECT_EQ(input.Deserialize(second), StreamResult::LengthReadFailed);
}

TEST(FSSerializer, PassesItsModeOn)
{
    const TemporaryFolder folder;
    for (const unsigned int age : {1U, 2U})
        EXPECT_EQ(FSSerializer(folder.Wide("file"), FSSerializer::ModeAppend).Serialize(Person(L"", age)),
                  StreamResult::Ok);
    EXPECT_EQ(ReadBytes(folder.Path("file")).size(), 16U);
    EXPECT_EQ(FSSerializer(folder.Wide("file"), FSSerializer::ModeCreate).Serialize(Person()),
              StreamResult::NotOpen);
    FSSerializer both(folder.Wide("file"), FSSerializer::ModeReadWrite);
    Person person;
    EXPECT_EQ(both.Deserialize(person), StreamResult::Ok);
    EXPECT_EQ(person.m_uAge, 1U);
    EXPECT_EQ(both.Serialize(Person(L"", 3)), StreamResult::Ok);
}

TEST(FSInputSerializer, MissingFileAnswersNotOpen)
{
    const TemporaryFolder folder;
    FSInputSerializer input(folder.Wide("missing"));
    Person person(L"old", 1);
    unsigned int value = 0;
    char block[4];
    EXPECT_EQ(static_cast<unsigned int>(input.Deserialize(person)), 0x10000002U);
    EXPECT_EQ(static_cast<unsigned int>(input.GetStream().Read(value)), 0x10000002U);
    EXPECT_EQ(static_cast<unsigned int>(input.GetStream().Read(block, 4)), 0x10000002U);
    EXPECT_EQ(input.GetStream().Length(), 0U);
    EXPECT_EQ(person.m_strName, L"old");
    EXPECT_EQ(ReadBytes(folder.Path("missing")), "");
}

TEST(FSInputSerializer, BytesOfAMissingFileAreAShortTransfer)
{
    const TemporaryFolder folder;
    FSInputSerializer input(folder.Wide("missing"));
    Bytes bytes;
    EXPECT_EQ(input.Deserialize(bytes), StreamResult::ShortTransfer);
}

TEST(FSOutputSerializer, EmptiesAnExistingFileAtConstruction)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "old");
    const FSOutputSerializer output(folder.Wide("file"));
    EXPECT_EQ(output.GetStream().Length(), 0U);
    EXPECT_EQ(ReadBytes(folder.Path("file")), "");
}

TEST(FSOutputSerializer, UnusablePathAnswersNotOpen)
{
    const TemporaryFolder folder;
    const FSOutputSerializer output(folder.Wide("no/such/folder"));
    EXPECT_EQ(output.Serialize(Person(L"a", 1)), StreamResult::NotOpen);
    const unsigned char byte = 1;
    EXPECT_EQ(output.Serialize(Bytes(&byte, 1)), StreamResult::NotOpen);
    EXPECT_EQ(output.Serialize(Bytes()), StreamResult::Empty);
}

TEST(FSOutputSerializer, FullDiskIsReported)
{
    const FSOutputSerializer output(L"/dev/full");
    EXPECT_EQ(output.Serialize(Person(L"a", 1)), StreamResult::LengthWriteFailed);
}

TEST(SerializedFile, DocumentedExampleIsWhatIsWritten)
{
    const TemporaryFolder folder;
    {
        const FSOutputSerializer output(folder.Wide("file"));
        EXPECT_EQ(output.Serialize(Example()), StreamResult::Ok);
    }
    const std::string documented = DocumentedBytes("```hex");
    EXPECT_EQ(documented.size(), 41U);
    EXPECT_EQ(ReadBytes(folder.Path("file")), documented);
}

TEST(SerializedFile, DocumentedExampleIsReadBack)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), DocumentedBytes("```hex"));
    FSInputSerializer input(folder.Wide("file"));
    Example example;
    EXPECT_EQ(input.Deserialize(example), StreamResult::ShortTransfer);
}
