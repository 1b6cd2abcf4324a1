#include "options.h"

#include <charconv>

namespace tarnwick {

namespace {

constexpr int largestPort = 65535;

int portFrom(const std::string& text)
{
    int port = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port < 0 || port > largestPort) {
        throw OptionError("--port takes a number from 0 to 65535");
    }
    return port;
}

std::string dataFileFrom(const std::string& text)
{
    if (text.empty()) {
        throw OptionError("--data takes the name of a file");
    }
    return text;
}

void apply(const std::string& name, const std::string& value, Options& options)
{
    if (name == "--port") {
        options.port = portFrom(value);
    } else {
        options.dataFile = dataFileFrom(value);
    }
}

} // namespace

Options parseOptions(std::span<const std::string> arguments)
{
    Options options;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (name != "--port" && name != "--data") {
            throw OptionError("unknown option " + argument);
        } else if (equals != std::string::npos) {
            apply(name, argument.substr(equals + 1), options);
        } else if (index + 1 < arguments.size()) {
            apply(name, arguments[++index], options);
        } else {
            throw OptionError(name + " needs a value");
        }
    }
    return options;
}

std::string helpText()
{
    return "Usage: tarnwick-service [--port PORT] [--data FILE]\n"
           "\n"
           "A local stand-in of the Tarnwick hosting service, for demonstrations and tests.\n"
           "It answers on 127.0.0.1 only and prints its address on the first line.\n"
           "\n"
           "  --port PORT   the TCP port; 0, the default, takes any free one\n"
           "  --data FILE   the SQLite file that keeps links and projects over a restart;\n"
           "                without it everything is forgotten at the end\n"
           "  --help        show this text\n"
           "\n"
           "There is one account and no password: whoever can open its pages on this machine\n"
           "acts as the account's owner. Never make it reachable from elsewhere.\n"
           "\n"
           "Each request is logged as one line: method, path, status, duration.\n"
           "End it with Ctrl+C or SIGTERM.\n";
}

} // namespace tarnwick
