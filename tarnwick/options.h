#pragma once

#include <span>
#include <stdexcept>
#include <string>

namespace tarnwick {

struct Options
{
    int port = 0;
    std::string dataFile = ":memory:";
    bool help = false;
};

// Says in one line what is wrong with the command line.
class OptionError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Throws OptionError. `arguments` without the program's name.
Options parseOptions(std::span<const std::string> arguments);

std::string helpText();

} // namespace tarnwick
