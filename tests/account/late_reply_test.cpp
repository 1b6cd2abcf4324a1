#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// A reply that arrives after "Unlink" is handled like any other: no request is cancelled.
class LateReplyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void aLateCodeIsShownAndPolled();
    void aLateApprovalLinksTheDesktopAgain();
    void aLatePollFailureIsShown();
    void aLateSessionFillsTheCardAndFetchesNothing();
    void aLateSessionFailureIsShown();
    void aLateProjectListRefillsTheTable();
    void aLateProjectListFailureIsShown();
    void aLateCreationIsAnnouncedAndFetchesNothing();
    void aLateCreationFailureIsShown();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    /// Unlinks while the call is in flight; the answer is the route's at the time of the release.
    static bool unlinkDuring(Run& run, Call call, QStringView button)
    {
        run.server.hold(callPath(call));
        run.press(button);
        return unlinkNow(run, call);
    }
    static bool unlinkNow(Run& run, Call call)
    {
        if (!QTest::qWaitFor([&run, call] { return run.server.heldCount(callPath(call)) == 1; })) {
            return false;
        }
        run.forcePress(u"Unlink");
        return run.view().status() == u"Tarnwick desktop client unlinked."_s;
    }
    static bool unlinkDuringPoll(Run& run)
    {
        run.server.hold(callPath(Call::LinkPoll));
        if (!run.showLinkCode(u"TWPC-1"_s)) {
            return false;
        }
        run.tick();
        return unlinkNow(run, Call::LinkPoll);
    }
    static void answer(Run& run, Call call, const Reply& reply)
    {
        run.server.reply(callPath(call), reply);
        run.server.release(callPath(call));
    }
};

void LateReplyTest::aLateCodeIsShownAndPolled()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(unlinkDuring(run, Call::LinkStart, u"Generate Link Code"));
    run.server.release(callPath(Call::LinkStart));
    QTRY_COMPARE(run.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    QVERIFY(run.pollTimer()->isActive());
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
}

void LateReplyTest::aLateApprovalLinksTheDesktopAgain()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(unlinkDuringPoll(run));
    answer(run, Call::LinkPoll, Reply::json(200, R"({"access_token":"token-2"})"));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.savedText(u"access_token"_s), u"token-2"_s);
    QVERIFY(run.view().button(u"Unlink")->isEnabled());
    QCOMPARE(run.view().line(u"Link code")->text(), QString());
    QVERIFY(!run.pollTimer()->isActive());
}

void LateReplyTest::aLatePollFailureIsShown()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(unlinkDuringPoll(run));
    answer(run, Call::LinkPoll, Reply::json(500, R"({"message":"Later"})"));
    QTRY_COMPARE(run.view().status(), u"Later"_s);
    QVERIFY(!run.pollTimer()->isActive());
}

void LateReplyTest::aLateSessionFillsTheCardAndFetchesNothing()
{
    Run run;
    run.server.hold(callPath(Call::Session));
    run.startLinked();
    QVERIFY(unlinkNow(run, Call::Session));
    run.server.release(callPath(Call::Session));
    QTRY_COMPARE(run.view().status(), u"Tarnwick desktop session ready."_s);
    QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
    QCOMPARE(run.view().combo(u"Core")->currentText(), u"Core A"_s);
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Instances)), 0);
}

void LateReplyTest::aLateSessionFailureIsShown()
{
    Run run;
    run.server.hold(callPath(Call::Session));
    run.startLinked();
    QVERIFY(unlinkNow(run, Call::Session));
    answer(run, Call::Session, Reply::json(401, R"({"message":"Gone"})"));
    QTRY_COMPARE(run.view().status(), u"Gone"_s);
    QCOMPARE(run.view().account().constFirst(), u"Not linked yet"_s);
}

void LateReplyTest::aLateProjectListRefillsTheTable()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(unlinkDuring(run, Call::Instances, u"Refresh"));
    QCOMPARE(run.view().table()->rowCount(), 0);
    run.server.release(callPath(Call::Instances));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.view().row(0), (QStringList{u"Neon"_s, u"neon"_s, u"Core A"_s, u"online"_s}));
    QCOMPARE(run.view().account().constFirst(), u"Not linked yet"_s);
}

void LateReplyTest::aLateProjectListFailureIsShown()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(unlinkDuring(run, Call::Instances, u"Refresh"));
    answer(run, Call::Instances, Reply::json(500, R"({"message":"Later"})"));
    QTRY_COMPARE(run.view().status(), u"Later"_s);
    QCOMPARE(run.view().table()->rowCount(), 0);
}

void LateReplyTest::aLateCreationIsAnnouncedAndFetchesNothing()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    QVERIFY(unlinkDuring(run, Call::CreateInstance, u"Create GDPS"));
    run.view().line(u"GDPS Name")->setText(u"Typed since"_s);
    run.server.release(callPath(Call::CreateInstance));
    QTRY_COMPARE(run.view().status(), u"Neon Burst is ready."_s);
    QCOMPARE(run.view().line(u"GDPS Name")->text(), QString());
    QVERIFY(!run.view().line(u"GDPS Name")->isEnabled());
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::Instances)), 1);
}

void LateReplyTest::aLateCreationFailureIsShown()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    QVERIFY(unlinkDuring(run, Call::CreateInstance, u"Create GDPS"));
    answer(run, Call::CreateInstance, Reply::json(422, R"({"message":"Taken"})"));
    QTRY_COMPARE(run.view().status(), u"Taken"_s);
}

QTEST_MAIN(LateReplyTest)
#include "late_reply_test.moc"
