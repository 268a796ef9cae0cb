// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/ProcessState.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <optional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

// The fields of /proc/<process>/stat, counted from the one after the name.
const unsigned int s_uThreads = 17;
const unsigned int s_uStart = 19;
const double s_dInaccuracy = 1;

// The first KiB of a file of the system's about the process; nothing when it cannot be read.
std::optional<std::string> Read(pid_t process, const char* name)
{
    const std::string path = "/proc/" + std::to_string(process) + "/" + name;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen())
        return std::nullopt;
    char bytes[1024];
    const std::size_t count = ReadUpTo(file.Get(), bytes, sizeof bytes);
    return count > 0 ? std::optional<std::string>(std::in_place, bytes, count) : std::nullopt;
}

unsigned long long NumberAt(std::string_view text)
{
    unsigned long long number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// The state, one letter, and what follows it. The name may hold blanks and parentheses.
std::string_view AfterName(const std::string& stat)
{
    const std::size_t end = stat.rfind(") ");
    return end == std::string::npos ? std::string_view() : std::string_view(stat).substr(end + 2);
}

unsigned long long Field(std::string_view fields, unsigned int number)
{
    for (; number > 0 && !fields.empty(); --number)
        fields.remove_prefix(std::min(fields.find(' '), fields.size() - 1) + 1);
    return NumberAt(fields);
}

bool IsThreadOfAnother(pid_t process)
{
    static const std::string_view s_strLeader = "\nTgid:\t";
    const std::optional<std::string> status = Read(process, "status");
    const std::size_t place = status ? status->find(s_strLeader) : std::string::npos;
    return place != std::string::npos &&
           NumberAt(std::string_view(*status).substr(place + s_strLeader.size())) !=
               static_cast<unsigned long long>(process);
}

// A first thread that has ended looks the same while others of the process go on.
bool HasEnded(const std::string& stat)
{
    const std::string_view fields = AfterName(stat);
    return !fields.empty() && (fields[0] == 'Z' || fields[0] == 'X') && Field(fields, s_uThreads) <= 1;
}

double Seconds(const timespec& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double Now(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return Seconds(now);
}

} // namespace

bool ProcessState::IsRunning(pid_t process)
{
    if (kill(process, 0) != 0)
        return false;
    const std::optional<std::string> stat = Read(process, "stat");
    return !stat || !(HasEnded(*stat) || IsThreadOfAnother(process));
}

// The system counts the start from its own, in ticks.
bool ProcessState::StartedAfter(pid_t process, const timespec& moment)
{
    const std::optional<std::string> stat = Read(process, "stat");
    const unsigned long long ticks = stat ? Field(AfterName(*stat), s_uStart) : 0;
    if (ticks == 0)
        return false;
    const double age =
        Now(CLOCK_BOOTTIME) - static_cast<double>(ticks) / static_cast<double>(sysconf(_SC_CLK_TCK));
    return Now(CLOCK_REALTIME) - age > Seconds(moment) + s_dInaccuracy;
}

} // namespace Toolkit
