#pragma once

#include "api/service_host.h"
#include "api/task_kind.h"
#include "support/creation_form.h"
#include "support/window_view.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QTimer>

#include <array>
#include <utility>

namespace fuzz {

using Qt::StringLiterals::operator""_s;

/// All that a reply may change about a window.
struct WindowSight
{
    QString status;
    QString code;
    bool isPolling = false;
    QString token;
    QStringList account;
    QList<std::pair<QString, QString>> cores; ///< label and key
    QList<QStringList> rows;
    support::CreationForm form;
    QStringList buttons; ///< those that can be pressed, sorted
    std::array<bool, taskKindCount> busy{};

    bool& isBusy(TaskKind kind) { return busy.at(static_cast<std::size_t>(kind)); }
    bool isFree(TaskKind kind) const { return !busy.at(static_cast<std::size_t>(kind)); }
};

/// The buttons that can be pressed in a window with this token, these rows and this under way.
inline QStringList usableButtons(const WindowSight& sight)
{
    QStringList texts;
    const auto add = [&texts](const QString& text, bool isUsable) {
        if (isUsable) {
            texts.append(text);
        }
    };
    const bool isLinked = !sight.token.isEmpty();
    add(u"Create GDPS"_s, isLinked && sight.isFree(TaskKind::CreateInstance));
    add(u"Generate Link Code"_s, sight.isFree(TaskKind::LinkStart));
    add(u"Open Public Pairing Page"_s, true);
    add(u"Open Selected Project"_s, isLinked && !sight.rows.isEmpty()); // a filled table has a current row
    add(u"Refresh"_s, isLinked && sight.isFree(TaskKind::Instances));
    add(u"Unlink"_s, isLinked && sight.isFree(TaskKind::Session));
    return texts;
}

/// What can be seen in the window: everything but the token and what is under way.
inline WindowSight visibleSight(const QWidget& window)
{
    const support::WindowView view(window);
    WindowSight sight{.status = view.status(),
                      .code = view.line(u"Link code")->text(),
                      .isPolling = window.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly)->isActive(),
                      .token = {},
                      .account = view.account(),
                      .cores = {},
                      .rows = {},
                      .form = support::creationFormIn(view),
                      .buttons = {}};
    const QComboBox* cores = view.combo(u"Core");
    for (int index = 0; index < cores->count(); ++index) {
        sight.cores.append({cores->itemText(index), cores->itemData(index).toString()});
    }
    for (int row = 0; row < view.table()->rowCount(); ++row) {
        sight.rows.append(view.row(row));
    }
    const auto buttons = window.findChildren<QPushButton*>();
    for (const QPushButton* button : buttons) {
        if (button->isEnabled()) {
            sight.buttons.append(button->text());
        }
    }
    sight.buttons.sort();
    return sight;
}

/// A finished reply.
struct Answer
{
    int kind = 0;
    int status = 0;
    bool transferFailed = false;
    QJsonObject body;

    /// The text that a failure has to show; empty for a success.
    QString errorText() const
    {
        if (status == 202 || (status < 400 && !transferFailed)) {
            return {};
        }
        const QString message = body.value(u"message"_s).toString();
        QString words = message.isEmpty() ? body.value(u"error"_s).toString() : message;
        if (!words.isEmpty()) {
            return words;
        }
        return status >= 400 ? u"Tarnwick returned HTTP %1."_s.arg(status) : u"transfer error"_s;
    }
    QString messageOr(const QString& otherwise) const { return textOr(body, u"message"_s, otherwise); }

    static QString textOr(const QJsonObject& object, const QString& key, const QString& otherwise)
    {
        return object.value(key).isString() ? object.value(key).toString() : otherwise;
    }
};

inline void offerCores(WindowSight& sight, const QJsonArray& cores)
{
    sight.cores.clear();
    for (const auto& core : cores) {
        const QString key = core.toObject().value(u"key"_s).toString();
        if (!key.isEmpty()) {
            sight.cores.append({Answer::textOr(core.toObject(), u"label"_s, key), key});
        }
    }
    if (sight.cores.isEmpty()) {
        sight.cores.append({u"No cores available"_s, QString()});
    }
    sight.form.core = sight.cores.constFirst().first;
}

inline void takeFailure(WindowSight& sight, const Answer& answer)
{
    sight.status = answer.errorText();
    if (answer.kind == static_cast<int>(TaskKind::LinkPoll)) {
        sight.isPolling = false;
        if (answer.status == 404 || answer.status == 410) {
            sight.code.clear();
        }
    } else if (answer.kind == static_cast<int>(TaskKind::Session)) {
        sight.token.clear();
        sight.account = QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s};
        sight.rows.clear();
        offerCores(sight, {});
    }
}

inline void takeLinkStart(WindowSight& sight, const Answer& answer)
{
    sight.code = answer.body.value(u"code"_s).toString();
    sight.isPolling = sight.isPolling || !sight.code.isEmpty();
    sight.status =
        u"Code "_s + sight.code + u" is ready. Approve it at "_s + publicHost() + u"/link/pc before it expires."_s;
}

inline void takeLinkPoll(WindowSight& sight, const Answer& answer)
{
    if (answer.status == 202) {
        sight.isPolling = true;
        sight.status = answer.messageOr(u"Waiting for approval at "_s + publicHost() + u"/link/pc."_s);
        return;
    }
    sight.isPolling = false;
    sight.token = answer.body.value(u"access_token"_s).toString().trimmed();
    sight.status = answer.messageOr(u"Tarnwick desktop client linked."_s);
    sight.isBusy(TaskKind::Session) = !sight.token.isEmpty();
}

inline void takeSession(WindowSight& sight, const Answer& answer)
{
    const QJsonObject user = answer.body.value(u"user"_s).toObject();
    sight.account = QStringList{u"Signed in as "_s + Answer::textOr(user, u"display_name"_s, u"Tarnwick user"_s),
                                u"Plan: "_s + Answer::textOr(user, u"plan_name"_s, u"Free"_s),
                                u"Limit: "_s + Answer::textOr(user, u"gdps_limit_label"_s, u"-"_s)};
    offerCores(sight, answer.body.value(u"available_cores"_s).toArray());
    sight.status = u"Tarnwick desktop session ready."_s;
    sight.isBusy(TaskKind::Instances) = true;
}

inline void takeInstances(WindowSight& sight, const Answer& answer)
{
    sight.rows.clear();
    const QJsonArray instances = answer.body.value(u"instances"_s).toArray();
    for (const auto& instance : instances) {
        QStringList row;
        for (const QString& key : {u"display_name"_s, u"slug"_s, u"core_label"_s, u"status"_s}) {
            row.append(instance.toObject().value(key).toString());
        }
        sight.rows.append(row);
    }
    sight.status = u"Loaded %1 Tarnwick project(s)."_s.arg(instances.size());
}

inline void takeCreation(WindowSight& sight, const Answer& answer)
{
    sight.form.name.clear();
    sight.form.description.clear();
    sight.form.tags.clear();
    sight.form.isListed = true;
    sight.form.isInMaintenance = false;
    sight.status = answer.messageOr(u"Tarnwick created your GDPS from the desktop client."_s);
    sight.isBusy(TaskKind::Instances) = true;
}

/// What has to come of an answer to a linked window in which only the answered kind is under way.
inline WindowSight sightAfter(const WindowSight& before, const Answer& answer)
{
    WindowSight sight = before;
    if (answer.kind < 0 || answer.kind >= static_cast<int>(taskKindCount)) {
        return sight;
    }
    const auto kind = static_cast<TaskKind>(answer.kind);
    sight.isBusy(kind) = false;
    if (!answer.errorText().isEmpty()) {
        takeFailure(sight, answer);
        return sight;
    }
    switch (kind) {
    case TaskKind::LinkStart:
        takeLinkStart(sight, answer);
        break;
    case TaskKind::LinkPoll:
        takeLinkPoll(sight, answer);
        break;
    case TaskKind::Session:
        takeSession(sight, answer);
        break;
    case TaskKind::Instances:
        takeInstances(sight, answer);
        break;
    case TaskKind::CreateInstance:
        takeCreation(sight, answer);
        break;
    }
    return sight;
}

} // namespace fuzz
