// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>

#include "tests/support/FuzzCheck.h"
#include "tests/support/IPCSupport.h"
#include "toolkit/app/IPCConnectionEventHelper.h"
#include "toolkit/encoding/UTF8.h"

namespace
{

// The text in the format it came in, element by element.
std::string Encoded(const std::wstring& text, wxIPCFormat format)
{
    if (format == wxIPC_UTF32TEXT)
        return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    if (format != wxIPC_UTF16TEXT)
        return Toolkit::UTF8::ToUTF8(text);
    std::u16string units;
    for (const wchar_t c : text)
        if (c < 0x10000)
            units += static_cast<char16_t>(c);
        else
            units.append(
                {static_cast<char16_t>(0xd7c0 + (c >> 10)), static_cast<char16_t>(0xdc00 + (c & 0x3ff))});
    return std::string(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t));
}

} // namespace

// The first byte is the format.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const auto format = static_cast<wxIPCFormat>(data[0] % (wxIPC_PRIVATE + 1));
    const std::string payload(reinterpret_cast<const char*>(data + 1), size - 1);
    ToolkitTest::RecordingServer server(L"/nowhere");
    Toolkit::IPCConnectionEventHelper helper(server);
    TOOLKIT_FUZZ_CHECK(helper.OnExecute("topic", payload.data(), payload.size(), format));
    TOOLKIT_FUZZ_CHECK(server.Received().size() <= 1);
    if (server.Received().empty())
    {
        const std::string bytes = payload.substr(0, payload.find('\0'));
        TOOLKIT_FUZZ_CHECK(format == wxIPC_UTF16TEXT || format == wxIPC_UTF32TEXT ||
                           (!bytes.empty() && Toolkit::UTF8::ToUNICODE(bytes).empty()));
        return 0;
    }
    const std::wstring& text = server.Received().front();
    TOOLKIT_FUZZ_CHECK(text.find(L'\0') == std::wstring::npos);
    TOOLKIT_FUZZ_CHECK(Toolkit::UTF8::ToUNICODE(Toolkit::UTF8::ToUTF8(text)) == text);
    const std::string encoded = Encoded(text, format);
    TOOLKIT_FUZZ_CHECK(payload.compare(0, encoded.size(), encoded) == 0);
    const std::size_t element = format == wxIPC_UTF16TEXT ? 2 : format == wxIPC_UTF32TEXT ? 4 : 1;
    const std::string next = payload.substr(encoded.size(), element);
    TOOLKIT_FUZZ_CHECK(next.size() < element || next == std::string(element, '\0'));
    return 0;
}
