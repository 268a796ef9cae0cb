// SPDX-License-Identifier: MIT
// A host that tells whether it is the first of its kind. It answers each line of its standard input by a
// line:
//   start    brings the library up: "first" or "second"
//   ask      the same answer again
//   fresh    the answer of an object made now
//   fork     a child takes the library down and ends; "done" when it has ended
//   stop     takes the library down: "stopped"

#include <cerrno>
#include <iostream>
#include <memory>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/EndChild.h"
#include "toolkit/Toolkit.h"

using Toolkit::SingleApplicationInstance;
using Toolkit::ToolkitSession;

namespace
{

const char* AnswerOf(const SingleApplicationInstance& instance)
{
    return instance.IsAlreadyRunning() ? "second" : "first";
}

const char* LetAChildEnd(std::unique_ptr<ToolkitSession>& session)
{
    const pid_t child = fork();
    if (child == 0)
    {
        session.reset();
        ToolkitTest::EndChild(0);
    }
    int status = 0;
    while (waitpid(child, &status, 0) == -1 && errno == EINTR)
        continue;
    return status == 0 ? "done" : "failed";
}

const char* Answer(const std::string& line, std::unique_ptr<ToolkitSession>& session)
{
    if (line == "start")
        session = std::make_unique<ToolkitSession>();
    if (line == "stop")
    {
        session.reset();
        return "stopped";
    }
    if (line == "fork")
        return LetAChildEnd(session);
    if (line == "fresh")
        return AnswerOf(SingleApplicationInstance());
    return AnswerOf(**SingleApplicationInstance::s_pInstance);
}

} // namespace

int main()
{
    std::unique_ptr<ToolkitSession> session;
    for (std::string line; std::getline(std::cin, line);)
        std::cout << Answer(line, session) << std::endl;
    return 0;
}
