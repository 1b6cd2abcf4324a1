#pragma once

#include "faults/window_sight.h"

#include <QJsonArray>
#include <QJsonObject>

namespace fuzz {

using faults::WindowSight;
using support::Call;
using Qt::StringLiterals::operator""_s;

/// A finished reply that was never sent.
struct Answer
{
    int kind = 0;
    int status = 0;
    bool transferFailed = false;
    QJsonObject body;

    bool isOfAKnownKind() const { return kind >= 0 && kind < support::allCalls().size(); }
    bool isFailure() const { return status != 202 && (status >= 400 || transferFailed); }
    QString failureText() const
    {
        const QString message = body.value(u"message"_s).toString();
        const QString words = message.isEmpty() ? body.value(u"error"_s).toString() : message;
        return !words.isEmpty() ? words : status >= 400 ? u"Tarnwick returned HTTP %1."_s.arg(status) : u"cut"_s;
    }
};

inline WindowSight shownOfSession(const QJsonObject& body)
{
    const QJsonObject user = body.value(u"user"_s).toObject();
    WindowSight shows{{u"account"_s, u"Signed in as %1 / Plan: %2 / Limit: %3"_s.arg(
                                         user.value(u"display_name"_s).toString(u"Tarnwick user"_s),
                                         user.value(u"plan_name"_s).toString(u"Free"_s),
                                         user.value(u"gdps_limit_label"_s).toString(u"-"_s))}};
    QStringList cores;
    QStringList labels;
    const QJsonArray offered = body.value(u"available_cores"_s).toArray();
    for (const auto& core : offered) {
        const QString key = core.toObject().value(u"key"_s).toString();
        if (!key.isEmpty()) {
            labels.append(core.toObject().value(u"label"_s).toString(key));
            cores.append(faults::shownCore(labels.constLast(), key));
        }
    }
    if (!cores.isEmpty()) {
        shows.insert(u"cores"_s, cores.join(u", "_s));
        shows.insert(u"Core"_s, labels.constFirst());
    }
    return shows;
}

inline WindowSight shownOfInstances(const QJsonArray& instances)
{
    QString projects;
    for (const auto& instance : instances) {
        QStringList cells;
        for (const QString& key : {u"display_name"_s, u"slug"_s, u"core_label"_s, u"status"_s}) {
            cells.append(instance.toObject().value(key).toString());
        }
        projects += faults::shownProject(cells);
    }
    return {{u"projects"_s, projects}, {u"status"_s, u"Loaded %1 Tarnwick project(s)."_s.arg(instances.size())}};
}

inline WindowSight shownOfSuccess(const Answer& answer)
{
    const QJsonObject& body = answer.body;
    const QString code = body.value(u"code"_s).toString();
    const auto message = body.value(u"message"_s);
    const WindowSight shownMessage =
        message.isString() ? WindowSight{{u"status"_s, message.toString()}} : WindowSight();
    switch (static_cast<Call>(answer.kind)) {
    case Call::LinkStart:
        return code.isEmpty() ? WindowSight()
                              : WindowSight{{u"code"_s, code},
                                            {u"polls"_s, u"yes"_s},
                                            {u"status"_s, u"Code "_s + code +
                                                              u" is ready. Approve it at " TARNWICK_PUBLIC_HOST
                                                              "/link/pc before it expires."_s}};
    case Call::LinkPoll: {
        WindowSight shows = shownMessage;
        if (answer.status != 202) {
            shows.insert(u"token"_s, body.value(u"access_token"_s).toString().trimmed());
        }
        return shows;
    }
    case Call::Session:
        return shownOfSession(body);
    case Call::Instances:
        return shownOfInstances(body.value(u"instances"_s).toArray());
    case Call::CreateInstance:
        return shownMessage;
    }
    return {};
}

inline faults::Outcome outcomeOf(const Answer& answer)
{
    return answer.isFailure() ? faults::Outcome::failed(answer.status, answer.failureText())
                              : faults::Outcome::success(answer.status, shownOfSuccess(answer));
}

} // namespace fuzz
