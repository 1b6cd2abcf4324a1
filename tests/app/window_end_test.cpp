// Closing the window saves; destroying it does not.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"

#include <QCloseEvent>
#include <QFile>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <memory>

using support::Call;

class WindowEndTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void closingRewritesTheFileEvenIfNothingChanged();
    void everyCloseSavesAgain();
    void aCloseWritesTheFileAndIsAccepted();
    void aCloseIsNeverRefused();
    void closingLeavesThePollTimerAndRequestsAlone();
    void destroyingTheWindowWritesNothing();
    void everythingTheWindowMadeGoesWithIt();
    void aRequestInFlightEndsWithTheWindow();

private:
    std::unique_ptr<support::MessageCatcher> messages;
};

void WindowEndTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void WindowEndTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void WindowEndTest::closingRewritesTheFileEvenIfNothingChanged()
{
    const support::TemporaryHome home;
    const QByteArray before = R"({"origin":"https://a.example","device_id":"d-1"})";
    home.writeState(before);
    TarnwickClientWindow window;
    window.show();
    QCOMPARE(home.readState(), before);
    QVERIFY(window.close());
    QCOMPARE(home.readState(), "{\n    \"device_id\": \"d-1\",\n    \"origin\": \"https://a.example\"\n}\n");
}

void WindowEndTest::everyCloseSavesAgain()
{
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    for (int round = 0; round < 3; ++round) {
        window.show();
        QVERIFY(!QFile::exists(home.stateFile()));
        QVERIFY(window.close());
        QVERIFY(QFile::remove(home.stateFile()));
    }
}

void WindowEndTest::aCloseWritesTheFileAndIsAccepted()
{
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    QCloseEvent event;
    event.ignore();
    QCoreApplication::sendEvent(&window, &event);
    QVERIFY(event.isAccepted());
    QVERIFY(QFile::exists(home.stateFile()));
}

void WindowEndTest::aCloseIsNeverRefused()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(bench.prepare(Call::CreateInstance));
    server.hold(callPath(Call::CreateInstance));
    bench.window().show();
    bench.bringAbout(Call::CreateInstance);
    QTRY_COMPARE(server.heldCount(callPath(Call::CreateInstance)), 1);
    QVERIFY(bench.window().close());
    QVERIFY(!bench.window().isVisible());
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void WindowEndTest::closingLeavesThePollTimerAndRequestsAlone()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(bench.prepare(Call::LinkPoll));
    server.hold(callPath(Call::LinkPoll));
    bench.window().show();
    bench.bringAbout(Call::LinkPoll);
    QTRY_COMPARE(server.heldCount(callPath(Call::LinkPoll)), 1);

    QVERIFY(bench.window().close());
    const auto* timer = bench.window().findChild<QTimer*>({}, Qt::FindDirectChildrenOnly);
    QVERIFY(timer->isActive());
    server.reply(callPath(Call::LinkPoll), support::Reply::json(202, R"({"message":"Still here"})"));
    server.release(callPath(Call::LinkPoll));
    QTRY_COMPARE(bench.view().status(), u"Still here"_s);
}

void WindowEndTest::destroyingTheWindowWritesNothing()
{
    const support::TemporaryHome home;
    {
        TarnwickClientWindow window;
        window.show();
    }
    QVERIFY(!QFile::exists(home.stateFile()));

    const QByteArray before = R"({"device_id":"kept"})";
    home.writeState(before);
    {
        const TarnwickClientWindow window;
        support::WindowView(window).line(u"Tarnwick URL")->setText(u"https://typed.example"_s);
    }
    QCOMPARE(home.readState(), before);
}

void WindowEndTest::everythingTheWindowMadeGoesWithIt()
{
    const support::TemporaryHome home;
    auto window = std::make_unique<TarnwickClientWindow>();
    const QPointer<QNetworkAccessManager> manager =
        window->findChild<QNetworkAccessManager*>({}, Qt::FindDirectChildrenOnly);
    const QPointer<QTimer> timer = window->findChild<QTimer*>({}, Qt::FindDirectChildrenOnly);
    QList<QPointer<QWidget>> widgets;
    const auto children = window->findChildren<QWidget*>();
    for (QWidget* child : children) {
        widgets.append(child);
    }
    QVERIFY(manager);
    QVERIFY(timer);
    QVERIFY(widgets.size() > 23);
    const auto before = QApplication::topLevelWidgets();
    QVERIFY(before.contains(window.get()));

    window.reset();
    QVERIFY(!manager);
    QVERIFY(!timer);
    for (const QPointer<QWidget>& widget : std::as_const(widgets)) {
        QVERIFY(!widget);
    }
}

void WindowEndTest::aRequestInFlightEndsWithTheWindow()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    server.hold(callPath(Call::Session));
    bench.startLinked();
    const QByteArray before = bench.home().readState();
    QTRY_COMPARE(server.heldCount(callPath(Call::Session)), 1);
    bench.destroyWindow();
    QTRY_COMPARE(server.openConnectionCount(), 0);
    // No handler ran: a failed check would have taken the token out of the file.
    QCOMPARE(bench.home().readState(), before);
}

QTEST_MAIN(WindowEndTest)
#include "window_end_test.moc"
