// SPDX-License-Identifier: MIT
// Values for the debugger to look at: it stops in `Stop`, one frame below them.

#include <cstdlib>

#include "toolkit/app/Folders.h"
#include "toolkit/core/Result.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/datetime/Timestamp.h"
#include "toolkit/encoding/Bytes.h"
#include "toolkit/files/Settings.h"

using namespace Toolkit;

namespace
{

class Shape
{
public:
    virtual ~Shape() = default;
};

class Circle : public Shape
{
public:
    int m_iRadius = 7;
};

// A place for a breakpoint, where all values of the caller are alive.
[[gnu::noinline]] void Stop()
{
    asm volatile("" : : : "memory");
}

} // namespace

int main()
{
    [[maybe_unused]] const TString<wchar_t> wide = L"caf\u00e9 \u5c71\u7530";
    const TString<char> narrow(std::string("a\0b", 3));
    [[maybe_unused]] const TString<char> emptyText;
    const smart_ptr<TString<char>> null;
    const smart_ptr<TString<char>> one(new TString<char>("held"));
    const smart_ptr<Shape> circle(new Circle);
    const smart_ptr<Shape> sameCircle = circle;
    const Bytes noBytes;
    const Bytes bytes(reinterpret_cast<const unsigned char*>("Man\xff"), 4);
    const unsigned char zeros[40] = {};
    const Bytes manyBytes(zeros, sizeof(zeros));
    const DateTime moment(2009, 3, 7, 13, 5, 9, 0);
    const DateTime invalid(2009, 13, 1, 0, 0, 0);
    [[maybe_unused]] const Timestamp stamp = *Timestamp::Parse("1969-12-31T23:59:59.25Z");
    const Failure failure(Errc::Malformed, "no number");
    const Result<int> number = 7;
    const Result<int> noNumber = failure;
    const Result<void> nothing;
    setenv("XDG_CONFIG_HOME", "/config", 1);
    const Folders folders = *Folders::Of("watch");
    const Settings settings = *Settings::LoadOrNew("/nowhere/a.ini");
    Stop();
    return 0;
}
