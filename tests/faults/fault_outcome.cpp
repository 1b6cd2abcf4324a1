#include "fault_outcome.h"

#include <QJsonArray>

using support::Call;
using Qt::StringLiterals::operator""_L1;
using Qt::StringLiterals::operator""_s;

namespace faults {

namespace {

const QStringList& signedOutAccount()
{
    static const QStringList texts = {u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s};
    return texts;
}

QString publicHostText()
{
    return QStringLiteral(TARNWICK_PUBLIC_HOST);
}

/// The base URL that a text in the URL field stands for.
QString baseUrlOf(const QString& text)
{
    QString url = text.trimmed();
    if (url.isEmpty()) {
        return u"https://"_s + publicHostText();
    }
    if (!url.startsWith("http://"_L1) && !url.startsWith("https://"_L1)) {
        url.prepend("https://"_L1);
    }
    while (url.endsWith(u'/')) {
        url.chop(1);
    }
    return url;
}

void save(ClientSight& sight)
{
    sight.savedOrigin = baseUrlOf(sight.url);
}

/// The projects that a reply lists.
void showProjects(ClientSight& sight, const QJsonObject& body)
{
    const QJsonArray projects = body.value(u"instances"_s).toArray();
    sight.rows = static_cast<int>(projects.size());
    sight.firstRow.clear();
    if (!projects.isEmpty()) {
        const QJsonObject first = projects.first().toObject();
        for (const QString& key : {u"display_name"_s, u"slug"_s, u"core_label"_s, u"status"_s}) {
            sight.firstRow.append(first.value(key).toString());
        }
    }
    sight.status = u"Loaded %1 Tarnwick project(s)."_s.arg(sight.rows);
}

/// Those that the bench lists after the call.
void showBenchProjects(ClientSight& sight)
{
    const QJsonObject neon{{u"display_name"_s, u"Neon"_s},
                           {u"slug"_s, u"neon"_s},
                           {u"core_label"_s, u"Core A"_s},
                           {u"status"_s, u"online"_s}};
    showProjects(sight, {{u"instances"_s, QJsonArray{neon}}});
}

void finishLinkStart(ClientSight& sight, const FaultOutcome& outcome)
{
    save(sight); // before it is sent
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
    if (!sight.polls) {
        save(sight);
    }
    sight.status = outcome.body.value(u"message"_s)
                       .toString(sight.polls ? u"Waiting for approval at "_s + publicHostText() + u"/link/pc."_s
                                             : u"Tarnwick desktop client linked."_s);
}

void showCores(ClientSight& sight, const QJsonObject& body)
{
    sight.cores.clear();
    const QJsonArray cores = body.value(u"available_cores"_s).toArray();
    for (const auto& element : cores) {
        const QJsonObject core = element.toObject();
        const QString key = core.value(u"key"_s).toString();
        if (key.isEmpty()) {
            continue;
        }
        const QString label = core.value(u"label"_s).toString(key);
        if (sight.cores.isEmpty()) {
            sight.form.core = label;
        }
        sight.cores.append(coreLine(label, key));
    }
    if (sight.cores.isEmpty()) {
        sight.cores.append(sight.form.core);
    }
}

void finishSession(ClientSight& sight, const FaultOutcome& outcome)
{
    if (!outcome.errorText.isEmpty()) {
        showCores(sight, {});
        sight.account = signedOutAccount();
        sight.savedToken.clear();
        save(sight);
        return;
    }
    const QJsonObject user = outcome.body.value(u"user"_s).toObject();
    sight.account = QStringList{u"Signed in as "_s + user.value(u"display_name"_s).toString(u"Tarnwick user"_s),
                                u"Plan: "_s + user.value(u"plan_name"_s).toString(u"Free"_s),
                                u"Limit: "_s + user.value(u"gdps_limit_label"_s).toString(u"-"_s)};
    showCores(sight, outcome.body);
    showBenchProjects(sight);
}

void finishInstances(ClientSight& sight, const FaultOutcome& outcome)
{
    if (outcome.errorText.isEmpty()) {
        showProjects(sight, outcome.body);
    }
}

void finishCreation(ClientSight& sight, const FaultOutcome& outcome)
{
    if (outcome.errorText.isEmpty()) {
        sight.form.name.clear();
        sight.form.description.clear();
        sight.form.tags.clear();
        sight.form.isListed = true;
        sight.form.isInMaintenance = false;
        showBenchProjects(sight);
    }
}

} // namespace

ClientSight sightBeforeStart(const QString& origin, const QString& token)
{
    const QString url = origin.trimmed();
    ClientSight sight;
    sight.url = url.isEmpty() ? baseUrlOf(url) : url;
    sight.savedOrigin = origin;
    sight.savedDevice = u"desk-1"_s;
    sight.savedToken = token;
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
    sight.enabledControls = idleControls(!sight.savedToken.isEmpty(), sight.rows);
    return sight;
}

QList<QByteArray> followUpsOf(Call call, const FaultOutcome& outcome)
{
    const bool fetches = call == Call::Session || call == Call::CreateInstance;
    return fetches && outcome.errorText.isEmpty() ? QList<QByteArray>{callPath(Call::Instances)} : QList<QByteArray>{};
}

} // namespace faults
