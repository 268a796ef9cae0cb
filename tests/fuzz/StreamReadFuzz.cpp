// SPDX-License-Identifier: MIT
#include <cstring>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "tests/reference/PlainStream.h"
#include "tests/support/FuzzCheck.h"
#include "toolkit/encoding/B64.h"
#include "toolkit/encoding/Bytes.h"
#include "toolkit/files/FSStream.h"

namespace
{

using Toolkit::Bytes;
using Toolkit::smart_ptr;
using Toolkit::TString;

// Reads the same item from both streams and compares what arrives.
void ReadItem(Toolkit::IStream& stream, Toolkit::IStream& plain, unsigned int kind)
{
    TString<wchar_t> texts[2] = {L"old", L"old"};
    unsigned int values[2] = {7, 7};
    char blocks[2][64] = {"", ""};
    const smart_ptr<Bytes> bytes[2] = {new Bytes, new Bytes};
    switch (kind % 4)
    {
    case 0:
        TOOLKIT_FUZZ_CHECK(stream.Read(texts[0]) == plain.Read(texts[1]));
        break;
    case 1:
        TOOLKIT_FUZZ_CHECK(stream.Read(values[0]) == plain.Read(values[1]));
        break;
    case 2:
        TOOLKIT_FUZZ_CHECK(stream.Read(blocks[0], kind / 4) == plain.Read(blocks[1], kind / 4));
        break;
    default:
        TOOLKIT_FUZZ_CHECK(bytes[0]->Deserialize(stream) == bytes[1]->Deserialize(plain));
    }
    TOOLKIT_FUZZ_CHECK(texts[0] == texts[1]);
    TOOLKIT_FUZZ_CHECK(values[0] == values[1]);
    TOOLKIT_FUZZ_CHECK(std::memcmp(blocks[0], blocks[1], sizeof blocks[0]) == 0);
    TOOLKIT_FUZZ_CHECK(Toolkit::B64::ToUNICODE(bytes[0]) == Toolkit::B64::ToUNICODE(bytes[1]));
}

} // namespace

// The first eight bytes are the items that are read, the rest is the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::size_t items = 8;
    if (size < items)
        return 0;
    static const int descriptor = memfd_create("toolkit-fuzz", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    const std::string content(reinterpret_cast<const char*>(data) + items, size - items);
    TOOLKIT_FUZZ_CHECK(ftruncate(descriptor, 0) == 0);
    TOOLKIT_FUZZ_CHECK(pwrite(descriptor, content.data(), content.size(), 0) ==
                       static_cast<ssize_t>(content.size()));

    Toolkit::FSStream stream(std::wstring(path.begin(), path.end()), Toolkit::FSStream::ModeRead);
    ToolkitTest::PlainStream plain(content);
    TOOLKIT_FUZZ_CHECK(stream.Length() == content.size());
    for (std::size_t i = 0; i < items; ++i)
        ReadItem(stream, plain, data[i]);
    return 0;
}
