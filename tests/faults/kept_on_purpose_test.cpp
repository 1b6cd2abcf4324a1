// Habits that look like faults and are none: each is what this client promises. Whoever means to mend one of them
// changes the promise first.
#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/message_catcher.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

using support::Call;
using support::callPath;
using support::OpenedUrls;
using support::Reply;

class KeptOnPurposeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theStateFileIsRewrittenInPlaceOnPurpose();
    void plusAndPercentAreSentAsTheyAreOnPurpose();
    void noAddressIsFilteredOutOnPurpose_data();
    void noAddressIsFilteredOutOnPurpose();
    void plainHttpCarriesTheTokenOnPurpose();
    void aTransferThatMovesHasNoDeadlineOnPurpose();
    void anyFailedSessionCheckSignsOutOnPurpose_data();
    void anyFailedSessionCheckSignsOutOnPurpose();
    void aReplyAfterUnlinkingIsHandledOnPurpose();
    void anUnansweredGetMayBeSentAgainOnPurpose_data();
    void anUnansweredGetMayBeSentAgainOnPurpose();
    void anAnsweredGetIsSentOnce();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    std::unique_ptr<support::MessageCatcher> messages;
};

void KeptOnPurposeTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void KeptOnPurposeTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

/// Not written beside it and renamed: a file that is a link, or watched, stays what it is. The price is that a crash
/// in the midst of a save costs the link.
void KeptOnPurposeTest::theStateFileIsRewrittenInPlaceOnPurpose()
{
    Run run;
    run.home().writeState(support::storedState(run.server.origin()));
    QFile kept(run.home().stateFile());
    QVERIFY(kept.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    run.start();
    run.view().line(u"Tarnwick URL")->setText(u"https://elsewhere.example"_s);
    run.window().close();
    QVERIFY(kept.readAll().contains("https://elsewhere.example"));
    QCOMPARE(QDir(run.home().stateFolder()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

/// A service that reads forms takes the plus for a blank and the escape for the letter. Both have always gone out
/// like that.
void KeptOnPurposeTest::plusAndPercentAreSentAsTheyAreOnPurpose()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"a+b %41"_s);
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.server.count(callPath(Call::CreateInstance)), 1);
    QVERIFY(run.server.requests(callPath(Call::CreateInstance)).constFirst().body.startsWith("display_name=a+b%20A&"));
}

void KeptOnPurposeTest::noAddressIsFilteredOutOnPurpose_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("a local file") << u"file:///etc/hosts"_s;
    QTest::newRow("another program's scheme") << u"odd:payload"_s;
    QTest::newRow("plain http") << u"http://m.example/"_s;
}

/// Which pages there are is the service's affair, and what opens them is the desktop's.
void KeptOnPurposeTest::noAddressIsFilteredOutOnPurpose()
{
    QFETCH(QString, address);
    const OpenedUrls odd({u"odd"_s});
    Run run;
    run.server.reply(callPath(Call::Instances),
                     Reply::json(200, R"({"instances":[{"manage_url":")" + address.toUtf8() + R"("}]})"));
    QVERIFY(run.startSignedIn());
    run.press(u"Open Selected Project");
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, address));
    run.press(u"Open Public Pairing Page");
    QCOMPARE(odd.urls() + run.opened.urls(), QList<QUrl>({QUrl(address), QUrl(address)}));
}

/// A service on the same machine or in a private network may do without certificates.
void KeptOnPurposeTest::plainHttpCarriesTheTokenOnPurpose()
{
    Run run;
    QVERIFY(run.server.origin().startsWith("http://"_L1));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.server.requests(callPath(Call::Session)).constFirst().header("Authorization"), "Bearer token-1");
}

/// Only standing still ends a transfer. Built with a limit that this answer exceeds several times as a whole.
void KeptOnPurposeTest::aTransferThatMovesHasNoDeadlineOnPurpose()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.reply(callPath(Call::Instances),
                     Reply::json(200, R"({"instances":[{},{}])" + QByteArray(20, ' ') + '}').dripBody(1, 50));
    run.press(u"Refresh");
    QTRY_COMPARE_WITH_TIMEOUT(run.view().status(), u"Loaded 2 Tarnwick project(s)."_s, 30000);
}

void KeptOnPurposeTest::anyFailedSessionCheckSignsOutOnPurpose_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::newRow("a wrong token") << Reply::json(401, "{}");
    QTest::newRow("a service under repair") << Reply::json(503, "{}");
    QTest::newRow("a broken connection") << Reply::closeWithoutAnswer();
}

/// Not only a refusal: a desktop that cannot tell whose it is belongs to nobody.
void KeptOnPurposeTest::anyFailedSessionCheckSignsOutOnPurpose()
{
    QFETCH(Reply, reply);
    Run run;
    run.server.reply(callPath(Call::Session), reply);
    run.startLinked();
    QVERIFY(run.view().button(u"Refresh")->isEnabled());
    QTRY_VERIFY(!run.view().button(u"Refresh")->isEnabled());
    QCOMPARE(run.view().account().constFirst(), u"Not linked yet"_s);
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
}

/// No request is cancelled: what the service did is shown, even to a desktop that has been unlinked meanwhile.
void KeptOnPurposeTest::aReplyAfterUnlinkingIsHandledOnPurpose()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.hold(callPath(Call::Instances));
    run.press(u"Refresh");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Instances)), 1);
    run.press(u"Unlink");
    QCOMPARE(run.view().table()->rowCount(), 0);
    run.server.release(callPath(Call::Instances));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.view().table()->rowCount(), 1);
    QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
}

void KeptOnPurposeTest::anUnansweredGetMayBeSentAgainOnPurpose_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::newRow("closed") << Reply::closeWithoutAnswer();
    QTest::newRow("reset") << Reply::resetWithoutAnswer();
    QTest::newRow("half a status line") << Reply::raw("HTTP/1.1 20");
}

/// By Qt, which asks up to four times in all. A GET changes nothing.
void KeptOnPurposeTest::anUnansweredGetMayBeSentAgainOnPurpose()
{
    QFETCH(Reply, reply);
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.reply(callPath(Call::Instances), reply);
    run.server.forgetRequests();
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Connection closed"_s);
    QVERIFY(run.markerComesBack());
    QVERIFY(run.server.count(callPath(Call::Instances)) >= 1);
    QVERIFY(run.server.count(callPath(Call::Instances)) <= 4);
}

void KeptOnPurposeTest::anAnsweredGetIsSentOnce()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.reply(callPath(Call::Instances), Reply::json(500, "{}").thenClose());
    run.server.forgetRequests();
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 500."_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Instances)), 1);
}

QTEST_MAIN(KeptOnPurposeTest)
#include "kept_on_purpose_test.moc"
