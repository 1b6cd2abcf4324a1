// Asks a window once a millisecond whether it is still there, as a window manager asks before it calls a program "not
// responding", and prints the longest time in nanoseconds that an answer took. Ends with its standard input.
//
//   answer_watch WINDOW

#include "x_display.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <exception>
#include <iostream>
#include <optional>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto interval = std::chrono::milliseconds(1);
constexpr auto patience = std::chrono::seconds(60);

/// The questions that were asked and the longest answer so far.
class Questions
{
public:
    Questions(XDisplay& connected, xcb_window_t asked)
        : display(connected),
          window(asked),
          protocols(connected.atom("WM_PROTOCOLS")),
          ping(connected.atom("_NET_WM_PING"))
    {
    }

    void ask()
    {
        xcb_client_message_event_t question = {};
        question.response_type = XCB_CLIENT_MESSAGE;
        question.format = 32;
        question.window = window;
        question.type = protocols;
        question.data.data32[0] = ping;
        question.data.data32[1] = ++lastNumber;
        question.data.data32[2] = window;
        std::array<char, 32> bytes = {};
        std::memcpy(bytes.data(), &question, sizeof(question));
        xcb_send_event(display.connection(), 0, window, XCB_EVENT_MASK_NO_EVENT, bytes.data());
        xcb_flush(display.connection());
        open.push_back(Clock::now());
    }

    void takeAnswers()
    {
        while (const XDisplay::Event event = display.nextEvent()) {
            constexpr unsigned kindBits = 0x7f;
            if ((event->response_type & kindBits) != XCB_CLIENT_MESSAGE) {
                continue;
            }
            xcb_client_message_event_t answer = {};
            std::memcpy(&answer, event.get(), sizeof(answer));
            if (answer.type == protocols && answer.data.data32[0] == ping && !open.empty()) {
                longest = std::max(longest, Clock::now() - open.front()); // answers come in order
                open.pop_front();
            }
        }
    }

    bool isWaiting() const { return !open.empty(); }
    std::int64_t longestNanoseconds() const
    {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(longest).count();
    }

private:
    XDisplay& display;
    xcb_window_t window;
    xcb_atom_t protocols;
    xcb_atom_t ping;
    std::uint32_t lastNumber = 0;
    std::deque<Clock::time_point> open;
    Clock::duration longest = Clock::duration::zero();
};

/// Sleeps until something arrives or the time is over. True when the input has just ended; -1 stands for none.
bool pause(const XDisplay& display, int input, Clock::duration time)
{
    std::array<pollfd, 2> sources = {pollfd{.fd = input, .events = POLLIN, .revents = 0},
                                     pollfd{.fd = display.handle(), .events = POLLIN, .revents = 0}};
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(std::max(time, Clock::duration::zero()));
    const timespec limit = {.tv_sec = left.count() / 1'000'000'000, .tv_nsec = left.count() % 1'000'000'000};
    ::ppoll(sources.data(), sources.size(), &limit, nullptr);
    std::array<char, 16> ignored = {};
    return sources[0].revents != 0 && ::read(input, ignored.data(), ignored.size()) <= 0;
}

int watch(xcb_window_t window)
{
    XDisplay display;
    display.listenAtRoot();
    Questions questions(display, window);

    std::optional<Clock::time_point> closing;
    for (Clock::time_point next = Clock::now(); !closing || questions.isWaiting();) {
        if (closing && Clock::now() - *closing > patience) {
            std::cerr << "The window does not answer at all.\n";
            return 1;
        }
        if (!closing && Clock::now() >= next) {
            questions.ask();
            next += interval;
        }
        if (pause(display, closing ? -1 : STDIN_FILENO, closing ? interval : next - Clock::now())) {
            closing = Clock::now();
        }
        questions.takeAnswers();
    }
    std::cout << questions.longestNanoseconds() << std::endl;
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "answer_watch WINDOW\n";
        return 2;
    }
    try {
        return watch(static_cast<xcb_window_t>(std::strtoul(argv[1], nullptr, 10)));
    } catch (const std::exception& fault) {
        std::cerr << fault.what() << '\n';
        return 2;
    }
}
