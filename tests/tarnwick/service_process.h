#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace tarnwick::testing {

// The program in a process of its own, ended at the latest with this object.
class ServiceProcess
{
public:
    explicit ServiceProcess(const std::vector<std::string>& arguments);
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;
    ServiceProcess(ServiceProcess&&) = delete;
    ServiceProcess& operator=(ServiceProcess&&) = delete;

    // The next line of the standard output without its end; empty when none comes within ten seconds.
    std::string readLine();
    // The port of the first line.
    int readPort();

    void send(int signal) const;

    struct End
    {
        // -1 when the program ended by a signal, -2 when it did not end within ten seconds.
        int exitCode = 0;
        std::string output;
        std::string errors;
    };
    End waitForEnd();

private:
    pid_t m_pid = -1;
    int m_output = -1;
    int m_errors = -1;
    std::string m_unread;
};

} // namespace tarnwick::testing
