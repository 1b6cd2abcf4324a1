// Starts a program and tells when the X server first holds a whole picture of its window.
//
//   first_frame [--focus] SCREEN_FILE PROGRAM [ARGUMENT...]
//
// Prints "pid N", then "painted WINDOW NANOSECONDS PROCESSOR_NANOSECONDS", both counted from the start. With --focus
// the window then gets the keyboard. Ends the program when its own standard input ends, and itself when the program
// does.

#include "frame_buffer.h"
#include "x_display.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

// No program paints this.
constexpr std::uint32_t rootColour = 0x0001fe03;
// Splash screens, tips and windows that are never seen are smaller.
constexpr int leastWidth = 400;
constexpr int leastHeight = 300;
// A shadow or a rounded corner may stay free.
constexpr double wholePicture = 0.95;
constexpr auto glance = std::chrono::microseconds(100);
constexpr auto limit = std::chrono::seconds(60);
constexpr int pauseMs = 50;

pid_t startProgram(std::span<char*> words)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::close(STDIN_FILENO);
        ::close(STDOUT_FILENO);
        ::execvp(words.front(), words.data()); // the array ends with a null, as main's own does
        std::perror(words.front());
        ::_exit(127);
    }
    return child;
}

std::int64_t processorTimeOf(pid_t process)
{
    clockid_t clock = 0;
    timespec used = {};
    if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &used) != 0) {
        return 0;
    }
    return (std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec)).count();
}

bool hasEnded(pid_t process)
{
    siginfo_t about = {};
    return ::waitid(P_PID, static_cast<id_t>(process), &about, WEXITED | WNOHANG | WNOWAIT) == 0 && about.si_pid != 0;
}

struct SeenWindow
{
    xcb_window_t window = 0;
    ScreenArea area;
};

/// The main window as soon as it is there. Later ones do not count.
std::optional<SeenWindow> mappedWindow(XDisplay& display)
{
    while (const XDisplay::Event event = display.nextEvent()) {
        constexpr unsigned kindBits = 0x7f;
        if ((event->response_type & kindBits) != XCB_MAP_NOTIFY) {
            continue;
        }
        xcb_map_notify_event_t mapped = {};
        std::memcpy(&mapped, event.get(), sizeof(mapped));
        const std::optional<ScreenArea> area = display.areaOf(mapped.window);
        if (area && area->width >= leastWidth && area->height >= leastHeight) {
            return SeenWindow{mapped.window, *area};
        }
    }
    return std::nullopt;
}

/// Waits for the first whole picture and reports it. False when there is none within the limit.
bool reportFirstFrame(XDisplay& display, const FrameBuffer& screen, pid_t program, Clock::time_point start, bool focus)
{
    std::optional<SeenWindow> seen;
    while (Clock::now() - start < limit && !hasEnded(program)) {
        if (!seen) {
            seen = mappedWindow(display);
        }
        if (seen && screen.shareWithout(rootColour, seen->area) >= wholePicture) {
            const std::chrono::nanoseconds taken = Clock::now() - start;
            std::cout << "painted " << seen->window << ' ' << taken.count() << ' ' << processorTimeOf(program)
                      << std::endl;
            if (focus) {
                display.focus(seen->window);
            }
            return true;
        }
        std::this_thread::sleep_for(glance);
    }
    return false;
}

/// Returns when nobody needs the program any more, or when it has ended.
void waitForEnd(pid_t program)
{
    pollfd input = {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    while (!hasEnded(program)) {
        std::array<char, 16> ignored = {};
        if (::poll(&input, 1, pauseMs) > 0 && ::read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0) {
            return;
        }
    }
}

int watch(std::span<char*> words)
{
    const bool focus = words.size() > 1 && std::string(words[1]) == "--focus";
    words = words.subspan(focus ? 2 : 1);
    if (words.size() < 2) {
        std::cerr << "first_frame [--focus] SCREEN_FILE PROGRAM [ARGUMENT...]\n";
        return 2;
    }
    XDisplay display;
    const FrameBuffer screen(words.front());
    display.paintRoot(rootColour);
    display.listenAtRoot();
    ::prctl(PR_SET_TIMERSLACK, 1UL);

    const Clock::time_point start = Clock::now();
    const pid_t program = startProgram(words.subspan(1));
    std::cout << "pid " << program << std::endl;
    const bool painted = reportFirstFrame(display, screen, program, start, focus);
    if (painted) {
        waitForEnd(program);
    }
    ::kill(-program, SIGKILL);
    ::waitpid(program, nullptr, 0);
    return painted ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return watch({argv, static_cast<std::size_t>(argc)});
    } catch (const std::exception& fault) {
        std::cerr << fault.what() << '\n';
        return 2;
    }
}
