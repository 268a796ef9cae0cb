// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REGEXP_BACKENDCALLS_H
#define TOOLKIT_TESTS_REGEXP_BACKENDCALLS_H

#include <cstdint>
#include <vector>

// What the library asks of its regular-expression library. The file with the tests of the backend, which
// alone knows that library, stands between the two: it defines what is declared here, and records the calls.
namespace ToolkitTest
{

struct BackendExecution
{
    std::size_t start;
    std::size_t length;
    std::uint32_t options;
    // The groups for which there is room.
    std::size_t room;
};

// The calls of a scope.
class BackendCalls
{
public:
    BackendCalls() { s_pRecording = this; }
    ~BackendCalls() { s_pRecording = nullptr; }
    BackendCalls(const BackendCalls&) = delete;
    BackendCalls& operator=(const BackendCalls&) = delete;

    // The options of each compilation.
    std::vector<std::uint32_t> m_compilations;
    std::vector<BackendExecution> m_executions;

    // Null when nobody records.
    static inline BackendCalls* s_pRecording = nullptr;
};

// The queries for names, and one of them that fails in a scope.
struct BackendQueries
{
    int m_iCount;
    int m_iEntrySize;
    int m_iTable;
};
extern const BackendQueries s_queries;

class FailingQuery
{
public:
    explicit FailingQuery(int query) { s_iFailing = query; }
    ~FailingQuery() { s_iFailing = -1; }
    FailingQuery(const FailingQuery&) = delete;
    FailingQuery& operator=(const FailingQuery&) = delete;

    static inline int s_iFailing = -1;
};

// The patterns that were compiled in a scope and not freed.
class HeldPatterns
{
public:
    HeldPatterns();
    ~HeldPatterns();
    HeldPatterns(const HeldPatterns&) = delete;
    HeldPatterns& operator=(const HeldPatterns&) = delete;

    int Get() const;
};

// The options: that of UTF-8, those of a global replacement, and the one that leaves out the check of UTF-8.
extern const std::uint32_t s_uUtf;
extern const std::uint32_t s_uGlobal;
extern const std::uint32_t s_uUnchecked;

} // namespace ToolkitTest

#endif
