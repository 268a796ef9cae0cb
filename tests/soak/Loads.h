// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SOAK_LOADS_H
#define TOOLKIT_TESTS_SOAK_LOADS_H

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/app/IPCConnectionEvent.h"

namespace ToolkitTest
{

// The kinds of load. Each does so much of its kind, fails the test when a result is wrong, and leaves nothing
// behind. Any thread may call them, and several at once, unless said otherwise.

// Eight threads log that many pieces in all through a logger of their own, which loses none and keeps the
// order within each thread.
void LogPieces(unsigned long pieces);

// Starts processes one after the other; every other one is waited for by the library, the rest here.
void StartProcesses(unsigned long starts);

// Runs background operations on threads of their own, with listeners that come and go meanwhile.
void RunOperations(unsigned long operations);

// Searches and replaces in texts whose results are known beforehand, with patterns that are no patterns and
// searches without an end in between.
void MatchExpressions(unsigned long matches);

// Shows and reads dates in each of some zones and locales, and that many in all on four threads; what the C
// library makes of the same seconds is what is expected. It changes the environment: on no other thread may
// anything run.
void ShowDates(unsigned long dates);

// Writes and reads files of all kinds in a folder of its own.
class FilesLoad
{
public:
    FilesLoad();

    // That many files, of which every fourth is one of an archive.
    void Do(unsigned long files) const;

private:
    void ReadArchive(const TemporaryFolder& work) const;

    TemporaryFolder m_folder;
};

// A listener that knows which commands clients are to send, each once, and stops a pump after the last.
class CommandsLoad : public Toolkit::IPCConnectionEvent
{
public:
    explicit CommandsLoad(Toolkit::EventPump& pump) : m_pump(pump) {}

    // Forgets what was expected before; clients are numbered from 0 in each round.
    void Expect(unsigned int clients, unsigned long each);
    // What the client of that number sends; nothing when all of it was accepted, else what was not. In the
    // process of the listener, in a copy of it, on any thread.
    std::string Send(const std::wstring& service, unsigned int client) const;
    // How many have not arrived yet; each must arrive once, byte for byte.
    unsigned long Missing() const { return m_uMissing; }

    void OnExecuteEvent(const Toolkit::TString<wchar_t>& command) override;

private:
    // Its round, client and number, and a text of any characters and lengths.
    std::wstring CommandOf(unsigned int client, unsigned long number) const;

    Toolkit::EventPump& m_pump;
    unsigned long m_uRound = 0;
    unsigned long m_uEach = 0;
    unsigned long m_uMissing = 0;
    std::vector<std::vector<bool>> m_arrived;
};

} // namespace ToolkitTest

#endif
