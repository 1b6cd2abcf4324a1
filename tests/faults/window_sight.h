#pragma once

#include "support/call.h"

#include <QMap>
#include <QString>
#include <QStringList>

class QWidget;

/*
 * The only oracle of the tests: what a reply must change in the window. The fault tests write each expected text out;
 * the fuzz target for replies computes it from the generated reply.
 */
namespace faults {

/// Everything in a window that a reply may change, each part with its name: "status", "URL", "code", "polls",
/// "account", "cores", "projects", "token", "under way", "enabled" and the fields of the creation form.
using WindowSight = QMap<QString, QString>;

/// What the window shows now. It does not show the token, so the test adds that.
WindowSight sightOf(const QWidget& window);

/// One line for each part, so that QCOMPARE shows the first line that differs.
QStringList wordsOf(const WindowSight& sight);

/// How a call ended.
struct Outcome
{
    int status = 200;
    /// The text of a failure; empty for a success.
    QString failure;
    /// What a successful reply shows of its body. The other parts are as for an empty body.
    WindowSight shows;

    static Outcome success(int status = 200, const WindowSight& shows = {}) { return {status, {}, shows}; }
    /// The status is 0 if there was none.
    static Outcome failed(int status, const QString& text) { return {status, text, {}}; }
};

/// What a window without other requests in flight must show right after this reply, while the requests that follow from
/// it are in flight.
WindowSight sightAfter(const WindowSight& before, support::Call call, const Outcome& outcome);

/// A project or core, in the notation of a sight.
QString shownProject(const QStringList& cells);
QString shownCore(const QString& label, const QString& key);

} // namespace faults
