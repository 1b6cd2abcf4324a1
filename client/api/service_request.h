#pragma once

#include <QList>
#include <QString>

#include <cstddef>
#include <utility>

/// The requests of the client. A reply carries its kind as an int, so the values are fixed.
enum class TaskKind : int {
    LinkStart = 0,
    LinkPoll = 1,
    Session = 2,
    Instances = 3,
    CreateInstance = 4,
    Count, ///< the number of kinds; must stay last
};

inline constexpr std::size_t taskKindCount = static_cast<std::size_t>(TaskKind::Count);

/// The dynamic property of a reply that holds its kind.
inline constexpr const char* taskKindProperty = "taskKind";

/// The (name, value) pairs of a request body, in the order in which they are sent. Empty means a GET.
using FormFields = QList<std::pair<QString, QString>>;
