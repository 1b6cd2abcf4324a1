#include "http_server.h"
#include "options.h"
#include "service.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

// Blocked here and therefore in every thread that starts later, so that waitForEnd() alone receives them.
sigset_t blockEndSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void waitForEnd(const sigset_t& signals)
{
    int received = 0;
    sigwait(&signals, &received);
}

void printLine(const std::string& line)
{
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    std::cout << line << std::endl;
}

int complain(const std::string& message, int exitCode)
{
    std::cerr << "tarnwick-service: " << message << '\n';
    return exitCode;
}

int run(const tarnwick::Options& options)
{
    const sigset_t signals = blockEndSignals();
    umask(S_IRWXG | S_IRWXO); // the data file is its owner's alone

    tarnwick::Service service(options.dataFile);
    tarnwick::HttpServer server(service, printLine);
    if (!server.bind(options.port)) {
        return complain("cannot listen on port " + std::to_string(options.port) + "; is it in use?", exitFailure);
    }
    // Before the first request is served, so that the address is the first line in any case.
    printLine("Tarnwick service on " + server.address());
    if (!server.serve()) {
        return complain("cannot serve on " + server.address(), exitFailure);
    }

    waitForEnd(signals);
    constexpr std::chrono::milliseconds grace{1000};
    if (!server.stop(grace)) {
        // A client that neither sends nor goes away must not hold up the end.
        service.close();
        std::_Exit(EXIT_SUCCESS);
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char* argv[])
{
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        const tarnwick::Options options = tarnwick::parseOptions(arguments);
        if (options.help) {
            std::cout << tarnwick::helpText();
            return EXIT_SUCCESS;
        }
        return run(options);
    } catch (const tarnwick::OptionError& error) {
        return complain(std::string(error.what()) + " (see --help)", exitUsage);
    } catch (const tarnwick::DatabaseError& error) {
        return complain(std::string("cannot use the data file: ") + error.what(), exitFailure);
    } catch (const std::exception& error) {
        return complain(error.what(), exitFailure);
    }
}
