// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/RegexCalls.h"

// What the library finds by its name, `c_strRegexEntry`.
extern "C" __attribute__((visibility("default"))) const void* ToolkitRegexEntry()
{
    using namespace Toolkit;
    static const RegexCalls calls = {
        &CompiledPattern::Compile,     &CompiledPattern::Search,     &CompiledPattern::SearchNext,
        &CompiledPattern::Copy,        &CompiledPattern::Release,    &CompiledPattern::FindGroup,
        &CompiledPattern::Describe,    &RegExpBackend::Compile,      &RegExpBackend::Free,
        &RegExpBackend::FindReach,     &RegExpBackend::Execute,      &RegExpBackend::NewWorkspace,
        &RegExpBackend::FreeWorkspace, &RegExpBackend::GetNameCount, &RegExpBackend::GetNameEntrySize,
        &RegExpBackend::GetNameTable};
    return &calls;
}
