#include "support/client_test.h"

#include <QTimer>

using support::Call;
using support::callPath;
using support::Reply;

/// A reply that arrives after "Unlink" is handled like any other: no request is aborted.
class LateReplyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aLateCodeIsShownAndPolled()
    {
        Run run;
        QVERIFY(unlinkDuring(run, Call::LinkStart));
        run.server.release(callPath(Call::LinkStart));
        QTRY_COMPARE(run.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
        QVERIFY(run.pollTimer()->isActive());
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    }

    void aLateApprovalLinksTheDesktopAgain()
    {
        Run run;
        QVERIFY(unlinkDuring(run, Call::LinkPoll));
        run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
        run.server.release(callPath(Call::LinkPoll));
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(run.savedText(u"access_token"_s), u"token-2"_s);
        QVERIFY(run.view().button(u"Unlink")->isEnabled());
        QCOMPARE(run.view().line(u"Link code")->text(), QString());
        QVERIFY(!run.pollTimer()->isActive());
    }

    void aLateSessionFillsTheCardAndFetchesNothing()
    {
        Run run;
        QVERIFY(unlinkDuring(run, Call::Session));
        run.server.release(callPath(Call::Session));
        QTRY_COMPARE(run.view().status(), u"Tarnwick desktop session ready."_s);
        QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
        QCOMPARE(run.view().combo(u"Core")->currentText(), u"Core A"_s);
        QVERIFY(!run.view().button(u"Unlink")->isEnabled());
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::Instances)), 0);
    }

    void aLateProjectListRefillsTheTable()
    {
        Run run;
        QVERIFY(unlinkDuring(run, Call::Instances));
        QCOMPARE(run.view().table()->rowCount(), 0);
        run.server.release(callPath(Call::Instances));
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(run.view().row(0), (QStringList{u"Neon"_s, u"neon"_s, u"Core A"_s, u"online"_s}));
        QCOMPARE(run.view().account().constFirst(), u"Not linked yet"_s);
        QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
    }

    void aLateCreationIsAnnouncedAndFetchesNothing()
    {
        Run run;
        QVERIFY(unlinkDuring(run, Call::CreateInstance));
        run.view().line(u"GDPS Name")->setText(u"Typed since"_s);
        run.server.release(callPath(Call::CreateInstance));
        QTRY_COMPARE(run.view().status(), u"Neon Burst is ready."_s);
        QCOMPARE(run.view().line(u"GDPS Name")->text(), QString());
        QVERIFY(!run.view().line(u"GDPS Name")->isEnabled());
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::Instances)), 1);
    }

    void aLateFailureIsShown_data()
    {
        QTest::addColumn<Call>("call");
        for (const Call call : support::allCalls()) {
            QTest::newRow(support::callName(call)) << call;
        }
    }

    void aLateFailureIsShown()
    {
        QFETCH(Call, call);
        Run run;
        QVERIFY(unlinkDuring(run, call));
        // Until the reply arrives, no second request of this kind is possible.
        QVERIFY(support::WindowInside(run.window()).isBusy(int(call)));
        run.server.reply(callPath(call), Reply::json(500, R"({"message":"Later"})"));
        run.server.release(callPath(call));
        QTRY_COMPARE(run.view().status(), u"Later"_s);
        QCOMPARE(run.view().account().constFirst(), u"Not linked yet"_s);
        QCOMPARE(run.view().table()->rowCount(), 0);
    }

private:
    using Run = support::ClientRun;

    /// Starts a linked desktop and unlinks it during the call. The reply is the one set at the time of the release.
    static bool unlinkDuring(Run& run, Call call)
    {
        const bool isReady =
            call == Call::Session || (run.prepare(Call::CreateInstance) && run.showLinkCode(u"TWPC-1"_s));
        if (!isReady) {
            return false;
        }
        run.server.reply(callPath(Call::LinkStart), Reply::json(200, R"({"code":"TWPC-TEST01"})"));
        if (!run.holdCall(call)) {
            return false;
        }
        run.forcePress(u"Unlink");
        return run.view().status() == u"Tarnwick desktop client unlinked."_s;
    }
};

TARNWICK_TEST(LateReplyTest)
#include "late_reply_test.moc"
