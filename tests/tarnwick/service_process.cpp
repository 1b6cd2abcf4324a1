#include "service_process.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace tarnwick::testing {

namespace {

constexpr int patienceMs = 10000;

// False at the end of the stream, or when nothing comes in time.
bool readMore(int file, std::string& text)
{
    pollfd waiting{file, POLLIN, 0};
    if (poll(&waiting, 1, patienceMs) <= 0) {
        return false;
    }
    std::array<char, 4096> buffer{};
    const ssize_t size = read(file, buffer.data(), buffer.size());
    if (size <= 0) {
        return false;
    }
    text.append(buffer.data(), static_cast<std::size_t>(size));
    return true;
}

std::array<int, 2> makePipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    return ends;
}

} // namespace

ServiceProcess::ServiceProcess(const std::vector<std::string>& arguments)
{
    std::vector<std::string> texts{TARNWICK_SERVICE_PROGRAM};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);

    const auto output = makePipe();
    const auto errors = makePipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    const int failure = posix_spawn(&m_pid, pointers.front(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    close(errors[1]);
    m_output = output[0];
    m_errors = errors[0];
    if (failure != 0) {
        throw std::runtime_error("the program does not start");
    }
}

ServiceProcess::~ServiceProcess()
{
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    close(m_output);
    close(m_errors);
}

std::string ServiceProcess::readLine()
{
    std::size_t end = m_unread.find('\n');
    while (end == std::string::npos && readMore(m_output, m_unread)) {
        end = m_unread.find('\n');
    }
    if (end == std::string::npos) {
        return {};
    }
    std::string line = m_unread.substr(0, end);
    m_unread.erase(0, end + 1);
    return line;
}

int ServiceProcess::readPort()
{
    const std::string line = readLine();
    const std::size_t colon = line.rfind(':');
    return colon == std::string::npos ? 0 : std::stoi(line.substr(colon + 1));
}

void ServiceProcess::send(int signal) const
{
    kill(m_pid, signal);
}

ServiceProcess::End ServiceProcess::waitForEnd()
{
    End end;
    end.output = std::move(m_unread);
    while (readMore(m_output, end.output)) {
    }
    while (readMore(m_errors, end.errors)) {
    }
    // Both streams have ended, or the program has been silent for too long.
    int status = 0;
    for (int tries = 0; tries < patienceMs / 10; ++tries) {
        if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
            m_pid = -1;
            end.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            return end;
        }
        poll(nullptr, 0, 10);
    }
    end.exitCode = -2;
    return end;
}

} // namespace tarnwick::testing
