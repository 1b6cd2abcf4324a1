// The state is saved on six occasions, and on no other. window_end_test tests the saving at the end, link_request_test,
// link_outcome_test, failed_session_test and unlink_test that of a code, a token and its loss. Here the file is removed
// before each step, so it exists afterwards only if the state was saved.
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
        QTest::newRow("session check") << Call::Session << Reply::json(200, "{}") << u"Loaded 1 Tarnwick project(s)."_s;
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
