#pragma once

#include <cstddef>

/// The five requests of the client. A reply carries its kind as an int, so the values are fixed.
enum class TaskKind : int {
    LinkStart = 0,
    LinkPoll = 1,
    Session = 2,
    Instances = 3,
    CreateInstance = 4,
};

inline constexpr std::size_t taskKindCount = 5;
