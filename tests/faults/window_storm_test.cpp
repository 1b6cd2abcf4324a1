// Windows that go while requests of all five kinds are under way: nothing of them runs afterwards.
#include "app/tarnwick_client_window.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"
#include "support/window_view.h"

#include <QFile>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTimerEvent>

#include <memory>

using support::Call;
using support::callPath;
using support::Reply;

class WindowStormTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowsGoAtAnyMoment();
    void aWindowGoesWithAllFiveKindsUnderWay();

private:
    static void answerAtRandom(support::ScriptedServer& server, QRandomGenerator& random);
    static void sendEverything(const QWidget& window);
};

void WindowStormTest::answerAtRandom(support::ScriptedServer& server, QRandomGenerator& random)
{
    const QByteArray body = R"({"code":"TWPC-1","access_token":"token-2","instances":[{},{}]})";
    const QList<Reply> replies = {Reply::json(200, body),
                                  Reply::json(200, body).delay(2),
                                  Reply::json(200, body).drip(9, 1),
                                  Reply::json(202, "{}").delay(1),
                                  Reply::json(500, body).chunked(5),
                                  Reply::json(200, body).cutBodyAfter(10),
                                  Reply::never(),
                                  Reply::resetWithoutAnswer(),
                                  Reply::closeWithoutAnswer()};
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        server.reply(callPath(call), replies.at(random.bounded(static_cast<int>(replies.size()))));
    }
}

/// Presses every button that sends, and has the code polled for.
void WindowStormTest::sendEverything(const QWidget& window)
{
    const support::WindowView view(window);
    view.line(u"GDPS Name")->setText(u"Neon"_s);
    for (const QStringView name : {u"Generate Link Code", u"Refresh", u"Create GDPS"}) {
        view.button(name)->click();
    }
    auto* timer = window.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    if (timer->isActive()) {
        QTimerEvent tick(timer->timerId());
        QCoreApplication::sendEvent(timer, &tick);
    }
}

void WindowStormTest::windowsGoAtAnyMoment()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    const support::MessageCatcher messages;
    const support::TemporaryHome home;
    support::ScriptedServer server;
    qint64 requests = 0;
    for (int round = 0; round < 400; ++round) {
        answerAtRandom(server, random);
        home.writeState(support::storedState(server.origin(), u"token-1"_s));
        auto window = std::make_unique<TarnwickClientWindow>();
        const int steps = random.bounded(40);
        const int secondPress = random.bounded(40);
        for (int step = 0; step < steps; ++step) {
            if (step == 0 || step == secondPress) {
                sendEverything(*window);
            }
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
        QSignalSpy gone(window.get(), &QObject::destroyed);
        window.reset();
        QCOMPARE(gone.count(), 1);
        // The last save was the window's own; a handler that ran now would save once more.
        QVERIFY(QFile::remove(home.stateFile()));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        QVERIFY(!QFile::exists(home.stateFile()));
        requests += server.count();
        server.forgetRequests();
    }
    QVERIFY(requests > 400);
    QCOMPARE(messages.messages(), QStringList());
}

void WindowStormTest::aWindowGoesWithAllFiveKindsUnderWay()
{
    const support::MessageCatcher messages;
    support::ScriptedServer server;
    const support::TemporaryHome home;
    home.writeState(support::storedState(server.origin(), u"token-1"_s));
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        server.hold(callPath(call));
    }
    server.reply(callPath(Call::LinkStart), Reply::json(200, R"({"code":"TWPC-1"})"));
    auto window = std::make_unique<TarnwickClientWindow>();
    sendEverything(*window);
    QTRY_COMPARE(server.heldCount(callPath(Call::LinkStart)), 1);
    server.release(callPath(Call::LinkStart));
    QTRY_VERIFY(!support::WindowView(*window).line(u"Link code")->text().isEmpty());
    server.hold(callPath(Call::LinkStart));
    sendEverything(*window);
    for (const Call call : calls) {
        QTRY_COMPARE(server.heldCount(callPath(call)), 1);
    }
    QCOMPARE(window->findChildren<QNetworkReply*>().size(), 5);
    window.reset();
    QVERIFY(QFile::remove(home.stateFile()));
    for (const Call call : calls) {
        QTRY_COMPARE(server.heldCount(callPath(call)), 0);
    }
    QVERIFY(!QFile::exists(home.stateFile()));
    QCOMPARE(messages.messages(), QStringList());
}

QTEST_MAIN(WindowStormTest)
#include "window_storm_test.moc"
