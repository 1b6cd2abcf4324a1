#pragma once

#include <chrono>
#include <functional>

namespace tarnwick {

// Wall-clock time, because link codes have to keep their age over a restart.
using Moment = std::chrono::sys_time<std::chrono::milliseconds>;
using Clock = std::function<Moment()>;

inline Clock systemClock()
{
    return [] {
        return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    };
}

} // namespace tarnwick
