#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/enabled_watch.h"

#include <QFile>
#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// How waiting for the approval ends: with a token, or with a failure.
class LinkOutcomeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void anApprovalStoresTheTokenAndChecksTheSession();
    void anApprovalIsCompleteBeforeTheSessionIsChecked();
    void anApprovalKeepsTheCodeAndThePairingPage();
    void anApprovalShowsItsMessage_data();
    void anApprovalShowsItsMessage();
    void anyStatusOfSuccessApproves_data();
    void anyStatusOfSuccessApproves();
    void anApprovalReplacesTheFormerToken();
    void anApprovalDuringASessionCheckSendsNoSecondOne();
    void anApprovalWithoutATokenLeavesTheDesktopUnlinked_data();
    void anApprovalWithoutATokenLeavesTheDesktopUnlinked();
    void anApprovalWithoutATokenForgetsTheFormerOne();
    void aFailureStopsPolling_data();
    void aFailureStopsPolling();
    void aCutConnectionStopsPollingAndKeepsTheCode();
    void aFailureKeepsTheLink();
    void aNewCodeResumesPollingAfterAFailure();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    /// Shows the code TWPC-1 and has the next poll answered so.
    static bool pollWith(Run& run, const Reply& reply)
    {
        if (!run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s)) {
            return false;
        }
        run.server.reply(callPath(Call::LinkPoll), reply);
        run.tick();
        return true;
    }
};

void LinkOutcomeTest::anApprovalStoresTheTokenAndChecksTheSession()
{
    Run run;
    run.start();
    run.server.hold(callPath(Call::Session));
    QVERIFY(pollWith(run, Reply::json(200, R"({"access_token":" \tnew-token\n "})")));
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
    QCOMPARE(run.view().status(), u"Tarnwick desktop client linked."_s);
    QVERIFY(!run.pollTimer()->isActive());
    QCOMPARE(run.savedText(u"access_token"_s), u"new-token"_s);
    QCOMPARE(run.savedText(u"device_id"_s), u"desk-1"_s);

    const support::RecordedRequest request = run.server.requests(callPath(Call::Session)).constFirst();
    QCOMPARE(request.method, "GET");
    QCOMPARE(request.target, "/api/pc/me");
    QCOMPARE(request.header("Authorization"), "Bearer new-token");
    run.server.release(callPath(Call::Session));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.server.requests(callPath(Call::Instances)).constFirst().header("Authorization"), "Bearer new-token");
}

void LinkOutcomeTest::anApprovalIsCompleteBeforeTheSessionIsChecked()
{
    Run run;
    run.start();
    // The token makes the button usable, the session check that it brings about makes it unusable again.
    QList<bool> states;
    const support::EnabledWatch watch(run.view().button(u"Unlink"), [&run, &states](bool enabled) {
        states.append(enabled);
        if (states.size() == 2) {
            QCOMPARE(run.savedText(u"access_token"_s), u"new-token"_s);
            QVERIFY(!run.pollTimer()->isActive());
            QCOMPARE(run.view().status(), u"Welcome"_s);
        }
    });
    run.server.hold(callPath(Call::Session));
    QVERIFY(pollWith(run, Reply::json(200, R"({"access_token":"new-token","message":"Welcome"})")));
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
    QCOMPARE(states, (QList<bool>{true, false}));
}

void LinkOutcomeTest::anApprovalKeepsTheCodeAndThePairingPage()
{
    Run run;
    run.start();
    QVERIFY(pollWith(run, Reply::json(200, R"({"access_token":"new-token"})")));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/1"_s));
    // Only the stopped timer keeps the code from being polled again.
    run.tick();
    QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 2);
    QCOMPARE(run.server.requests(callPath(Call::LinkPoll)).constLast().query(), "code=TWPC-1&device_id=desk-1");
}

void LinkOutcomeTest::anApprovalShowsItsMessage_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QString>("shown");
    QTest::newRow("text") << QByteArray(R"("Welcome back")") << u"Welcome back"_s;
    QTest::newRow("empty text") << QByteArray(R"("")") << QString();
    QTest::newRow("number") << QByteArray("1") << u"Tarnwick desktop client linked."_s;
    QTest::newRow("null") << QByteArray("null") << u"Tarnwick desktop client linked."_s;
}

void LinkOutcomeTest::anApprovalShowsItsMessage()
{
    QFETCH(QByteArray, message);
    QFETCH(QString, shown);
    Run run;
    run.start();
    run.server.hold(callPath(Call::Session));
    QVERIFY(pollWith(run, Reply::json(200, R"({"access_token":"t","message":)" + message + '}')));
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
    QCOMPARE(run.view().status(), shown);
}

void LinkOutcomeTest::anyStatusOfSuccessApproves_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("created") << 201;
    QTest::newRow("non-authoritative") << 203;
    QTest::newRow("multiple choices") << 300;
    QTest::newRow("error text in the body") << 200;
}

void LinkOutcomeTest::anyStatusOfSuccessApproves()
{
    QFETCH(int, status);
    Run run;
    run.start();
    QVERIFY(pollWith(run, Reply::json(status, R"({"access_token":"new-token","error":"ignored"})")));
    QTRY_COMPARE(run.savedText(u"access_token"_s), u"new-token"_s);
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
}

void LinkOutcomeTest::anApprovalReplacesTheFormerToken()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(pollWith(run, Reply::json(200, R"({"access_token":"new-token"})")));
    QTRY_COMPARE(run.server.count(callPath(Call::Session)), 2);
    QCOMPARE(run.savedText(u"access_token"_s), u"new-token"_s);
    QCOMPARE(run.server.requests(callPath(Call::Session)).constFirst().header("Authorization"), "Bearer token-1");
    QCOMPARE(run.server.requests(callPath(Call::Session)).constLast().header("Authorization"), "Bearer new-token");
}

void LinkOutcomeTest::anApprovalDuringASessionCheckSendsNoSecondOne()
{
    Run run;
    run.server.hold(callPath(Call::Session));
    run.startLinked();
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
    QVERIFY(pollWith(run, Reply::json(200, R"({"access_token":"new-token"})")));
    QTRY_COMPARE(run.view().status(), u"Tarnwick desktop client linked."_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Session)), 1);

    run.server.release(callPath(Call::Session));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.server.count(callPath(Call::Session)), 1);
    QCOMPARE(run.savedText(u"access_token"_s), u"new-token"_s);
}

void LinkOutcomeTest::anApprovalWithoutATokenLeavesTheDesktopUnlinked_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("absent") << 200 << QByteArray("{}");
    QTest::newRow("blanks") << 200 << QByteArray(R"({"access_token":" \n "})");
    QTest::newRow("number") << 200 << QByteArray(R"({"access_token":42})");
    QTest::newRow("no JSON object") << 200 << QByteArray(R"("new-token")");
    QTest::newRow("no content") << 204 << QByteArray();
}

void LinkOutcomeTest::anApprovalWithoutATokenLeavesTheDesktopUnlinked()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    Run run;
    run.start();
    QVERIFY(pollWith(run, body.isEmpty() ? Reply::empty(status) : Reply::json(status, body)));
    QTRY_COMPARE(run.view().status(), u"Tarnwick desktop client linked."_s);
    QVERIFY(!run.pollTimer()->isActive());
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Session)), 0);
}

void LinkOutcomeTest::anApprovalWithoutATokenForgetsTheFormerOne()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(pollWith(run, Reply::json(200, R"({"message":"Done"})")));
    QTRY_COMPARE(run.view().status(), u"Done"_s);
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    QCOMPARE(run.savedText(u"device_id"_s), u"desk-1"_s);
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
    QVERIFY(!run.view().button(u"Refresh")->isEnabled());
    QVERIFY(!run.view().button(u"Create GDPS")->isEnabled());
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Session)), 1);
}

void LinkOutcomeTest::aFailureStopsPolling_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("forgotten");
    const QByteArray none = "{}";
    QTest::newRow("unknown code") << 404 << none << u"Tarnwick returned HTTP 404."_s << true;
    QTest::newRow("expired code") << 410 << QByteArray(R"({"message":"This code has expired."})")
                                  << u"This code has expired."_s << true;
    QTest::newRow("server error") << 500 << none << u"Tarnwick returned HTTP 500."_s << false;
    QTest::newRow("rejected") << 403 << QByteArray(R"({"error":"Denied","access_token":"no"})") << u"Denied"_s << false;
    QTest::newRow("bad request") << 400 << none << u"Tarnwick returned HTTP 400."_s << false;
    QTest::newRow("conflict") << 409 << none << u"Tarnwick returned HTTP 409."_s << false;
    QTest::newRow("too many") << 429 << none << u"Tarnwick returned HTTP 429."_s << false;
}

void LinkOutcomeTest::aFailureStopsPolling()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, shown);
    QFETCH(bool, forgotten);
    Run run;
    run.start();
    QVERIFY(pollWith(run, Reply::json(status, body)));
    QVERIFY(QFile::remove(run.home().stateFile()));
    QTRY_COMPARE(run.view().status(), shown);
    QVERIFY(!run.pollTimer()->isActive());
    QVERIFY(!QFile::exists(run.home().stateFile()));
    QCOMPARE(run.view().line(u"Link code")->text(), forgotten ? QString() : u"TWPC-1"_s);

    run.press(u"Open Public Pairing Page");
    const QUrl pairingPage(forgotten ? run.server.origin() + u"/link/pc"_s : u"https://pair.example/1"_s);
    QCOMPARE(run.opened.last(), pairingPage);
    run.tick();
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::LinkPoll)), forgotten ? 1 : 2);
}

void LinkOutcomeTest::aCutConnectionStopsPollingAndKeepsTheCode()
{
    Run run;
    run.start();
    QVERIFY(pollWith(run, Reply::closeWithoutAnswer()));
    QTRY_VERIFY(!run.pollTimer()->isActive());
    QCOMPARE(run.view().status(), u"Connection closed"_s);
    QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
}

void LinkOutcomeTest::aFailureKeepsTheLink()
{
    Run run;
    QVERIFY(run.startSignedIn());
    const QStringList account = run.view().account();
    QVERIFY(pollWith(run, Reply::json(401, R"({"message":"No"})")));
    QTRY_COMPARE(run.view().status(), u"No"_s);
    QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
    QCOMPARE(run.view().account(), account);
    QVERIFY(run.view().button(u"Unlink")->isEnabled());
    QCOMPARE(run.view().table()->rowCount(), 1);
}

void LinkOutcomeTest::aNewCodeResumesPollingAfterAFailure()
{
    Run run;
    run.start();
    QVERIFY(pollWith(run, Reply::json(500, "{}")));
    QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 500."_s);
    QVERIFY(run.showLinkCode(u"TWPC-2"_s));
    QVERIFY(run.pollTimer()->isActive());
    QCOMPARE(run.pollTimer()->interval(), 1500);
    run.tick();
    QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 2);
    QCOMPARE(run.server.requests(callPath(Call::LinkPoll)).constLast().query(), "code=TWPC-2&device_id=desk-1");
}

QTEST_MAIN(LinkOutcomeTest)
#include "link_outcome_test.moc"
