// Closing the window saves; destroying it does not.
#include "support/client_test.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QTimer>

using support::Call;
using support::ClientRun;

class WindowEndTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closingRewritesTheFileEvenIfNothingChanged()
    {
        const support::TemporaryHome home;
        const QByteArray before = R"({"origin":"https://a.example","device_id":"d-1"})";
        home.writeState(before);
        const auto window = support::newClientWindow();
        window->show();
        QCOMPARE(home.readState(), before);
        QVERIFY(window->close());
        QCOMPARE(home.readState(), "{\n    \"device_id\": \"d-1\",\n    \"origin\": \"https://a.example\"\n}\n");
    }

    void everyCloseSavesAgain()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        for (int round = 0; round < 3; ++round) {
            window->show();
            QVERIFY(!QFile::exists(home.stateFile()));
            QVERIFY(window->close());
            QVERIFY(QFile::remove(home.stateFile()));
        }
    }

    void aCloseSavesAndIsAccepted_data()
    {
        QTest::addColumn<bool>("byTheWindowSystem");
        QTest::newRow("by the program") << false;
        QTest::newRow("by the window system, as the user's close is") << true;
    }

    void aCloseSavesAndIsAccepted()
    {
        QFETCH(bool, byTheWindowSystem);
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        QCloseEvent event;
        event.ignore();
        if (byTheWindowSystem) {
            QSpontaneKeyEvent::setSpontaneous(&event); // QTest itself marks events as spontaneous in this way
        }
        QCOMPARE(event.spontaneous(), byTheWindowSystem);
        qApp->notify(window.get(), &event); // sendEvent() would clear the flag
        QVERIFY(event.isAccepted());
        QVERIFY(QFile::exists(home.stateFile()));
    }

    void aCloseIsNeverRefused()
    {
        ClientRun run;
        run.start();
        run.window().show();
        for (int kind = 0; kind < 5; ++kind) {
            support::WindowInside(run.window()).setBusy(kind, true);
        }
        QVERIFY(run.window().close());
        QVERIFY(!run.window().isVisible());
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
    }

    void closingLeavesThePollTimerAndRequestsAlone()
    {
        ClientRun run;
        QVERIFY(run.prepare(Call::LinkPoll));
        run.server.hold(callPath(Call::LinkPoll));
        run.window().show();
        run.bringAbout(Call::LinkPoll);
        QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkPoll)), 1);

        QVERIFY(run.window().close());
        QVERIFY(run.pollTimer()->isActive());
        run.server.reply(callPath(Call::LinkPoll), support::Reply::json(202, R"({"message":"Still here"})"));
        run.server.release(callPath(Call::LinkPoll));
        QTRY_COMPARE(run.view().status(), u"Still here"_s);
    }

    void destroyingTheWindowWritesNothing()
    {
        const support::TemporaryHome home;
        const QByteArray before = R"({"device_id":"kept"})";
        home.writeState(before);
        {
            const auto window = support::newClientWindow();
            window->show();
            support::WindowView(*window).line(u"Tarnwick URL")->setText(u"https://typed.example"_s);
        }
        QCOMPARE(home.readState(), before);
    }

    void everythingTheWindowMadeGoesWithIt()
    {
        const support::TemporaryHome home;
        const qsizetype topLevelBefore = QApplication::topLevelWidgets().size();
        auto window = support::newClientWindow();
        QList<QPointer<QObject>> objects;
        const auto children = window->findChildren<QObject*>();
        for (QObject* child : children) {
            objects.append(child);
        }
        objects.append(support::WindowView(*window).table()->itemDelegate());
        QCOMPARE(window->findChildren<QNetworkAccessManager*>(Qt::FindDirectChildrenOnly).size(), 1);
        QVERIFY(window->findChild<QTimer*>({}, Qt::FindDirectChildrenOnly) != nullptr);

        window.reset();
        for (const QPointer<QObject>& object : std::as_const(objects)) {
            QVERIFY(!object);
        }
        QCOMPARE(QApplication::topLevelWidgets().size(), topLevelBefore);
    }

    void aRequestInFlightEndsWithTheWindow()
    {
        ClientRun run;
        run.server.hold(callPath(Call::Session));
        run.startLinked();
        const QByteArray before = run.home().readState();
        QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
        run.destroyWindow();
        QTRY_COMPARE(run.server.openConnectionCount(), 0);
        // No handler ran: after a failed check, the file would have no token.
        QCOMPARE(run.home().readState(), before);
    }
};

TARNWICK_TEST(WindowEndTest)
#include "window_end_test.moc"
