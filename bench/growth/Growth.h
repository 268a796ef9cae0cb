// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_GROWTH_GROWTH_H
#define TOOLKIT_BENCH_GROWTH_GROWTH_H

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "bench/Bench.h"
#include "toolkit/encoding/UTF8.h"

// How the cost of each operation grows: the program bench_growth, whose rows are in bench/growth.txt.
namespace ToolkitGrowth
{

using Work = std::function<void()>;
using Toolkit::TString;

// Sizes for what costs about a nanosecond an element, and for what costs a hundred times that or more.
extern const std::vector<long> s_vecMany;
extern const std::vector<long> s_vecFew;

// Adds an operation: `make(size)` answers the work for that size.
void Add(const std::string& operation, const std::vector<long>& sizes,
         const std::function<Work(std::size_t)>& make);

// The same for what waits, whatever its size, so that its time tells nothing.
void AddUntimed(const std::string& operation, const std::vector<long>& sizes,
                const std::function<Work(std::size_t)>& make);

// A path in the benchmark's own folder.
TString<wchar_t> PathOf(const std::string& name);

TString<wchar_t> WideText(std::size_t length);

// `count` texts that begin with `prefix` and end with their number.
std::vector<TString<wchar_t>> NumberedTexts(const std::wstring& prefix, std::size_t count);

void AddApp();
void AddDateTime();
void AddEncoding();
void AddFiles();
void AddIni();
void AddIpc();
void AddLog();
void AddRegExp();
void AddText();
void AddThreading();
void AddZip();

} // namespace ToolkitGrowth

#endif
