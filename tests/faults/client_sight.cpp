#include "client_sight.h"

#include <QJsonArray>
#include <QTimer>

using support::Call;
using Qt::StringLiterals::operator""_s;

namespace faults {

namespace {

const QStringList& signedOutAccount()
{
    static const QStringList texts = {u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s};
    return texts;
}

/// The buttons of a client that waits for nothing.
QStringList idleButtons(bool linked, int rows)
{
    QStringList names = {u"Generate Link Code"_s, u"Open Public Pairing Page"_s};
    if (linked) {
        names << u"Refresh"_s << u"Unlink"_s;
        if (rows > 0) {
            names << u"Open Selected Project"_s;
        }
        names << u"Create GDPS"_s;
    }
    return names;
}

QString publicHostText()
{
    return QStringLiteral(TARNWICK_PUBLIC_HOST);
}

void finishLinkStart(ClientSight& sight, const FaultOutcome& outcome)
{
    if (!outcome.errorText.isEmpty()) {
        return;
    }
    sight.code = outcome.body.value(u"code"_s).toString();
    sight.polls = !sight.code.isEmpty();
    sight.status =
        u"Code "_s + sight.code + u" is ready. Approve it at "_s + publicHostText() + u"/link/pc before it expires."_s;
}

/// An approval here brings no token: the session check that follows one is the next call.
void finishLinkPoll(ClientSight& sight, const FaultOutcome& outcome)
{
    sight.polls = outcome.status == 202;
    if (!outcome.errorText.isEmpty()) {
        if (outcome.status == 404 || outcome.status == 410) {
            sight.code.clear();
        }
        return;
    }
    sight.status = outcome.body.value(u"message"_s)
                       .toString(sight.polls ? u"Waiting for approval at "_s + publicHostText() + u"/link/pc."_s
                                             : u"Tarnwick desktop client linked."_s);
}

QStringList coresIn(const QJsonObject& body)
{
    QStringList labels;
    const QJsonArray cores = body.value(u"available_cores"_s).toArray();
    for (const auto& element : cores) {
        const QJsonObject core = element.toObject();
        const QString key = core.value(u"key"_s).toString();
        if (!key.isEmpty()) {
            labels.append(core.value(u"label"_s).toString(key));
        }
    }
    return labels;
}

void finishSession(ClientSight& sight, const FaultOutcome& outcome)
{
    sight = ClientSight{};
    sight.status = outcome.errorText;
    sight.account = signedOutAccount();
    sight.cores = QStringList{u"No cores available"_s};
    if (outcome.errorText.isEmpty()) {
        const QJsonObject user = outcome.body.value(u"user"_s).toObject();
        sight.account = QStringList{u"Signed in as "_s + user.value(u"display_name"_s).toString(u"Tarnwick user"_s),
                                    u"Plan: "_s + user.value(u"plan_name"_s).toString(u"Free"_s),
                                    u"Limit: "_s + user.value(u"gdps_limit_label"_s).toString(u"-"_s)};
        const QStringList offered = coresIn(outcome.body);
        sight.cores = offered.isEmpty() ? sight.cores : offered;
        sight.rows = 1;
        sight.savedToken = u"token-1"_s;
        sight.status = u"Loaded 1 Tarnwick project(s)."_s;
    }
}

void finishInstances(ClientSight& sight, const FaultOutcome& outcome)
{
    if (outcome.errorText.isEmpty()) {
        sight.rows = static_cast<int>(outcome.body.value(u"instances"_s).toArray().size());
        sight.status = u"Loaded %1 Tarnwick project(s)."_s.arg(sight.rows);
    }
}

void finishCreation(ClientSight& sight, const FaultOutcome& outcome)
{
    if (outcome.errorText.isEmpty()) {
        sight.formName.clear();
        sight.status = u"Loaded 1 Tarnwick project(s)."_s;
    }
}

} // namespace

QStringList ClientSight::words() const
{
    return {u"status: "_s + status,
            u"code: "_s + code,
            polls ? u"polls"_s : u"does not poll"_s,
            u"account: "_s + account.join(u" / "_s),
            u"cores: "_s + cores.join(u" / "_s),
            u"rows: %1"_s.arg(rows),
            u"enabled: "_s + enabledButtons.join(u" / "_s),
            u"name in the form: "_s + formName,
            u"saved token: "_s + savedToken};
}

ClientSight sightOf(support::ServiceBench& bench)
{
    const support::WindowView view = bench.view();
    ClientSight sight;
    sight.status = view.status();
    sight.code = view.line(u"Link code")->text();
    sight.polls = bench.window().findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly)->isActive();
    sight.account = view.account();
    const QComboBox* cores = view.combo(u"Core");
    for (int index = 0; index < cores->count(); ++index) {
        sight.cores.append(cores->itemText(index));
    }
    sight.rows = view.table()->rowCount();
    const QStringList names = idleButtons(true, 1);
    for (const QString& name : names) {
        if (view.button(name)->isEnabled()) {
            sight.enabledButtons.append(name);
        }
    }
    sight.formName = view.line(u"GDPS Name")->text();
    sight.savedToken = bench.home().stateObject().value(u"access_token"_s).toString();
    return sight;
}

ClientSight sightAfter(Call call, const FaultOutcome& outcome, const ClientSight& before)
{
    ClientSight sight = before;
    sight.status = outcome.errorText;
    switch (call) {
    case Call::LinkStart:
        finishLinkStart(sight, outcome);
        break;
    case Call::LinkPoll:
        finishLinkPoll(sight, outcome);
        break;
    case Call::Session:
        finishSession(sight, outcome);
        break;
    case Call::Instances:
        finishInstances(sight, outcome);
        break;
    case Call::CreateInstance:
        finishCreation(sight, outcome);
        break;
    }
    sight.enabledButtons = idleButtons(!sight.savedToken.isEmpty(), sight.rows);
    return sight;
}

QList<QByteArray> followUpsOf(Call call, const FaultOutcome& outcome)
{
    const bool fetches = call == Call::Session || call == Call::CreateInstance;
    return fetches && outcome.errorText.isEmpty() ? QList<QByteArray>{callPath(Call::Instances)} : QList<QByteArray>{};
}

} // namespace faults
