#include "window_sight.h"

#include "support/window_view.h"

#include <QNetworkReply>
#include <QTimer>

using support::Call;
using Qt::StringLiterals::operator""_s;

namespace faults {

namespace {

const QStringList formControls{u"GDPS Name"_s, u"Description"_s, u"Emoji"_s,  u"Accent"_s,      u"Tags"_s,
                               u"Core"_s,      u"Preset"_s,      u"listed"_s, u"maintenance"_s, u"Create GDPS"_s};

QString sightYesOrNo(bool yes)
{
    return yes ? u"yes"_s : u"no"_s;
}

QString sightEnabledControls(const support::WindowView& view)
{
    QMap<QString, const QWidget*> controls{{u"pages"_s, view.tabs()},
                                           {u"projects"_s, view.table()},
                                           {u"Tarnwick URL"_s, view.line(u"Tarnwick URL")},
                                           {u"Link code"_s, view.line(u"Link code")}};
    for (const QString& name : {u"Generate Link Code"_s, u"Open Public Pairing Page"_s, u"Refresh"_s, u"Unlink"_s,
                                u"Open Selected Project"_s}) {
        controls.insert(name, view.button(name));
    }
    const auto form = view.creationForm();
    for (qsizetype index = 0; index < form.size(); ++index) {
        controls.insert(formControls.at(index), form.at(index));
    }
    QStringList names;
    for (auto control = controls.cbegin(); control != controls.cend(); ++control) {
        if (control.value()->isEnabled()) {
            names.append(control.key());
        }
    }
    return names.join(u", "_s);
}

/// The controls that are enabled while this is the only request in flight.
QString sightEnabledControls(bool isLinked, bool hasProjects, const QString& underWay)
{
    QStringList names{u"Tarnwick URL"_s, u"Link code"_s,          u"pages"_s,
                      u"projects"_s,     u"Generate Link Code"_s, u"Open Public Pairing Page"_s};
    if (isLinked) {
        names << formControls;
        names << (underWay == u"instances"_s ? QStringList() : QStringList{u"Refresh"_s});
        names << (underWay == u"session"_s ? QStringList() : QStringList{u"Unlink"_s});
        names << (hasProjects ? QStringList{u"Open Selected Project"_s} : QStringList());
    }
    names.sort();
    return names.join(u", "_s);
}

QString sightUnderWay(const QWidget& window)
{
    QStringList names;
    const auto replies = window.findChildren<QNetworkReply*>();
    for (const QNetworkReply* reply : replies) {
        if (!reply->isFinished()) {
            names.append(QString::fromLatin1(callName(static_cast<Call>(reply->property("taskKind").toInt()))));
        }
    }
    return names.join(u", "_s);
}

WindowSight changesOfFailure(Call call, const Outcome& outcome)
{
    WindowSight changes{{u"status"_s, outcome.failure}};
    if (call == Call::LinkPoll) {
        changes.insert(u"polls"_s, u"no"_s);
    }
    if (call == Call::LinkPoll && (outcome.status == 404 || outcome.status == 410)) {
        changes.insert(u"code"_s, QString());
    }
    if (call == Call::Session) {
        changes.insert(WindowSight{{u"token"_s, QString()},
                                   {u"account"_s, u"Not linked yet / Plan: - / Limit: -"_s},
                                   {u"projects"_s, QString()},
                                   {u"cores"_s, u"No cores available"_s},
                                   {u"Core"_s, u"No cores available"_s}});
    }
    return changes;
}

/// For a body in which the client finds nothing.
WindowSight changesOfBareSuccess(Call call, int status)
{
    switch (call) {
    case Call::LinkStart:
        return {{u"code"_s, QString()},
                {u"status"_s, u"Code  is ready. Approve it at " TARNWICK_PUBLIC_HOST "/link/pc before it expires."_s}};
    case Call::LinkPoll:
        if (status == 202) {
            return {{u"polls"_s, u"yes"_s},
                    {u"status"_s, u"Waiting for approval at " TARNWICK_PUBLIC_HOST "/link/pc."_s}};
        }
        return {{u"polls"_s, u"no"_s}, {u"token"_s, QString()}, {u"status"_s, u"Tarnwick desktop client linked."_s}};
    case Call::Session:
        return {{u"account"_s, u"Signed in as Tarnwick user / Plan: Free / Limit: -"_s},
                {u"cores"_s, u"No cores available"_s},
                {u"Core"_s, u"No cores available"_s},
                {u"status"_s, u"Tarnwick desktop session ready."_s}};
    case Call::Instances:
        return {{u"projects"_s, QString()}, {u"status"_s, u"Loaded 0 Tarnwick project(s)."_s}};
    case Call::CreateInstance:
        return {{u"GDPS Name"_s, QString()}, {u"Description"_s, QString()},
                {u"Tags"_s, QString()},      {u"listed"_s, u"yes"_s},
                {u"maintenance"_s, u"no"_s}, {u"status"_s, u"Tarnwick created your GDPS from the desktop client."_s}};
    }
    return {};
}

} // namespace

WindowSight sightOf(const QWidget& window)
{
    const support::WindowView view(window);
    QStringList cores;
    const QComboBox* combo = view.combo(u"Core");
    for (int index = 0; index < combo->count(); ++index) {
        cores.append(shownCore(combo->itemText(index), combo->itemData(index).toString()));
    }
    QString projects;
    for (int row = 0; row < view.table()->rowCount(); ++row) {
        projects += shownProject(view.row(row));
    }
    const auto* timer = window.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    return {
        {u"status"_s, view.status()},
        {u"URL"_s, view.line(u"Tarnwick URL")->text()},
        {u"code"_s, view.line(u"Link code")->text()},
        {u"polls"_s, sightYesOrNo(timer->isActive())},
        {u"account"_s, view.account().join(u" / "_s)},
        {u"cores"_s, cores.join(u", "_s)},
        {u"projects"_s, projects},
        {u"under way"_s, sightUnderWay(window)},
        {u"enabled"_s, sightEnabledControls(view)},
        {u"GDPS Name"_s, view.line(u"GDPS Name")->text()},
        {u"Description"_s, view.description()->toPlainText()},
        {u"Emoji"_s, view.line(u"Emoji")->text()},
        {u"Accent"_s, view.line(u"Accent")->text()},
        {u"Tags"_s, view.line(u"Tags")->text()},
        {u"Core"_s, combo->currentText()},
        {u"Preset"_s, view.combo(u"Preset")->currentText()},
        {u"listed"_s, sightYesOrNo(view.checkBox(u"Show this GDPS in the public recent list")->isChecked())},
        {u"maintenance"_s, sightYesOrNo(view.checkBox(u"Start this GDPS in maintenance mode")->isChecked())},
    };
}

QStringList wordsOf(const WindowSight& sight)
{
    QStringList words;
    for (auto part = sight.cbegin(); part != sight.cend(); ++part) {
        words.append(part.key() + u": "_s + part.value());
    }
    return words;
}

WindowSight sightAfter(const WindowSight& before, Call call, const Outcome& outcome)
{
    WindowSight sight = before;
    QString next;
    if (!outcome.failure.isEmpty()) {
        sight.insert(changesOfFailure(call, outcome));
    } else {
        sight.insert(changesOfBareSuccess(call, outcome.status));
        sight.insert(outcome.shows);
        if (call == Call::LinkPoll && outcome.status != 202) {
            next = u"session"_s;
        } else if (call == Call::Session || call == Call::CreateInstance) {
            next = u"instances"_s;
        }
    }
    const bool isLinked = !sight.value(u"token"_s).isEmpty();
    sight.insert(u"under way"_s, isLinked ? next : QString());
    sight.insert(u"enabled"_s,
                 sightEnabledControls(isLinked, !sight.value(u"projects"_s).isEmpty(), sight.value(u"under way"_s)));
    return sight;
}

QString shownProject(const QStringList& cells)
{
    return u'[' + cells.join(u" | "_s) + u']';
}

QString shownCore(const QString& label, const QString& key)
{
    return key.isEmpty() ? label : label + u" = "_s + key;
}

} // namespace faults
