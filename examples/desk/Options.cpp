// SPDX-License-Identifier: MIT
#include "Options.h"

#include <algorithm>

namespace Desk
{

namespace
{

bool Has(const std::vector<std::string>& arguments, const char* option)
{
    return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
}

// What follows an option; empty when it is not there.
std::string ValueOf(const std::vector<std::string>& arguments, const char* option)
{
    const auto found = std::find(arguments.begin(), arguments.end(), option);
    return found == arguments.end() || found + 1 == arguments.end() ? std::string() : *(found + 1);
}

} // namespace

Options::Options(int argc, char** argv)
    : arguments(argv + std::min(argc, 1), argv + argc),
      data(ValueOf(arguments, "-data")),
      open(ValueOf(arguments, "-open")),
      send(ValueOf(arguments, "-send")),
      text(ValueOf(arguments, "-text")),
      paused(Has(arguments, "-paused")),
      tour(Has(arguments, "-tour")),
      child(Has(arguments, "-child")),
      classicRestart(Has(arguments, "-classic-restart"))
{
}

} // namespace Desk
