#include "support/client_test.h"

#include <QTimer>

using support::Call;
using support::callPath;
using support::Reply;

/// Any failed session check unlinks the desktop.
class FailedSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFailureSignsOut_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("shown");
        QTest::newRow("bad request") << Reply::json(400, "{}") << u"Tarnwick returned HTTP 400."_s;
        QTest::newRow("unauthorized") << Reply::json(401, R"({"message":"Sign in again."})") << u"Sign in again."_s;
        QTest::newRow("maintenance") << Reply::json(503, R"({"error":"Maintenance"})") << u"Maintenance"_s;
        QTest::newRow("connection closed") << Reply::closeWithoutAnswer() << u"Connection closed"_s;
    }

    void everyFailureSignsOut()
    {
        QFETCH(Reply, reply);
        QFETCH(QString, shown);
        Run run;
        run.server.reply(callPath(Call::Session), reply);
        run.startLinked();
        QTRY_COMPARE(run.view().status(), shown);
        QCOMPARE(run.home().stateObject(),
                 (QJsonObject{{u"origin"_s, run.server.origin()}, {u"device_id"_s, u"desk-1"_s}}));
        QVERIFY(!run.view().button(u"Unlink")->isEnabled());
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::Instances)), 0);
    }

    void cardThenTableThenCoresThenFileAndText()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.server.hold(callPath(Call::Session));
        QVERIFY(checkAgain(run));
        QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);

        QStringList steps;
        const auto note = [&](const QString& step) {
            steps.append(step);
            QCOMPARE(run.view().account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
            QCOMPARE(run.savedText(u"access_token"_s), u"token-2"_s);
            QCOMPARE(run.view().status(), u"Tarnwick desktop client linked."_s);
        };
        // Emptying the table clears its selection, which is the first change that updates the buttons.
        const support::EnabledWatch table(run.view().button(u"Refresh"),
                                          [&](bool enabled) { note(enabled ? u"linked"_s : u"table"_s); });
        connect(run.view().combo(u"Core"), &QComboBox::currentTextChanged, this, note);
        run.server.release(callPath(Call::Session));
        QTRY_COMPARE(run.view().status(), u"Revoked"_s);
        QCOMPARE(steps, (QStringList{u"table"_s, QString(), u"No cores available"_s}));
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
        QCOMPARE(run.view().table()->rowCount(), 0);
        QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
        QVERIFY(!run.view().button(u"Create GDPS")->isEnabled());
    }

    void codePairingPageAndPollingStay()
    {
        Run run;
        run.server.reply(callPath(Call::Session), Reply::json(500, "{}"));
        QVERIFY(run.holdCall(Call::Session));
        QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
        run.server.release(callPath(Call::Session));
        QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 500."_s);

        QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
        QVERIFY(run.pollTimer()->isActive());
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/1"_s));
        run.tick();
        QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
        QCOMPARE(run.server.requests(callPath(Call::LinkPoll)).constFirst().query(), "code=TWPC-1&device_id=desk-1");
    }

    void theFormKeepsItsContentsButTheCore()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        support::fillCreationForm(run.view());
        support::CreationForm expected = support::creationFormIn(run.view());
        expected.core = u"No cores available"_s;
        QVERIFY(checkAgain(run));
        QTRY_COMPARE(run.view().status(), u"Revoked"_s);
        QCOMPARE(support::creationFormIn(run.view()).words(), expected.words());
    }

    void whatIsUnderWayGoesOn_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("shown");
        QTest::newRow("instances") << Call::Instances << u"Loaded 1 Tarnwick project(s)."_s;
        QTest::newRow("create") << Call::CreateInstance << u"Neon Burst is ready."_s;
    }

    void whatIsUnderWayGoesOn()
    {
        QFETCH(Call, call);
        QFETCH(QString, shown);
        Run run;
        QVERIFY(run.prepare(call));
        QVERIFY(run.holdCall(call));
        QVERIFY(checkAgain(run));
        QTRY_COMPARE(run.view().status(), u"Revoked"_s);
        QCOMPARE(run.server.heldCount(callPath(call)), 1);
        QVERIFY(support::WindowInside(run.window()).isBusy(int(call)));

        run.server.release(callPath(call));
        QTRY_COMPARE(run.view().status(), shown);
        QCOMPARE(run.view().table()->rowCount(), call == Call::Instances ? 1 : 0);
        QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    }

private:
    using Run = support::ClientRun;

    /// Approves a link code, which starts another session check. That check will fail.
    static bool checkAgain(Run& run)
    {
        run.server.reply(callPath(Call::Session), Reply::json(401, R"({"message":"Revoked"})"));
        return run.pollWith(Reply::json(200, R"({"access_token":"token-2"})"));
    }
};

TARNWICK_TEST(FailedSessionTest)
#include "failed_session_test.moc"
