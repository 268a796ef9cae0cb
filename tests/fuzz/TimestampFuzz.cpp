// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "tests/support/FuzzCheck.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/datetime/Timestamp.h"

// The input is a text that may be a timestamp, the date of a mail, or neither; and a moment in nanoseconds.

namespace
{

using namespace Toolkit;

void CheckFailure(const Failure& failure, std::string_view text)
{
    TOOLKIT_FUZZ_CHECK(failure.Code() == Errc::Malformed || failure.Code() == std::errc::result_out_of_range);
    TOOLKIT_FUZZ_CHECK(!failure.Message().empty() && failure.Message().size() < 250 + text.size());
}

// What is written is read as the same moment, in either zone; fields and text agree.
void CheckMoment(Timestamp time)
{
    const std::string utc = time.ToRfc3339();
    const Result<Timestamp> again = Timestamp::Parse(utc);
    TOOLKIT_FUZZ_CHECK(again && *again == time);
    const Result<Timestamp> local = Timestamp::Parse(time.ToRfc3339(Timestamp::Zone::Local));
    TOOLKIT_FUZZ_CHECK(local && *local == time);
    const Timestamp::Fields fields = time.UtcFields();
    TOOLKIT_FUZZ_CHECK(fields.year == std::stoi(utc.substr(0, 4)));
    TOOLKIT_FUZZ_CHECK(fields.month == std::stoi(utc.substr(5, 2)));
    TOOLKIT_FUZZ_CHECK(fields.day == std::stoi(utc.substr(8, 2)));
    TOOLKIT_FUZZ_CHECK(fields.hour == std::stoi(utc.substr(11, 2)));
    TOOLKIT_FUZZ_CHECK(fields.minute == std::stoi(utc.substr(14, 2)));
    TOOLKIT_FUZZ_CHECK(fields.second == std::stoi(utc.substr(17, 2)));
    const Result<Timestamp> classic = Timestamp::FromDateTime(time.ToDateTime());
    TOOLKIT_FUZZ_CHECK(!classic || *classic <= time);
}

void CheckText(std::string_view text)
{
    const Result<Timestamp> read = Timestamp::Parse(text);
    if (read)
    {
        // No other text of that length is read: a blank in it, or one byte less.
        TOOLKIT_FUZZ_CHECK(!Timestamp::Parse(text.substr(0, text.size() - 1)));
        TOOLKIT_FUZZ_CHECK(!Timestamp::Parse(std::string(text) + ' '));
        CheckMoment(*read);
    }
    else
        CheckFailure(read.error(), text);
    const Result<Timestamp> mailed = Timestamp::ParseMail(text);
    if (mailed)
    {
        // White space and comments around a date change nothing.
        const Result<Timestamp> wrapped = Timestamp::ParseMail("(a (b)) " + std::string(text) + "\r\n (c)");
        TOOLKIT_FUZZ_CHECK(wrapped && *wrapped == *mailed);
        CheckMoment(*mailed);
    }
    else
        CheckFailure(mailed.error(), text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CheckText(std::string_view(reinterpret_cast<const char*>(data), size));
    std::int64_t count = 0;
    for (std::size_t i = 0; i < size && i < 8; ++i)
        count = static_cast<std::int64_t>(static_cast<std::uint64_t>(count) << 8U | data[i]);
    CheckMoment(std::chrono::system_clock::time_point(std::chrono::nanoseconds(count)));
    return 0;
}
