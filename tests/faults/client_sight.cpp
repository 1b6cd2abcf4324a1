#include "client_sight.h"

#include <QJsonObject>
#include <QTimer>

#include <utility>

using Qt::StringLiterals::operator""_s;

namespace faults {

namespace {

/// The fields and buttons of the creation form, in the order of WindowView::creationForm().
const QStringList& formControls()
{
    static const QStringList names = {
        u"GDPS Name"_s, u"Description"_s, u"Emoji"_s,           u"Accent"_s,          u"Tags"_s,
        u"Core"_s,      u"Preset"_s,      u"public list box"_s, u"maintenance box"_s, u"Create GDPS"_s};
    return names;
}

QList<std::pair<QString, const QWidget*>> controlsOf(const support::WindowView& view)
{
    QList<std::pair<QString, const QWidget*>> controls;
    for (const QString& name : {u"Tarnwick URL"_s, u"Link code"_s}) {
        controls.append({name, view.line(name)});
    }
    controls.append({u"pages"_s, view.tabs()});
    controls.append({u"projects"_s, view.table()});
    for (const QString& name : {u"Generate Link Code"_s, u"Open Public Pairing Page"_s, u"Refresh"_s, u"Unlink"_s,
                                u"Open Selected Project"_s}) {
        controls.append({name, view.button(name)});
    }
    const auto form = view.creationForm();
    for (qsizetype index = 0; index < form.size(); ++index) {
        controls.append({formControls().at(index), form.at(index)});
    }
    return controls;
}

} // namespace

QStringList ClientSight::words() const
{
    return QStringList{u"status: "_s + status,
                       u"URL: "_s + url,
                       u"code: "_s + code,
                       polls ? u"polls"_s : u"does not poll"_s,
                       u"account: "_s + account.join(u" / "_s),
                       u"cores: "_s + cores.join(u" / "_s),
                       u"rows: %1"_s.arg(rows),
                       u"first row: "_s + firstRow.join(u" / "_s),
                       u"enabled: "_s + enabledControls.join(u" / "_s),
                       u"saved origin: "_s + savedOrigin,
                       u"saved device: "_s + savedDevice,
                       u"saved token: "_s + savedToken} +
           form.words();
}

QStringList idleControls(bool linked, int rows)
{
    QStringList names = {u"Tarnwick URL"_s, u"Link code"_s,          u"pages"_s,
                         u"projects"_s,     u"Generate Link Code"_s, u"Open Public Pairing Page"_s};
    if (linked) {
        names << u"Refresh"_s << u"Unlink"_s;
        if (rows > 0) {
            names << u"Open Selected Project"_s;
        }
        names << formControls();
    }
    return names;
}

QString coreLine(const QString& label, const QString& key)
{
    return key.isEmpty() ? label : label + u" = "_s + key;
}

ClientSight sightOf(support::ServiceBench& bench)
{
    const support::WindowView view = bench.view();
    ClientSight sight;
    sight.status = view.status();
    sight.url = view.line(u"Tarnwick URL")->text();
    sight.code = view.line(u"Link code")->text();
    sight.polls = bench.window().findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly)->isActive();
    sight.account = view.account();
    const QComboBox* cores = view.combo(u"Core");
    for (int index = 0; index < cores->count(); ++index) {
        sight.cores.append(coreLine(cores->itemText(index), cores->itemData(index).toString()));
    }
    sight.rows = view.table()->rowCount();
    sight.firstRow = sight.rows > 0 ? view.row(0) : QStringList();
    const auto controls = controlsOf(view);
    for (const auto& [name, control] : controls) {
        if (control->isEnabled()) {
            sight.enabledControls.append(name);
        }
    }
    sight.form = support::creationFormIn(view);
    const QJsonObject saved = bench.home().stateObject();
    sight.savedOrigin = saved.value(u"origin"_s).toString();
    sight.savedDevice = saved.value(u"device_id"_s).toString();
    sight.savedToken = saved.value(u"access_token"_s).toString();
    return sight;
}

} // namespace faults
