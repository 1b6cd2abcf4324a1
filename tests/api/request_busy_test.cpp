// A request is in flight from the press until its reply has been handled, and each kind independently.
#include "support/client_test.h"

#include <QNetworkReply>

#include <algorithm>
#include <memory>

using support::Call;
using support::Reply;

namespace {

/// The controls that a call disables while it is in flight.
QList<QWidget*> busyControls(Call call, const support::WindowView& view)
{
    switch (call) {
    case Call::LinkStart:
        return {view.button(u"Generate Link Code")};
    case Call::LinkPoll:
        return {};
    case Call::Session:
        return {view.button(u"Unlink")};
    case Call::Instances:
        return {view.button(u"Refresh")};
    case Call::CreateInstance:
        return view.creationForm();
    }
    return {};
}

bool areEnabled(const QList<QWidget*>& controls)
{
    return std::all_of(controls.begin(), controls.end(), [](const QWidget* one) { return one->isEnabled(); });
}

bool areDisabled(const QList<QWidget*>& controls)
{
    return std::none_of(controls.begin(), controls.end(), [](const QWidget* one) { return one->isEnabled(); });
}

} // namespace

class RequestBusyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { run = std::make_unique<support::ClientRun>(); }

    void cleanup() { run.reset(); }

    void controlsAreDisabledBeforeTheRequestIsMadeAndEnabledOnce_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("origin");
        for (const Call call : {Call::LinkStart, Call::Instances, Call::CreateInstance}) {
            QTest::newRow(support::callName(call)) << call << QString();
            QTest::addRow("%s that fails at once", support::callName(call)) << call << u"https://"_s;
        }
    }

    void controlsAreDisabledBeforeTheRequestIsMadeAndEnabledOnce()
    {
        QFETCH(Call, call);
        QFETCH(QString, origin);
        QVERIFY(run->prepare(call));
        run->view().line(u"Tarnwick URL")->setText(origin.isEmpty() ? run->server.origin() : origin);
        const QList<QWidget*> controls = busyControls(call, run->view());
        QVERIFY(areEnabled(controls));
        QStringList changes;
        QStringList statuses;
        const support::EnabledWatch watch(controls.constFirst(), [&](bool isEnabled) {
            statuses.append(run->view().status());
            const bool isSent = run->window().findChild<QNetworkReply*>() != nullptr;
            changes.append((isEnabled ? u"enabled"_s : u"disabled"_s) + (isSent ? u", sent"_s : u", not sent"_s));
        });
        run->bringAbout(call);
        // No event loop has run since, so this is the effect of the press itself. The status text came first.
        QVERIFY(areDisabled(controls));
        QCOMPARE(statuses, QStringList{run->view().status()});
        QTRY_VERIFY(areEnabled(controls));
        QCOMPARE(changes, (QStringList{u"disabled, not sent"_s, u"enabled, sent"_s}));
    }

    void aSecondPressSendsNothing_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("button");
        QTest::newRow("link start") << Call::LinkStart << u"Generate Link Code"_s;
        QTest::newRow("instances") << Call::Instances << u"Refresh"_s;
        QTest::newRow("create") << Call::CreateInstance << u"Create GDPS"_s;
    }

    void aSecondPressSendsNothing()
    {
        QFETCH(Call, call);
        QFETCH(QString, button);
        QVERIFY(run->prepare(call));
        run->server.hold(callPath(call));
        run->server.forgetRequests();
        run->bringAbout(call);
        const QString status = run->view().status();
        QTRY_COMPARE(run->server.heldCount(callPath(call)), 1);
        // The button is disabled, but its signal still works. The status text is shown again.
        run->view().label(u"StatusText"_s)->clear();
        Q_EMIT run->view().button(button)->clicked();
        QCOMPARE(run->view().status(), status);

        run->server.release(callPath(call));
        QTRY_VERIFY(areEnabled(busyControls(call, run->view())));
        // The third press sends a request, which is only the second one.
        run->view().line(u"GDPS Name")->setText(u"Again"_s);
        run->bringAbout(call);
        QTRY_VERIFY(run->server.count(callPath(call)) > 1);
        QTRY_VERIFY(areEnabled(busyControls(call, run->view())));
        QCOMPARE(run->server.count(callPath(call)), 2);
    }

    void aTickDuringAPollIsSkipped()
    {
        QVERIFY(run->prepare(Call::LinkPoll));
        run->server.hold(callPath(Call::LinkPoll));
        run->tick();
        run->tick();
        QTRY_COMPARE(run->server.heldCount(callPath(Call::LinkPoll)), 1);
        run->tick();
        run->server.reply(callPath(Call::LinkPoll), Reply::json(202, R"({"message":"First"})"));
        run->server.release(callPath(Call::LinkPoll));
        QTRY_COMPARE(run->view().status(), u"First"_s);

        // The skipped ticks were not queued; the next one polls again.
        run->server.reply(callPath(Call::LinkPoll), Reply::json(202, R"({"message":"Second"})"));
        run->tick();
        QTRY_COMPARE(run->view().status(), u"Second"_s);
        QCOMPARE(run->server.count(callPath(Call::LinkPoll)), 2);
    }

    void allKindsRunSideBySideAndEndInAnyOrder()
    {
        QVERIFY(holdAllKinds());
        const support::WindowView view = run->view();
        for (const Call call : support::allCalls()) {
            QVERIFY2(areDisabled(busyControls(call, view)), support::callName(call));
        }
        QVERIFY(view.button(u"Open Public Pairing Page")->isEnabled());
        QVERIFY(view.line(u"Tarnwick URL")->isEnabled());

        QList<Call> busy{Call::CreateInstance, Call::LinkStart, Call::Instances, Call::Session};
        run->server.reply(callPath(Call::CreateInstance), Reply::json(500, R"({"message":"No room"})"));
        run->server.reply(callPath(Call::Instances), Reply::json(500, R"({"message":"No list"})"));
        const QStringList outcomes{u"No room"_s,
                                   u"Code TWPC-TEST01 is ready. Approve it at " TARNWICK_PUBLIC_HOST
                                   "/link/pc before it expires."_s,
                                   u"No list"_s, u"No list"_s};
        for (const QString& outcome : outcomes) {
            const Call call = busy.takeFirst();
            run->server.release(callPath(call));
            QTRY_VERIFY2(areEnabled(busyControls(call, view)), support::callName(call));
            QTRY_COMPARE(view.status(), outcome);
            // Only this kind's controls are enabled again.
            for (const Call other : std::as_const(busy)) {
                QVERIFY2(areDisabled(busyControls(other, view)), support::callName(other));
            }
        }
        QCOMPARE(view.account().constFirst(), u"Signed in as Ann"_s);
    }

private:
    /// Makes all five calls and leaves them without a reply.
    bool holdAllKinds()
    {
        const auto calls = support::allCalls();
        run->server.hold(callPath(Call::Session));
        run->startLinked();
        if (!run->showLinkCode(u"TWPC-TEST01"_s)) {
            return false;
        }
        for (const Call call : calls) {
            run->server.hold(callPath(call));
        }
        run->view().line(u"GDPS Name")->setText(u"Neon Burst"_s);
        run->tick();
        for (const QStringView button : {u"Generate Link Code", u"Refresh", u"Create GDPS"}) {
            run->press(button);
        }
        return support::waitFor([&] {
            return std::all_of(calls.begin(), calls.end(),
                               [this](Call call) { return run->server.heldCount(callPath(call)) == 1; });
        });
    }

    std::unique_ptr<support::ClientRun> run;
};

TARNWICK_TEST(RequestBusyTest)
#include "request_busy_test.moc"
