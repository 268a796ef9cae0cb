// SPDX-License-Identifier: MIT
#include "toolkit/files/InputStream.h"

#include <memory>

#include <gtest/gtest.h>
#include <wx/mstream.h>

namespace
{

using Toolkit::InputStream;

class CountedStream : public wxMemoryInputStream
{
public:
    explicit CountedStream(int& destroyed) : wxMemoryInputStream("abc", 3), m_destroyed(destroyed) {}
    ~CountedStream() override { ++m_destroyed; }

private:
    int& m_destroyed;
};

class Reader : public InputStream
{
public:
    using InputStream::GetStream;
    using InputStream::InputStream;
};

TEST(InputStream, DeletesWhatItOwns)
{
    int destroyed = 0;
    {
        const InputStream stream(new CountedStream(destroyed));
        EXPECT_EQ(0, destroyed);
    }
    EXPECT_EQ(1, destroyed);
}

TEST(InputStream, IsDestroyedThroughItsBase)
{
    int destroyed = 0;
    std::unique_ptr<InputStream> stream = std::make_unique<Reader>(new CountedStream(destroyed));
    stream.reset();
    EXPECT_EQ(1, destroyed);
}

TEST(InputStream, GivesDerivedClassesTheStream)
{
    int destroyed = 0;
    wxInputStream* const source = new CountedStream(destroyed);
    const Reader stream(source);
    EXPECT_EQ(source, stream.GetStream());
}

TEST(InputStream, MayHoldNothing)
{
    const Reader stream(nullptr);
    EXPECT_EQ(nullptr, stream.GetStream());
}

} // namespace
