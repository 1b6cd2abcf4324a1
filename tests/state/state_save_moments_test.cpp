// The state is saved on six occasions, and on no other. The file is removed before each of them, so it exists
// afterwards only if the state was saved.
#include "support/client_test.h"

#include <QFile>

using support::Call;
using support::ClientRun;
using support::Reply;

namespace {

bool momentHasSaved(const ClientRun& run)
{
    return QFile::exists(run.home().stateFile());
}

bool momentForget(const ClientRun& run)
{
    return QFile::remove(run.home().stateFile());
}

} // namespace

class StateSaveMomentsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closingSaves()
    {
        ClientRun run;
        QVERIFY(run.startSignedIn());
        QVERIFY(momentForget(run));
        QVERIFY(run.window().close());
        QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
    }

    void askingForACodeSavesBeforeTheRequestGoesOut()
    {
        ClientRun run;
        run.start();
        QVERIFY(momentForget(run));
        run.view().line(u"Tarnwick URL")->setText(run.server.origin() + u"//"_s);
        // The button is disabled right before the request is made.
        bool wasSaved = false;
        const support::EnabledWatch watch(run.view().button(u"Generate Link Code"),
                                          [&](bool) { wasSaved = momentHasSaved(run); });
        run.press(u"Generate Link Code");
        QVERIFY(wasSaved);
        QCOMPARE(run.home().readState(), support::storedState(run.server.origin()));
    }

    void askingAgainWhileACodeIsOnItsWaySavesNothing()
    {
        ClientRun run;
        run.start();
        run.server.hold(callPath(Call::LinkStart));
        run.press(u"Generate Link Code");
        QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkStart)), 1);
        QVERIFY(momentForget(run));
        run.forcePress(u"Generate Link Code");
        QVERIFY(!momentHasSaved(run));
    }

    void aNewCodeIsSavedAfterItIsShown()
    {
        ClientRun run;
        run.start();
        run.server.hold(callPath(Call::LinkStart));
        run.press(u"Generate Link Code");
        QTRY_COMPARE(run.server.heldCount(callPath(Call::LinkStart)), 1);
        QVERIFY(momentForget(run));
        QList<bool> wasSavedWhenShown;
        connect(run.view().line(u"Link code"), &QLineEdit::textChanged, this,
                [&] { wasSavedWhenShown.append(momentHasSaved(run)); });
        run.server.release(callPath(Call::LinkStart));
        QTRY_VERIFY(momentHasSaved(run));
        QCOMPARE(wasSavedWhenShown, QList<bool>{false});
    }

    void anApprovalSavesTheTokenBeforeTheSessionIsChecked()
    {
        ClientRun run;
        QVERIFY(run.prepare(Call::LinkPoll));
        QVERIFY(momentForget(run));
        run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"  t-2\n"})"));
        // The check starts with updateControls(), which enables the button for the first time.
        QStringList tokens;
        const support::EnabledWatch watch(run.view().button(u"Refresh"),
                                          [&](bool) { tokens.append(run.savedText(u"access_token"_s)); });
        run.server.hold(callPath(Call::Session));
        run.tick();
        QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
        QCOMPARE(tokens, QStringList{u"t-2"_s});
    }

    void aFailedSessionCheckSavesWithoutTheToken()
    {
        ClientRun run;
        run.server.reply(callPath(Call::Session), Reply::empty(401));
        run.startLinked();
        QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
        QTRY_COMPARE(run.view().status(), u"Tarnwick returned HTTP 401."_s);
        QCOMPARE(run.home().readState(), support::storedState(run.server.origin()));
    }

    void unlinkingSavesWithoutTheToken()
    {
        ClientRun run;
        QVERIFY(run.startSignedIn());
        run.press(u"Unlink");
        QCOMPARE(run.home().readState(), support::storedState(run.server.origin()));
    }

    void nothingElseSaves_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("status");
        const QString failure = u"Tarnwick returned HTTP 500."_s;
        QTest::newRow("failed code request") << Call::LinkStart << Reply::empty(500) << failure;
        QTest::newRow("pending poll") << Call::LinkPoll << Reply::json(202, R"({"message":"Wait"})") << u"Wait"_s;
        QTest::newRow("failed poll") << Call::LinkPoll << Reply::empty(500) << failure;
        QTest::newRow("expired poll") << Call::LinkPoll << Reply::empty(410) << u"Tarnwick returned HTTP 410."_s;
        QTest::newRow("project list") << Call::Instances << Reply::json(200, "{}")
                                      << u"Loaded 0 Tarnwick project(s)."_s;
        QTest::newRow("failed project list") << Call::Instances << Reply::empty(500) << failure;
        QTest::newRow("creation") << Call::CreateInstance << Reply::json(201, "{}")
                                  << u"Loaded 1 Tarnwick project(s)."_s;
        QTest::newRow("failed creation") << Call::CreateInstance << Reply::empty(500) << failure;
    }

    void nothingElseSaves()
    {
        QFETCH(Call, call);
        QFETCH(Reply, reply);
        QFETCH(QString, status);
        ClientRun run;
        QVERIFY(run.prepare(call));
        run.server.reply(callPath(call), reply);
        run.bringAbout(call);
        QVERIFY(momentForget(run));
        run.view().line(u"Tarnwick URL")->setText(run.server.origin() + u'/');
        run.press(u"Open Public Pairing Page");
        QTRY_COMPARE(run.view().status(), status);
        QVERIFY(!momentHasSaved(run));
    }
};

TARNWICK_TEST(StateSaveMomentsTest)
#include "state_save_moments_test.moc"
