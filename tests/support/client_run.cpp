#include "client_run.h"

#include "client_window.h"
#include "stored_state.h"
#include "wait_for.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QTimerEvent>
#include <QUrl>

using Qt::StringLiterals::operator""_s;

namespace support {

ClientRun::ClientRun() : m_origin(server.origin())
{
    answerEverythingWell();
}

ClientRun::ClientRun(const TlsIdentity& identity) : server(identity), m_origin(server.origin())
{
    answerEverythingWell();
}

ClientRun::~ClientRun() = default;

void ClientRun::start()
{
    m_home.writeState(storedState(m_origin));
    startStored();
}

void ClientRun::startLinked()
{
    m_home.writeState(storedState(m_origin, u"token-1"_s));
    startStored();
}

void ClientRun::startStored()
{
    m_window = newClientWindow();
}

bool ClientRun::startSignedIn()
{
    startLinked();
    return waitFor([this] { return view().status().startsWith(u"Loaded "_s); });
}

bool ClientRun::prepare(Call call)
{
    switch (call) {
    case Call::LinkStart:
        start();
        return true;
    case Call::LinkPoll:
        start();
        press(u"Generate Link Code");
        return waitFor([this] { return view().line(u"Link code")->text() == u"TWPC-TEST01"_s; });
    case Call::Session:
        return true;
    case Call::Instances:
        return startSignedIn();
    case Call::CreateInstance:
        if (!startSignedIn()) {
            return false;
        }
        view().line(u"GDPS Name")->setText(u"Neon Burst"_s);
        return true;
    }
    return false;
}

void ClientRun::bringAbout(Call call)
{
    switch (call) {
    case Call::LinkStart:
        press(u"Generate Link Code");
        break;
    case Call::LinkPoll:
        tick();
        break;
    case Call::Session:
        startLinked();
        break;
    case Call::Instances:
        press(u"Refresh");
        break;
    case Call::CreateInstance:
        press(u"Create GDPS");
        break;
    }
    const auto replies = m_window->findChildren<QNetworkReply*>();
    for (const QNetworkReply* reply : replies) {
        QObject::connect(reply, &QNetworkReply::metaDataChanged, m_window.get(), [this] { sendHeldBodies(); });
    }
}

void ClientRun::sendHeldBodies()
{
    if (server.heldBodyCount() == 0) {
        return;
    }
    // Qt's network thread may still be parsing the head, and would take data that arrives now as part of it. When the
    // reply of another server has arrived, it has finished that.
    m_bystander = std::make_unique<ScriptedServer>();
    auto* network = m_window->findChild<QNetworkAccessManager*>();
    QNetworkReply* answer = network->get(QNetworkRequest(QUrl(m_bystander->origin())));
    QObject::connect(answer, &QNetworkReply::finished, m_window.get(), [this, answer] {
        answer->deleteLater();
        server.releaseBodies();
    });
}

QString ClientRun::savedText(const QString& key) const
{
    return m_home.stateObject().value(key).toString();
}

void ClientRun::forcePress(QStringView buttonText) const
{
    view().button(buttonText)->setEnabled(true);
    press(buttonText);
}

QTimer* ClientRun::pollTimer() const
{
    const QWidget& owner = *m_window;
    const auto timers = owner.findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    return timers.size() == 1 ? timers.constFirst() : nullptr;
}

void ClientRun::tick() const
{
    // Also works while the timer is stopped.
    QMetaObject::invokeMethod(pollTimer(), "timeout");
}

bool ClientRun::showLinkCode(const QString& code, const QString& approveUrl)
{
    server.reply(callPath(Call::LinkStart),
                 Reply::json(200, QJsonObject{{u"code"_s, code}, {u"approve_url"_s, approveUrl}}));
    press(u"Generate Link Code");
    return waitFor([this, &code] { return view().status().startsWith(u"Code %1 is ready."_s.arg(code)); });
}

bool ClientRun::pollWith(const Reply& reply)
{
    if (!showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s)) {
        return false;
    }
    server.reply(callPath(Call::LinkPoll), reply);
    tick();
    return true;
}

bool ClientRun::holdCall(Call call)
{
    server.hold(callPath(call));
    bringAbout(call);
    return waitFor([this, call] { return server.heldCount(callPath(call)) == 1; });
}

bool ClientRun::markerComesBack()
{
    const QString marker = u"marker"_s;
    server.reply(callPath(Call::LinkStart), Reply::json(500, QJsonObject{{u"message"_s, marker}}));
    press(u"Generate Link Code");
    return waitFor([this, &marker] { return view().status() == marker; });
}

void ClientRun::answerEverythingWell()
{
    server.reply(callPath(Call::LinkStart),
                 Reply::json(200, R"({"code":"TWPC-TEST01","approve_url":"https://pair.example/TWPC-TEST01"})"));
    server.reply(callPath(Call::LinkPoll), Reply::json(202, "{}"));
    server.reply(callPath(Call::Session),
                 Reply::json(200, R"({"user":{"display_name":"Ann","plan_name":"Pro","gdps_limit_label":"3 of 5"},)"
                                  R"("available_cores":[{"key":"core-a","label":"Core A"}]})"));
    server.reply(callPath(Call::Instances),
                 Reply::json(200, R"({"instances":[{"display_name":"Neon","slug":"neon","status":"online",)"
                                  R"("core_label":"Core A","manage_url":"https://manage.example/neon"}]})"));
    server.reply(callPath(Call::CreateInstance), Reply::json(201, R"({"message":"Neon Burst is ready."})"));
}

} // namespace support
