// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include <cstdio>
#include <memory>

#include <unistd.h>

#include "bench/Sink.h"
#include "toolkit/files/FFile.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/NullLogger.h"
#include "toolkit/log/SetSeverity.h"

namespace ToolkitGrowth
{

using namespace Toolkit;
using ToolkitBench::Sink;

namespace
{

// A message of that many characters, logged as an error, with a sink of that threshold.
template <class Text>
void AddLine(const std::string& operation, LogSeverity severity, Text (*makeText)(std::size_t))
{
    Add(operation, s_vecMany,
        [severity, makeText](std::size_t size)
        {
            return [severity, sink = smart_ptr<ILogger>(new Sink(LogSeverity::Error)), text = makeText(size)]
            {
                ILogger::SetLogger(sink);
                TOOLKIT_LOG(severity) << text;
                ILogger::SetLogger(smart_ptr<ILogger>(new NullLogger));
            };
        });
}

// The queue and the file of a logger that goes over its text anew after `maxSize` bytes.
void AddFileLogger(const std::string& operation, unsigned int maxSize)
{
    AddUntimed(operation, s_vecFew,
               [maxSize](std::size_t lines)
               {
                   return [maxSize, lines]
                   {
                       const std::string name = "toolkit-growth-" + std::to_string(getpid());
                       {
                           FileLogger logger(LogSeverity::Verbose,
                                             TString<wchar_t>(std::wstring(name.begin(), name.end())),
                                             maxSize);
                           const TString<wchar_t> line(L"a message of the usual length, more or less\n");
                           for (std::size_t i = 0; i < lines; ++i)
                               logger.Write(line);
                       }
                       unlink(("/tmp/" + name + ".vxlog").c_str());
                   };
               });
}

void AddDrain()
{
    Add("Drain", s_vecFew,
        [](std::size_t size)
        {
            const auto file = std::make_shared<FFile>();
            std::FILE* const stream = std::fopen((ToolkitBench::Folder() / "drained").c_str(), "w");
            std::setvbuf(stream, nullptr, _IONBF, 0);
            file->Attach(stream);
            return [file, lines = NumberedTexts(L"a message of the usual length ", size)]
            {
                file->Seek(0, true);
                for (const TString<wchar_t>& line : lines)
                {
                    file->Write(line);
                    file->Flush();
                }
            };
        });
}

} // namespace

void AddLog()
{
    AddLine<TString<wchar_t>>("LineDropped", LogSeverity::Verbose, &WideText);
    AddLine<TString<wchar_t>>("LineWritten", LogSeverity::Error, &WideText);
    AddLine<TString<char>>("LineWrittenUtf8", LogSeverity::Error,
                           [](std::size_t size) { return TString<char>(ToolkitBench::Words(size)); });
    Add("PieceDropped", s_vecMany,
        [](std::size_t size)
        {
            return [sink = smart_ptr<ILogger>(new Sink(LogSeverity::Error)),
                    text = TString<char>(ToolkitBench::Words(size))]
            {
                ILogger::SetLogger(sink);
                *ILogger::s_pInstance->get() << SetSeverity(LogSeverity::Verbose) << text;
                ILogger::SetLogger(smart_ptr<ILogger>(new NullLogger));
            };
        });
    AddDrain();
    AddFileLogger("FileLoggerLines", 1U << 30);
    AddFileLogger("FileLoggerLinesOver", 4096);
}

} // namespace ToolkitGrowth
