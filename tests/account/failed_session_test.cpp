#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/enabled_watch.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// Any failed session check signs the desktop out.
class FailedSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void everyFailureSignsOut_data();
    void everyFailureSignsOut();
    void startingOfflineSignsOutAndShowsTheNetworkError();
    void whatWasLoadedDisappears();
    void theStepsOfSigningOutComeInOrder();
    void codePairingPageAndPollingStay();
    void theFormKeepsItsContents();
    void aLateProjectListRefillsTheTable();
    void theDesktopCanBeLinkedAgain();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    /// Has an approved link code bring about another session check, which will be answered so.
    static bool checkAgain(Run& run, const Reply& reply)
    {
        run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
        run.server.reply(callPath(Call::Session), reply);
        if (!run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s)) {
            return false;
        }
        run.tick();
        return true;
    }
};

void FailedSessionTest::everyFailureSignsOut_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("shown");
    const QByteArray none = "{}";
    QTest::newRow("bad request") << 400 << none << u"Tarnwick returned HTTP 400."_s;
    QTest::newRow("unauthorized") << 401 << QByteArray(R"({"message":"Sign in again."})") << u"Sign in again."_s;
    QTest::newRow("forbidden") << 403 << QByteArray(R"({"error":"Banned"})") << u"Banned"_s;
    QTest::newRow("not found") << 404 << QByteArray("<html></html>") << u"Tarnwick returned HTTP 404."_s;
    QTest::newRow("too many") << 429 << none << u"Tarnwick returned HTTP 429."_s;
    QTest::newRow("server error") << 500 << none << u"Tarnwick returned HTTP 500."_s;
    QTest::newRow("maintenance") << 503 << QByteArray(R"({"message":"Maintenance"})") << u"Maintenance"_s;
    QTest::newRow("connection closed") << 0 << none << u"Connection closed"_s;
}

void FailedSessionTest::everyFailureSignsOut()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, shown);
    Run run;
    run.server.reply(callPath(Call::Session), status == 0 ? Reply::closeWithoutAnswer() : Reply::json(status, body));
    run.startLinked();
    QTRY_COMPARE(run.view().status(), shown);
    QCOMPARE(run.home().stateObject(),
             (QJsonObject{{u"origin"_s, run.server.origin()}, {u"device_id"_s, u"desk-1"_s}}));
    QCOMPARE(run.view().account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
    QVERIFY(!run.view().button(u"Refresh")->isEnabled());
    QVERIFY(!run.view().button(u"Create GDPS")->isEnabled());
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Instances)), 0);
}

void FailedSessionTest::startingOfflineSignsOutAndShowsTheNetworkError()
{
    Run run;
    run.server.stop();
    run.startLinked();
    QCOMPARE(run.view().status(), u"Checking linked Tarnwick session..."_s);
    QTRY_COMPARE(run.view().status(), u"Connection refused"_s);
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
}

void FailedSessionTest::whatWasLoadedDisappears()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().table()->rowCount(), 1);
    QVERIFY(checkAgain(run, Reply::json(401, R"({"message":"Revoked"})")));
    QTRY_COMPARE(run.view().status(), u"Revoked"_s);
    QCOMPARE(run.view().account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
    QCOMPARE(run.view().table()->rowCount(), 0);
    QCOMPARE(run.view().combo(u"Core")->count(), 1);
    QCOMPARE(run.view().combo(u"Core")->itemText(0), u"No cores available"_s);
    QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
}

void FailedSessionTest::theStepsOfSigningOutComeInOrder()
{
    Run run;
    QVERIFY(run.startSignedIn());
    const QStringList signedOut{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s};
    run.server.hold(callPath(Call::Session));
    QVERIFY(checkAgain(run, Reply::json(500, "{}")));
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);

    QStringList steps;
    // Emptying the table drops its selection, the first thing that makes the buttons follow.
    const support::EnabledWatch watch(run.view().button(u"Refresh"), [&](bool enabled) {
        steps.append(u"table"_s);
        QVERIFY(!enabled);
        QCOMPARE(run.view().account(), signedOut);
        QCOMPARE(run.view().combo(u"Core")->currentText(), u"Core A"_s);
        QCOMPARE(run.savedText(u"access_token"_s), u"token-2"_s);
    });
    connect(run.view().combo(u"Core"), &QComboBox::currentTextChanged, this, [&](const QString& text) {
        if (text.isEmpty()) { // the former items are being removed
            return;
        }
        steps.append(u"cores"_s);
        QCOMPARE(text, u"No cores available"_s);
        QCOMPARE(run.savedText(u"access_token"_s), u"token-2"_s);
        QCOMPARE(run.view().status(), u"Tarnwick desktop client linked."_s);
    });
    run.server.release(callPath(Call::Session));
    QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(steps, (QStringList{u"table"_s, u"cores"_s}));
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
}

void FailedSessionTest::codePairingPageAndPollingStay()
{
    Run run;
    run.server.hold(callPath(Call::Session));
    run.server.reply(callPath(Call::Session), Reply::json(500, "{}"));
    run.startLinked();
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
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

void FailedSessionTest::theFormKeepsItsContents()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().description()->setPlainText(u"Bright"_s);
    run.view().line(u"Tags")->setText(u"stars"_s);
    run.view().checkBox(u"Start this GDPS in maintenance mode")->setChecked(true);
    QVERIFY(checkAgain(run, Reply::json(500, "{}")));
    QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(run.view().line(u"GDPS Name")->text(), u"Neon"_s);
    QCOMPARE(run.view().description()->toPlainText(), u"Bright"_s);
    QCOMPARE(run.view().line(u"Tags")->text(), u"stars"_s);
    QVERIFY(run.view().checkBox(u"Start this GDPS in maintenance mode")->isChecked());
}

void FailedSessionTest::aLateProjectListRefillsTheTable()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.hold(callPath(Call::Instances));
    run.press(u"Refresh");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Instances)), 1);
    QVERIFY(checkAgain(run, Reply::json(500, "{}")));
    QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(run.view().table()->rowCount(), 0);

    run.server.release(callPath(Call::Instances));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.view().table()->rowCount(), 1);
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
}

void FailedSessionTest::theDesktopCanBeLinkedAgain()
{
    Run run;
    run.server.replies(callPath(Call::Session), {Reply::json(500, "{}"), Reply::json(200, "{}")});
    run.startLinked();
    QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 500."_s);
    run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    QCOMPARE(run.server.requests(callPath(Call::LinkStart)).constFirst().body, "device_id=desk-1");
    run.tick();
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.savedText(u"access_token"_s), u"token-2"_s);
    QCOMPARE(run.view().account().constFirst(), u"Signed in as Tarnwick user"_s);
}

QTEST_MAIN(FailedSessionTest)
#include "failed_session_test.moc"
