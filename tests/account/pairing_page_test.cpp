#include "api/service_host.h"
#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/message_catcher.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// What "Open Public Pairing Page" opens.
class PairingPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void beforeAnyCodeThePageOfTheBaseUrlOpens_data();
    void beforeAnyCodeThePageOfTheBaseUrlOpens();
    void theApprovalPageOfTheCodeComesFirst();
    void theApprovalPageIsParsedTolerantly();
    void noAddressIsFilteredOut_data();
    void noAddressIsFilteredOut();
    void anApprovalPageThatIsNoTextCountsAsNone_data();
    void anApprovalPageThatIsNoTextCountsAsNone();
    void unlinkingForgetsTheApprovalPage();
    void openingSaysNothingAndSendsNothing();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
};

void PairingPageTest::beforeAnyCodeThePageOfTheBaseUrlOpens_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("opened");
    QTest::newRow("plain http") << u"http://127.0.0.1:9"_s << u"http://127.0.0.1:9/link/pc"_s;
    QTest::newRow("no scheme and a slash") << u" hosting.example/ "_s << u"https://hosting.example/link/pc"_s;
    QTest::newRow("with a path") << u"https://hosting.example/a"_s << u"https://hosting.example/a/link/pc"_s;
    QTest::newRow("empty") << QString() << defaultBaseUrl() + u"/link/pc"_s;
}

void PairingPageTest::beforeAnyCodeThePageOfTheBaseUrlOpens()
{
    QFETCH(QString, typed);
    QFETCH(QString, opened);
    Run run;
    run.start();
    run.view().line(u"Tarnwick URL")->setText(typed);
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.urls(), QList<QUrl>{QUrl(opened)});
}

void PairingPageTest::theApprovalPageOfTheCodeComesFirst()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/approve?code=TWPC-1#now"_s));
    run.view().line(u"Tarnwick URL")->setText(u"https://elsewhere.example"_s);
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.urls(), QList<QUrl>{QUrl(u"https://pair.example/approve?code=TWPC-1#now"_s)});
}

void PairingPageTest::theApprovalPageIsParsedTolerantly()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/a b?c=%zz"_s));
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.count(), 1);
    QCOMPARE(run.opened.last().toEncoded(), "https://pair.example/a%20b?c=%25zz");
}

void PairingPageTest::noAddressIsFilteredOut_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("another host") << u"https://elsewhere.example/link"_s;
    QTest::newRow("plain http") << u"http://pair.example/"_s;
    QTest::newRow("local file") << u"file:///etc/hosts"_s;
    QTest::newRow("any scheme") << u"odd:payload"_s;
    QTest::newRow("relative") << u"/link/pc"_s;
}

void PairingPageTest::noAddressIsFilteredOut()
{
    QFETCH(QString, address);
    const support::OpenedUrls everything({u"odd"_s, QString()});
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, address));
    run.press(u"Open Public Pairing Page");
    QCOMPARE(everything.urls() + run.opened.urls(), QList<QUrl>{QUrl(address)});
}

void PairingPageTest::anApprovalPageThatIsNoTextCountsAsNone_data()
{
    QTest::addColumn<QByteArray>("value");
    for (const char* value : {"null", "5", "true", R"(["https://t.example"])", R"({"url":"https://t.example"})"}) {
        QTest::newRow(value) << QByteArray(value);
    }
}

void PairingPageTest::anApprovalPageThatIsNoTextCountsAsNone()
{
    QFETCH(QByteArray, value);
    Run run;
    run.start();
    run.server.reply(callPath(Call::LinkStart), Reply::json(200, R"({"code":"TWPC-1","approve_url":)" + value + '}'));
    run.press(u"Generate Link Code");
    QTRY_COMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.urls(), QList<QUrl>{QUrl(run.server.origin() + u"/link/pc"_s)});
}

void PairingPageTest::unlinkingForgetsTheApprovalPage()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
    run.press(u"Unlink");
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.last(), QUrl(run.server.origin() + u"/link/pc"_s));
}

void PairingPageTest::openingSaysNothingAndSendsNothing()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"nobody-opens-this:1"_s));
    const QString status = run.view().status();
    {
        // The desktop has something to say about a scheme that nobody handles; the client has not.
        const support::MessageCatcher desktop;
        run.press(u"Open Public Pairing Page");
    }
    QVERIFY(run.opened.isEmpty());
    QCOMPARE(run.view().status(), status);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(), 2);
    QCOMPARE(run.server.count(callPath(Call::LinkStart)), 2);
}

QTEST_MAIN(PairingPageTest)
#include "pairing_page_test.moc"
