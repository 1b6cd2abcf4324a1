#include "support/client_test.h"

#include <QProperty>
#include <QTimer>

using support::Call;
using support::callPath;
using support::Reply;

/// How waiting for the approval ends: with a token or with a failure.
class LinkOutcomeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anApprovalLinksTheDesktop()
    {
        Run run;
        run.start();
        QVERIFY(run.pollWith(Reply::json(201, R"({"access_token":" \tnew-token\n "})")));
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(run.home().stateObject(), (QJsonObject{{u"origin"_s, run.server.origin()},
                                                        {u"device_id"_s, u"desk-1"_s},
                                                        {u"access_token"_s, u"new-token"_s}}));
        for (const Call call : {Call::Session, Call::Instances}) {
            QCOMPARE(run.server.count(callPath(call)), 1);
            QCOMPARE(run.server.requests(callPath(call)).constFirst().header("Authorization"), "Bearer new-token");
        }
    }

    void anApprovalStopsPollingThenSavesThenSpeaksAndThenTheControlsFollow()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        QStringList steps;
        const support::EnabledWatch button(run.view().button(u"Refresh"), [&](bool enabled) {
            steps.append(enabled ? u"linked"_s : u"unlinked"_s);
            QVERIFY(!run.pollTimer()->isActive());
            QCOMPARE(run.savedText(u"access_token"_s), u"new-token"_s);
            QCOMPARE(run.view().status(), u"Welcome"_s);
        });
        const auto timer = run.pollTimer()->bindableActive().addNotifier([&] {
            steps.append(u"stopped"_s);
            QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
            QVERIFY(run.view().status() != u"Welcome"_s);
        });
        run.server.hold(callPath(Call::Session));
        run.server.reply(callPath(Call::LinkPoll),
                         Reply::json(200, R"({"access_token":"new-token","message":"Welcome"})"));
        run.tick();
        QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
        QCOMPARE(steps, (QStringList{u"stopped"_s, u"linked"_s}));
    }

    void anApprovalKeepsTheCodeAndThePairingPage()
    {
        Run run;
        run.start();
        QVERIFY(run.pollWith(Reply::json(200, R"({"access_token":"new-token"})")));
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(), QUrl(u"https://pair.example/1"_s));
        // The code is still set; only the stopped timer prevents further polls.
        run.tick();
        QTRY_COMPARE(run.server.count(callPath(Call::LinkPoll)), 2);
    }

    void anApprovalShowsItsMessage_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("shown");
        QTest::newRow("text") << QByteArray(R"(" Welcome back")") << u" Welcome back"_s;
        QTest::newRow("empty text") << QByteArray(R"("")") << QString();
        QTest::newRow("number") << QByteArray("1") << u"Tarnwick desktop client linked."_s;
    }

    void anApprovalShowsItsMessage()
    {
        QFETCH(QByteArray, message);
        QFETCH(QString, shown);
        Run run;
        run.start();
        run.server.hold(callPath(Call::Session));
        QVERIFY(run.pollWith(Reply::json(200, R"({"access_token":"t","message":)" + message + '}')));
        QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
        QCOMPARE(run.view().status(), shown);
    }

    void anApprovalReplacesTheFormerToken()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.pollWith(Reply::json(300, R"({"access_token":"new-token","error":"ignored"})")));
        QTRY_COMPARE(run.server.count(callPath(Call::Session)), 2);
        QCOMPARE(run.savedText(u"access_token"_s), u"new-token"_s);
        QCOMPARE(run.server.requests(callPath(Call::Session)).constLast().header("Authorization"), "Bearer new-token");
    }

    void anApprovalDuringASessionCheckSendsNoSecondOne()
    {
        Run run;
        QVERIFY(run.holdCall(Call::Session));
        QVERIFY(run.pollWith(Reply::json(200, R"({"access_token":"new-token"})")));
        QTRY_COMPARE(run.view().status(), u"Tarnwick desktop client linked."_s);
        QVERIFY(run.markerComesBack());
        run.server.release(callPath(Call::Session));
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(run.server.count(callPath(Call::Session)), 1);
        QCOMPARE(run.savedText(u"access_token"_s), u"new-token"_s);
    }

    void anApprovalWithoutATokenLeavesTheDesktopUnlinked_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("absent") << QByteArray("{}");
        QTest::newRow("blanks") << QByteArray(R"({"access_token":" \n "})");
        QTest::newRow("number") << QByteArray(R"({"access_token":42})");
    }

    void anApprovalWithoutATokenLeavesTheDesktopUnlinked()
    {
        QFETCH(QByteArray, body);
        Run run;
        run.start();
        QVERIFY(run.pollWith(Reply::json(200, body)));
        QTRY_COMPARE(run.view().status(), u"Tarnwick desktop client linked."_s);
        QVERIFY(!run.pollTimer()->isActive());
        QVERIFY(!run.view().button(u"Unlink")->isEnabled());
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::Session)), 0);
    }

    void anApprovalWithoutATokenForgetsTheFormerOne()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.pollWith(Reply::json(200, R"({"message":"Done"})")));
        QTRY_COMPARE(run.view().status(), u"Done"_s);
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
        QVERIFY(!run.view().button(u"Unlink")->isEnabled());
        // The account and the list stay visible: only a failed check and "Unlink" clear them.
        QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
        QCOMPARE(run.view().table()->rowCount(), 1);
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::Session)), 1);
    }

    void aFailureStopsPollingAndForgetsACodeThatIsGone_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<bool>("forgotten");
        for (const int status : {400, 403, 404, 405, 409, 410, 411, 500}) {
            QTest::addRow("%d", status) << Reply::json(status, R"({"message":"No","access_token":"no"})") << u"No"_s
                                        << (status == 404 || status == 410);
        }
        QTest::newRow("connection closed") << Reply::closeWithoutAnswer() << u"Connection closed"_s << false;
    }

    void aFailureStopsPollingAndForgetsACodeThatIsGone()
    {
        QFETCH(Reply, reply);
        QFETCH(QString, shown);
        QFETCH(bool, forgotten);
        Run run;
        run.start();
        QVERIFY(run.pollWith(reply));
        QTRY_COMPARE(run.view().status(), shown);
        QVERIFY(!run.pollTimer()->isActive());
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
        QCOMPARE(run.view().line(u"Link code")->text(), forgotten ? QString() : u"TWPC-1"_s);

        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(),
                 QUrl(forgotten ? run.server.origin() + u"/link/pc"_s : u"https://pair.example/1"_s));
        // Only the stopped timer prevents further polls for a code that is kept.
        run.server.hold(callPath(Call::LinkPoll));
        run.tick();
        QVERIFY(run.markerComesBack());
        QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkPoll)), forgotten ? 0 : 1);
    }

    void aFailureStopsThenSpeaksThenForgets()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        QStringList steps;
        const auto note = [&](const QString& step) {
            steps.append(step + u", "_s + run.view().status());
        };
        const auto timer = run.pollTimer()->bindableActive().addNotifier([&] { note(u"stopped"_s); });
        connect(run.view().line(u"Link code"), &QLineEdit::textChanged, this, [&] { note(u"forgotten"_s); });
        const QString before = run.view().status();
        run.server.reply(callPath(Call::LinkPoll), Reply::json(410, R"({"message":"Too late"})"));
        run.tick();
        QTRY_COMPARE(run.view().status(), u"Too late"_s);
        QCOMPARE(steps, (QStringList{u"stopped, "_s + before, u"forgotten, Too late"_s}));
    }

    /// The reply does not say which code is gone, so the one that is shown is cleared.
    void theEndOfAnOlderCodeForgetsTheNewerOne()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        QVERIFY(run.holdCall(Call::LinkPoll));
        QVERIFY(run.showLinkCode(u"TWPC-2"_s, u"https://pair.example/2"_s));
        run.server.reply(callPath(Call::LinkPoll), Reply::json(410, R"({"message":"TWPC-1 has expired."})"));
        run.server.release(callPath(Call::LinkPoll));
        QTRY_COMPARE(run.view().status(), u"TWPC-1 has expired."_s);
        QVERIFY(!run.pollTimer()->isActive());
        QCOMPARE(run.view().line(u"Link code")->text(), QString());
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(), QUrl(run.server.origin() + u"/link/pc"_s));
    }

    void aFailureKeepsTheLink()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.pollWith(Reply::json(401, R"({"message":"No"})")));
        QTRY_COMPARE(run.view().status(), u"No"_s);
        QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
        QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
        QVERIFY(run.view().button(u"Unlink")->isEnabled());
        QCOMPARE(run.view().table()->rowCount(), 1);
    }

private:
    using Run = support::ClientRun;
};

TARNWICK_TEST(LinkOutcomeTest)
#include "link_outcome_test.moc"
