// SPDX-License-Identifier: MIT
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include "tests/soak/Loads.h"
#include "tests/support/LogFile.h"
#include "toolkit/log/FileLogger.h"

using Toolkit::FileLogger;
using Toolkit::LogSeverity;

namespace ToolkitTest
{

namespace
{

const unsigned int s_uThreads = 8;
const std::size_t s_uPieceLength = 12;
// How far the threads may be ahead of the disk, in pieces: what is queued is memory.
const std::uintmax_t s_uMostQueued = 200000;

// "<thread> <number>\n", always of one length.
std::wstring PieceOf(unsigned int thread, unsigned long number)
{
    wchar_t piece[s_uPieceLength + 1];
    std::swprintf(piece, s_uPieceLength + 1, L"%u %09lu\n", thread, number);
    return piece;
}

void LogMany(FileLogger& logger, const LogFile& file, std::atomic<std::uintmax_t>& logged,
             unsigned int thread, unsigned long pieces)
{
    for (unsigned long number = 0; number < pieces; ++number)
    {
        logger.Write(PieceOf(thread, number));
        if (++logged % 1000 != 0)
            continue;
        std::error_code none;
        while (logged > std::filesystem::file_size(file.Path(), none) / s_uPieceLength + s_uMostQueued)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

// Reads the log piece by piece; the number of pieces that are in their place, of all threads.
unsigned long CountOrdered(const LogFile& file)
{
    std::ifstream log(file.Path());
    std::array<unsigned long, s_uThreads> next = {};
    unsigned long count = 0;
    for (std::string line; std::getline(log, line); ++count)
    {
        const std::size_t thread =
            line.size() + 1 == s_uPieceLength ? static_cast<std::size_t>(line[0] - '0') : s_uThreads;
        if (thread >= s_uThreads || std::stoul(line.substr(2)) != next[thread]++)
        {
            ADD_FAILURE() << "line " << count << ": " << line;
            break;
        }
    }
    return count;
}

} // namespace

void LogPieces(unsigned long pieces)
{
    const LogFile file;
    const unsigned long each = pieces / s_uThreads;
    std::atomic<std::uintmax_t> logged{0};
    {
        FileLogger logger(LogSeverity::Info, file.WideName(), 4294967295U);
        std::vector<std::thread> threads;
        for (unsigned int thread = 0; thread < s_uThreads; ++thread)
            threads.emplace_back([&, thread] { LogMany(logger, file, logged, thread, each); });
        for (std::thread& thread : threads)
            thread.join();
    }
    EXPECT_EQ(each * s_uThreads, CountOrdered(file));
}

} // namespace ToolkitTest
