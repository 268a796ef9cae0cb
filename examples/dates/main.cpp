// SPDX-License-Identifier: MIT
// A date in its forms: dates [<date of RFC 3339>]

#include <chrono>
#include <iostream>

#include <toolkit/datetime/Timestamp.h>

using namespace Toolkit;

int main(int argc, char** argv)
{
    const Result<Timestamp> sent = Timestamp::Parse(argc == 2 ? argv[1] : "2026-03-02T14:05:09.250+05:00");
    if (!sent)
    {
        std::cerr << sent.error().Message() << '\n';
        return 1;
    }
    // Arithmetic is that of the standard library.
    const Timestamp due = std::chrono::system_clock::time_point(*sent) + std::chrono::hours(48);
    std::cout << sent->ToRfc3339() << '\n'
              << sent->ToRfc3339(Timestamp::Zone::Local, 0) << '\n'
              << due.ToRfc3339(Timestamp::Zone::Utc, 3) << '\n'
              << "day " << sent->LocalFields().day << ", hour " << sent->LocalFields().hour << '\n'
              << sent->Format(Timestamp::Style::Long, "de_DE") << '\n';
}
