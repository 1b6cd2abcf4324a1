#pragma once

#include "support/call.h"

#include <QMap>
#include <QString>
#include <QStringList>

class QWidget;

/*
 * The one oracle of the tests: what an answer has to change about the window. The fault tests write each expected text
 * out; the fuzz target for replies fills them in from the reply that it has made up.
 */
namespace faults {

/// All that an answer may change about a window, each part with its name: "status", "URL", "code", "polls", "account",
/// "cores", "projects", "token", "under way", "enabled" and the fields of the creation form.
using WindowSight = QMap<QString, QString>;

/// What the window shows now. The token cannot be seen in it: the test adds that.
WindowSight sightOf(const QWidget& window);

/// One line for each part: of two lists that differ, QCOMPARE shows the first line that does.
QStringList wordsOf(const WindowSight& sight);

/// How a call has ended.
struct Outcome
{
    int status = 200;
    /// The sentence of a failure; empty when the call has succeeded.
    QString failure;
    /// What a success shows of its body. The other parts are those of an empty body.
    WindowSight shows;

    static Outcome success(int status = 200, const WindowSight& shows = {}) { return {status, {}, shows}; }
    /// The status is 0 when there was none.
    static Outcome failed(int status, const QString& text) { return {status, text, {}}; }
};

/// What a window that waited for nothing but this answer has to show right after it, when what follows the answer by
/// itself is under way.
WindowSight sightAfter(const WindowSight& before, support::Call call, const Outcome& outcome);

/// A project and a core, as a sight has them.
QString shownProject(const QStringList& cells);
QString shownCore(const QString& label, const QString& key);

} // namespace faults
