// A start with a stored token: the session is checked at once.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"

#include <QEvent>
#include <QTest>

#include <memory>

using support::Call;
using support::Reply;

namespace {

/// Remembers what the status line said when it was painted for the first time.
class FirstPaintWatcher : public QObject
{
public:
    explicit FirstPaintWatcher(QLabel* label) : watched(label) { label->installEventFilter(this); }

    QString textAtFirstPaint;

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && textAtFirstPaint.isNull()) {
            textAtFirstPaint = watched->text();
        }
        return QObject::eventFilter(object, event);
    }

private:
    QLabel* watched;
};

} // namespace

class StartUpSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theCheckIsUnderWayBeforeTheWindowIsShown();
    void exactlyOneCheckIsInFlightWhenTheWindowIsFirstShown();
    void theCheckingTextIsTheFirstThingPainted();
    void aFailingCheckIsReportedOnceTheLoopRuns();
    void aTokenOfWhiteSpaceIsNone_data();
    void aTokenOfWhiteSpaceIsNone();
    void aTokenIsSentWithoutTheWhiteSpaceAroundIt();

private:
    std::unique_ptr<support::MessageCatcher> messages;
};

void StartUpSessionTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void StartUpSessionTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void StartUpSessionTest::theCheckIsUnderWayBeforeTheWindowIsShown()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    server.hold(callPath(Call::Session));
    bench.startLinked();
    QCOMPARE(bench.view().status(), u"Checking linked Tarnwick session..."_s);
    // A check in flight is what disables the one button and leaves the other.
    QVERIFY(!bench.view().button(u"Unlink")->isEnabled());
    QVERIFY(bench.view().button(u"Refresh")->isEnabled());
    QVERIFY(!bench.window().isVisible());
    QCOMPARE(bench.view().account().constFirst(), u"Not linked yet"_s);

    // It needs no window on the screen, only the event loop.
    QTRY_COMPARE(server.heldCount(callPath(Call::Session)), 1);
    QVERIFY(!bench.window().isVisible());
}

void StartUpSessionTest::exactlyOneCheckIsInFlightWhenTheWindowIsFirstShown()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    server.hold(callPath(Call::Session));
    bench.startLinked();
    bench.window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&bench.window()));
    QTRY_COMPARE(server.heldCount(callPath(Call::Session)), 1);
    QCOMPARE(server.count(), 1);
    const support::RecordedRequest request = server.requests().constFirst();
    QCOMPARE(request.method, "GET");
    QCOMPARE(request.header("Authorization"), "Bearer token-1");

    server.release(callPath(Call::Session));
    QTRY_COMPARE(bench.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(server.count(callPath(Call::Session)), 1);
    QCOMPARE(server.count(), 2);
}

void StartUpSessionTest::theCheckingTextIsTheFirstThingPainted()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    server.hold(callPath(Call::Session));
    bench.startLinked();
    const FirstPaintWatcher watcher(bench.view().label(u"StatusText"_s));
    bench.window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&bench.window()));
    QTRY_COMPARE(watcher.textAtFirstPaint, u"Checking linked Tarnwick session..."_s);
}

void StartUpSessionTest::aFailingCheckIsReportedOnceTheLoopRuns()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    server.reply(callPath(Call::Session), Reply::empty(503));
    bench.startLinked();
    QCOMPARE(bench.view().status(), u"Checking linked Tarnwick session..."_s);
    QTRY_COMPARE(bench.view().status(), u"Tarnwick returned HTTP 503."_s);
    QVERIFY(!bench.view().button(u"Refresh")->isEnabled());
}

void StartUpSessionTest::aTokenOfWhiteSpaceIsNone_data()
{
    QTest::addColumn<QByteArray>("token");
    QTest::newRow("blanks") << QByteArray(R"("   ")");
    QTest::newRow("tab and line ends") << QByteArray(R"("\t\r\n")");
    QTest::newRow("no-break space") << QByteArray(R"("\u00a0")");
    QTest::newRow("empty") << QByteArray(R"("")");
}

void StartUpSessionTest::aTokenOfWhiteSpaceIsNone()
{
    QFETCH(QByteArray, token);
    support::ScriptedServer server;
    server.reply(callPath(Call::LinkStart), Reply::empty(500));
    const support::TemporaryHome home;
    home.writeState(R"({"origin":")" + server.origin().toUtf8() + R"(","device_id":"d","access_token":)" + token + '}');
    const TarnwickClientWindow window;
    const support::WindowView view(window);
    QCOMPARE(view.status(), u"Ready to link your Tarnwick account."_s);
    QVERIFY(!view.button(u"Refresh")->isEnabled());

    view.button(u"Generate Link Code")->click();
    QTRY_COMPARE(view.status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(server.count(), 1);
    QCOMPARE(server.requests().constFirst().path(), callPath(Call::LinkStart));
}

void StartUpSessionTest::aTokenIsSentWithoutTheWhiteSpaceAroundIt()
{
    support::ScriptedServer server;
    server.hold(callPath(Call::Session));
    const support::TemporaryHome home;
    home.writeState(support::storedState(server.origin(), u" \n token 1\t"_s));
    const TarnwickClientWindow window;
    QTRY_COMPARE(server.heldCount(callPath(Call::Session)), 1);
    QCOMPARE(server.requests().constFirst().header("Authorization"), "Bearer token 1");
}

QTEST_MAIN(StartUpSessionTest)
#include "start_up_session_test.moc"
