#pragma once

#include <QByteArray>
#include <QList>

#include <array>

namespace support {

/// The client's five requests, named after what causes them.
enum class Call { LinkStart, LinkPoll, Session, Instances, CreateInstance };

inline QList<Call> allCalls()
{
    return {Call::LinkStart, Call::LinkPoll, Call::Session, Call::Instances, Call::CreateInstance};
}

/// A readable name, for data rows.
inline const char* callName(Call call)
{
    static constexpr std::array names{"link start", "link poll", "session", "instances", "create"};
    return names.at(static_cast<std::size_t>(call));
}

/// The path that the call requests.
inline QByteArray callPath(Call call)
{
    static constexpr std::array paths{"link/start", "link/poll", "me", "instances", "instances/create"};
    return QByteArray("/api/pc/") + paths.at(static_cast<std::size_t>(call));
}

} // namespace support
