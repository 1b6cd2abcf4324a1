#include "support/client_test.h"

#include <QFile>
#include <QProperty>
#include <QTimer>

using support::Call;
using support::callPath;
using support::Reply;

/// From pressing "Generate Link Code" until the code is in the window.
class LinkRequestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCodeIsShownThenSavedThenPolledThenAnnounced()
    {
        Run run;
        run.start();
        QStringList steps;
        connect(run.view().line(u"Link code"), &QLineEdit::textChanged, this, [&](const QString& code) {
            steps.append(code);
            QVERIFY(QFile::remove(run.home().stateFile()));
            QCOMPARE(run.view().status(), u"Requesting a new Tarnwick PC link code..."_s);
        });
        const auto timer = run.pollTimer()->bindableActive().addNotifier([&] {
            steps.append(u"timer"_s);
            QCOMPARE(run.savedText(u"device_id"_s), u"desk-1"_s);
            QCOMPARE(run.view().status(), u"Requesting a new Tarnwick PC link code..."_s);
        });
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        QCOMPARE(steps, (QStringList{u"TWPC-1"_s, u"timer"_s}));
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    }

    void aCodeIsTakenAsItIs()
    {
        Run run;
        run.start();
        run.server.reply(callPath(Call::LinkStart), Reply::json(200, R"({"code":" A%1 ","message":"Not this one"})"));
        run.press(u"Generate Link Code");
        QTRY_COMPARE(run.view().status(), readyText(u" A%1 "_s));
        QCOMPARE(run.view().line(u"Link code")->text(), u" A%1 "_s);
        run.tick();
        QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
        QCOMPARE(run.server.requests(callPath(Call::LinkPoll)).constFirst().query(),
                 "code=%20A%251%20&device_id=desk-1");
    }

    void theTimerRestsUntilACodeStartsItAt1500()
    {
        Run run;
        run.start();
        const QTimer* timer = run.pollTimer();
        QVERIFY(timer != nullptr);
        QCOMPARE(timer->interval(), 2000);
        QVERIFY(!timer->isActive());
        QVERIFY(run.markerComesBack()); // a failed request
        QCOMPARE(timer->interval(), 2000);
        QVERIFY(!timer->isActive());

        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        QCOMPARE(timer->interval(), 1500);
        QVERIFY(timer->isActive());
        QVERIFY(!timer->isSingleShot());
    }

    void aReplyWithoutACodeIsAnnouncedAndNotPolled_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("no code") << QByteArray("{}");
        QTest::newRow("empty code") << QByteArray(R"({"code":""})");
        QTest::newRow("number") << QByteArray(R"({"code":42})");
    }

    void aReplyWithoutACodeIsAnnouncedAndNotPolled()
    {
        QFETCH(QByteArray, body);
        Run run;
        run.start();
        run.server.reply(callPath(Call::LinkStart), Reply::json(200, body));
        run.press(u"Generate Link Code");
        QTRY_COMPARE(run.view().status(), readyText({}));
        QCOMPARE(run.view().line(u"Link code")->text(), QString());
        QVERIFY(!run.pollTimer()->isActive());
    }

    void aReplyWithoutACodeLeavesARunningTimerRunning()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
        run.server.reply(callPath(Call::LinkStart), Reply::json(200, "{}"));
        run.press(u"Generate Link Code");
        QTRY_COMPARE(run.view().status(), readyText({}));
        QCOMPARE(run.view().line(u"Link code")->text(), QString());
        QVERIFY(run.pollTimer()->isActive());

        run.tick();
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::LinkPoll)), 0);
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(), QUrl(run.server.origin() + u"/link/pc"_s));
    }

    void aNewCodeReplacesTheOldOneAndKeepsTheLink()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
        run.pollTimer()->setInterval(60000);
        QVERIFY(run.showLinkCode(u"TWPC-2"_s, u"https://pair.example/2"_s));
        QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-2"_s);
        QCOMPARE(run.pollTimer()->interval(), 1500);

        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/2"_s));
        run.tick();
        QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
        QCOMPARE(run.server.requests(callPath(Call::LinkPoll)).constFirst().query(), "code=TWPC-2&device_id=desk-1");
        QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
        QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
    }

    void aFailureLeavesTheFormerCodeAndTheLinkAsTheyWere_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("shown");
        QTest::newRow("maintenance") << Reply::json(503, R"({"message":"Maintenance","code":"TWPC-9"})")
                                     << u"Maintenance"_s;
        QTest::newRow("unauthorized") << Reply::json(401, "{}") << u"Tarnwick returned HTTP 401."_s;
        QTest::newRow("gone") << Reply::json(410, "{}") << u"Tarnwick returned HTTP 410."_s;
        // Qt has no error text for a body that cannot be read again.
        QTest::newRow("closed without an answer") << Reply::closeWithoutAnswer() << u"Unknown error"_s;
    }

    void aFailureLeavesTheFormerCodeAndTheLinkAsTheyWere()
    {
        QFETCH(Reply, reply);
        QFETCH(QString, shown);
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
        run.pollTimer()->setInterval(60000);

        run.server.reply(callPath(Call::LinkStart), reply);
        run.press(u"Generate Link Code");
        QTRY_COMPARE(run.view().status(), shown);
        QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
        QVERIFY(run.pollTimer()->isActive());
        QCOMPARE(run.pollTimer()->interval(), 60000);
        QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
        QVERIFY(run.view().button(u"Unlink")->isEnabled());
        QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);

        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/1"_s));
        run.tick();
        QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 1);
        QCOMPARE(run.server.requests(callPath(Call::LinkPoll)).constFirst().query(), "code=TWPC-1&device_id=desk-1");
    }

private:
    using Run = support::ClientRun;

    static QString readyText(const QString& code)
    {
        return u"Code "_s + code + u" is ready. Approve it at "_s + support::publicHost() +
               u"/link/pc before it expires."_s;
    }
};

TARNWICK_TEST(LinkRequestTest)
#include "link_request_test.moc"
