#include "support/client_test.h"

#include <QRegularExpression>

using support::Call;
using support::callPath;
using support::Reply;

/// What "Open Public Pairing Page" opens.
class PairingPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beforeAnyCodeThePageOfTheBaseUrlOpens()
    {
        Run run;
        run.start();
        run.view().line(u"Tarnwick URL")->setText(u" hosting.example/a/ "_s);
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.urls(), QList<QUrl>{QUrl(u"https://hosting.example/a/link/pc"_s)});
    }

    void theApprovalPageOfTheCodeOpensAsItIs_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QByteArray>("opened");
        const auto asItIs = [](const char* name, const char* address) {
            QTest::newRow(name) << QString::fromLatin1(address) << QByteArray(address);
        };
        asItIs("query and fragment", "https://pair.example/approve?code=TWPC-1#now");
        asItIs("plain http", "http://pair.example/");
        asItIs("local file", "file:///etc/hosts");
        asItIs("any scheme", "odd:payload");
        asItIs("relative", "/link/pc");
        QTest::newRow("parsed tolerantly")
            << u"https://pair.example/a b?c=%zz"_s << QByteArray("https://pair.example/a%20b?c=%25zz");
        QTest::newRow("a blank behind it") << u"https://pair.example/1 "_s << QByteArray("https://pair.example/1%20");
        QTest::newRow("nothing but blanks") << u"  "_s << QByteArray("%20%20");
    }

    void theApprovalPageOfTheCodeOpensAsItIs()
    {
        QFETCH(QString, address);
        QFETCH(QByteArray, opened);
        const support::OpenedUrls more({u"odd"_s, QString()});
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s, address));
        run.view().line(u"Tarnwick URL")->setText(u"https://elsewhere.example"_s);
        run.press(u"Open Public Pairing Page");
        const QList<QUrl> urls = more.urls() + run.opened.urls();
        QCOMPARE(urls.size(), 1);
        QCOMPARE(urls.constFirst().toEncoded(), opened);
    }

    void anApprovalPageThatIsNoTextCountsAsNone_data()
    {
        QTest::addColumn<QByteArray>("value");
        for (const char* value : {"null", "5", "['https://t.example']", "''"}) {
            QTest::newRow(value) << support::json(value);
        }
    }

    void anApprovalPageThatIsNoTextCountsAsNone()
    {
        QFETCH(QByteArray, value);
        Run run;
        run.start();
        run.server.reply(callPath(Call::LinkStart),
                         Reply::json(200, support::json("{'code':'TWPC-1','approve_url':") + value + '}'));
        run.press(u"Generate Link Code");
        QTRY_COMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.urls(), QList<QUrl>{QUrl(run.server.origin() + u"/link/pc"_s)});
    }

    void aPageThatNothingOpensChangesNothing()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"nobody-opens-this:1"_s));
        const QString status = run.view().status();
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(u"openUrl.*nobody-opens-this:1"_s)); // printed by QDesktopServices
        run.press(u"Open Public Pairing Page");
        QVERIFY(run.opened.isEmpty());
        QCOMPARE(run.view().status(), status);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(), 2); // the code and the marker
    }

private:
    using Run = support::ClientRun;
};

TARNWICK_TEST(PairingPageTest)
#include "pairing_page_test.moc"
