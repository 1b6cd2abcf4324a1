#include "service_bench.h"

#include "wait_for.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QTimerEvent>
#include <QUrl>

#include <utility>

using Qt::StringLiterals::operator""_s;

namespace support {

QList<Call> allCalls()
{
    return {Call::LinkStart, Call::LinkPoll, Call::Session, Call::Instances, Call::CreateInstance};
}

const char* callName(Call call)
{
    switch (call) {
    case Call::LinkStart:
        return "link start";
    case Call::LinkPoll:
        return "link poll";
    case Call::Session:
        return "session";
    case Call::Instances:
        return "instances";
    case Call::CreateInstance:
        return "create";
    }
    return nullptr;
}

QByteArray callPath(Call call)
{
    switch (call) {
    case Call::LinkStart:
        return "/api/pc/link/start";
    case Call::LinkPoll:
        return "/api/pc/link/poll";
    case Call::Session:
        return "/api/pc/me";
    case Call::Instances:
        return "/api/pc/instances";
    case Call::CreateInstance:
        return "/api/pc/instances/create";
    }
    return {};
}

QByteArray storedState(const QString& origin, const QString& token, const QString& deviceId)
{
    QJsonObject object{{u"origin"_s, origin}, {u"device_id"_s, deviceId}};
    if (!token.isEmpty()) {
        object.insert(u"access_token"_s, token);
    }
    return QJsonDocument(object).toJson();
}

ServiceBench::ServiceBench(ScriptedServer& server, WindowMaker makeWindow, const QString& origin)
    : m_server(server),
      m_makeWindow(std::move(makeWindow)),
      m_origin(origin.isEmpty() ? server.origin() : origin)
{
    answerEverythingWell();
}

void ServiceBench::startUnlinked()
{
    m_home.writeState(storedState(m_origin));
    m_window = m_makeWindow();
}

void ServiceBench::startLinked()
{
    m_home.writeState(storedState(m_origin, u"token-1"_s));
    m_window = m_makeWindow();
}

void ServiceBench::startStored()
{
    m_window = m_makeWindow();
}

bool ServiceBench::settleLinked()
{
    startLinked();
    return waitFor([this] { return view().status() == u"Loaded 1 Tarnwick project(s)."_s; });
}

bool ServiceBench::prepare(Call call)
{
    switch (call) {
    case Call::LinkStart:
        startUnlinked();
        return true;
    case Call::LinkPoll:
        startUnlinked();
        view().button(u"Generate Link Code")->click();
        return waitFor([this] { return view().line(u"Link code")->text() == u"TWPC-TEST01"_s; });
    case Call::Session:
        return true;
    case Call::Instances:
        return settleLinked();
    case Call::CreateInstance:
        if (!settleLinked()) {
            return false;
        }
        view().line(u"GDPS Name")->setText(u"Neon Burst"_s);
        return true;
    }
    return false;
}

void ServiceBench::bringAbout(Call call)
{
    switch (call) {
    case Call::LinkStart:
        view().button(u"Generate Link Code")->click();
        break;
    case Call::LinkPoll:
        tickPollTimer();
        break;
    case Call::Session:
        startLinked();
        break;
    case Call::Instances:
        view().button(u"Refresh")->click();
        break;
    case Call::CreateInstance:
        view().button(u"Create GDPS")->click();
        break;
    }
    const auto replies = m_window->findChildren<QNetworkReply*>();
    for (const QNetworkReply* reply : replies) {
        QObject::connect(reply, &QNetworkReply::metaDataChanged, m_window.get(), [this] { sendHeldBodies(); });
    }
}

void ServiceBench::sendHeldBodies()
{
    if (m_server.heldBodyCount() == 0) {
        return;
    }
    // Qt's network thread may still be busy with the head, and would take what comes now for part of it. Once it has
    // brought the answer of somebody else, it is past that.
    m_bystander = std::make_unique<ScriptedServer>();
    auto* network = m_window->findChild<QNetworkAccessManager*>();
    QNetworkReply* answer = network->get(QNetworkRequest(QUrl(m_bystander->origin())));
    QObject::connect(answer, &QNetworkReply::finished, m_window.get(), [this, answer] {
        answer->deleteLater();
        m_server.releaseBodies();
    });
}

void ServiceBench::tickPollTimer()
{
    auto* timer = m_window->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    QTimerEvent tick(timer->timerId());
    QCoreApplication::sendEvent(timer, &tick);
}

void ServiceBench::answerEverythingWell()
{
    m_server.reply(callPath(Call::LinkStart),
                   Reply::json(200, R"({"code":"TWPC-TEST01","approve_url":"https://pair.example/TWPC-TEST01"})"));
    m_server.reply(callPath(Call::LinkPoll), Reply::json(202, "{}"));
    m_server.reply(callPath(Call::Session),
                   Reply::json(200, R"({"user":{"display_name":"Ann","plan_name":"Pro","gdps_limit_label":"3 of 5"},)"
                                    R"("available_cores":[{"key":"core-a","label":"Core A"}]})"));
    m_server.reply(callPath(Call::Instances),
                   Reply::json(200, R"({"instances":[{"display_name":"Neon","slug":"neon","status":"online",)"
                                    R"("core_label":"Core A","manage_url":"https://manage.example/neon"}]})"));
    m_server.reply(callPath(Call::CreateInstance), Reply::json(201, R"({"message":"Neon Burst is ready."})"));
}

} // namespace support
