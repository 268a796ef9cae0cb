// SPDX-License-Identifier: MIT
// Runs once for a user; a later start hands its words to the first one, and prints the answer: instance
// [<word>...]

#include <chrono>
#include <iostream>
#include <string>
#include <vector>

#include <toolkit/app/Instance.h>
#include <toolkit/threading/Event.h>

using namespace Toolkit;

int main(int argc, char** argv)
{
    Result<Instance> instance = Instance::Claim("org.example.instance");
    if (!instance)
    {
        std::cerr << instance.error().Message() << '\n';
        return 1;
    }
    if (!instance->IsFirst())
    {
        const auto answer =
            instance->Ask(std::vector<std::string>(argv + 1, argv + argc), std::chrono::seconds(10));
        std::cout << (answer ? answer->Text() : answer.error().Message()) << '\n';
        return answer ? answer->Code() : 1;
    }
    Event end;
    const auto execute = [&end](const Instance::Command& command)
    {
        if (!command.Arguments().empty() && command.Arguments()[0] == "quit")
            end.Set();
        return Instance::Answer(0, std::to_string(command.Arguments().size()) + " words");
    };
    // The commands are executed on a thread of the library's own, one after the other.
    instance->Serve(execute);
    std::cout << "waiting for commands, \"quit\" is the last one" << std::endl;
    end.Wait();
    // Before what its commands use is destroyed.
    instance = Failure(Errc::Refused, "over");
}
