// A request counts as under way from the press until its reply has been handled, and each kind by itself.
#include "app/tarnwick_client_window.h"

#include "support/enabled_watch.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QTest>

#include <algorithm>
#include <memory>

using support::Call;
using support::Reply;

class RequestBusyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void controlsGreyOutAtOnceAndComeBackOnce_data();
    void controlsGreyOutAtOnceAndComeBackOnce();
    void controlsGreyOutEvenWhenTheRequestFailsAtOnce_data();
    void controlsGreyOutEvenWhenTheRequestFailsAtOnce();
    void aSecondPressSendsNothing_data();
    void aSecondPressSendsNothing();
    void aTickDuringAPollIsSkipped();
    void allKindsRunSideBySide();
    void repliesMayComeInAnyOrder();

private:
    /// Brings all five calls about and leaves them unanswered.
    bool holdAllKinds();

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<support::ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

/// The controls that a call disables while it is under way.
QList<QWidget*> busyControlsOf(Call call, const support::WindowView& view)
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

bool areBusyControlsEnabled(Call call, const support::WindowView& view)
{
    const QList<QWidget*> controls = busyControlsOf(call, view);
    return std::all_of(controls.cbegin(), controls.cend(), [](const QWidget* one) { return one->isEnabled(); });
}

bool areBusyControlsDisabled(Call call, const support::WindowView& view)
{
    const QList<QWidget*> controls = busyControlsOf(call, view);
    return std::none_of(controls.cbegin(), controls.cend(), [](const QWidget* one) { return one->isEnabled(); });
}

void addCallsWithControls()
{
    QTest::addColumn<Call>("call");
    for (const Call call : {Call::LinkStart, Call::Session, Call::Instances, Call::CreateInstance}) {
        QTest::newRow(support::callName(call)) << call;
    }
}

} // namespace

void RequestBusyTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<support::ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
}

void RequestBusyTest::cleanup()
{
    bench.reset();
    server.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void RequestBusyTest::controlsGreyOutAtOnceAndComeBackOnce_data()
{
    addCallsWithControls();
}

void RequestBusyTest::controlsGreyOutAtOnceAndComeBackOnce()
{
    QFETCH(Call, call);
    QVERIFY(bench->prepare(call));
    server->hold(callPath(call));
    bench->bringAbout(call);
    // The event loop has not run since: this is the press itself.
    QVERIFY(areBusyControlsDisabled(call, bench->view()));
    QTRY_COMPARE(server->heldCount(callPath(call)), 1);
    QVERIFY(areBusyControlsDisabled(call, bench->view()));

    int changes = 0;
    const support::EnabledWatch watch(busyControlsOf(call, bench->view()).constFirst(),
                                      [&changes](bool) { ++changes; });
    server->release(callPath(call));
    QTRY_VERIFY(areBusyControlsEnabled(call, bench->view()));
    QCOMPARE(changes, 1);
}

void RequestBusyTest::controlsGreyOutEvenWhenTheRequestFailsAtOnce_data()
{
    addCallsWithControls();
}

void RequestBusyTest::controlsGreyOutEvenWhenTheRequestFailsAtOnce()
{
    QFETCH(Call, call);
    // There is no host to connect to.
    const QString nowhere = u"https://"_s;
    if (call == Call::Session) {
        bench->home().writeState(support::storedState(nowhere, u"t"_s));
        const TarnwickClientWindow window;
        const support::WindowView view(window);
        QVERIFY(areBusyControlsDisabled(call, view));
        QCOMPARE(view.status(), u"Checking linked Tarnwick session..."_s);
        // The check was all that kept the button from being of use; signed out, it stays disabled.
        QTRY_VERIFY(!view.button(u"Refresh")->isEnabled());
        QVERIFY(view.status() != u"Checking linked Tarnwick session..."_s);
        return;
    }
    QVERIFY(bench->prepare(call));
    const qsizetype before = server->count();
    bench->view().line(u"Tarnwick URL")->setText(nowhere);
    int changes = 0;
    const support::EnabledWatch watch(busyControlsOf(call, bench->view()).constFirst(),
                                      [&changes](bool) { ++changes; });
    bench->bringAbout(call);
    QVERIFY(areBusyControlsDisabled(call, bench->view()));
    QCOMPARE(changes, 1);
    QTRY_VERIFY(areBusyControlsEnabled(call, bench->view()));
    QCOMPARE(changes, 2);
    QCOMPARE(server->count(), before);
}

void RequestBusyTest::aSecondPressSendsNothing_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("button");
    QTest::newRow("link start") << Call::LinkStart << u"Generate Link Code"_s;
    QTest::newRow("instances") << Call::Instances << u"Refresh"_s;
    QTest::newRow("create") << Call::CreateInstance << u"Create GDPS"_s;
}

void RequestBusyTest::aSecondPressSendsNothing()
{
    QFETCH(Call, call);
    QFETCH(QString, button);
    QVERIFY(bench->prepare(call));
    server->hold(callPath(call));
    server->forgetRequests();
    bench->bringAbout(call);
    QTRY_COMPARE(server->heldCount(callPath(call)), 1);
    // The button is disabled meanwhile; its signal is not.
    Q_EMIT bench->view().button(button)->clicked();
    Q_EMIT bench->view().button(button)->clicked();

    server->release(callPath(call));
    QTRY_VERIFY(areBusyControlsEnabled(call, bench->view()));
    // A third press is a new request, and only the second one of all.
    bench->view().line(u"GDPS Name")->setText(u"Again"_s);
    bench->bringAbout(call);
    QTRY_VERIFY(server->count(callPath(call)) > 1);
    QTRY_VERIFY(areBusyControlsEnabled(call, bench->view()));
    QCOMPARE(server->count(callPath(call)), 2);
}

void RequestBusyTest::aTickDuringAPollIsSkipped()
{
    QVERIFY(bench->prepare(Call::LinkPoll));
    server->hold(callPath(Call::LinkPoll));
    bench->tickPollTimer();
    bench->tickPollTimer();
    QTRY_COMPARE(server->heldCount(callPath(Call::LinkPoll)), 1);
    bench->tickPollTimer();
    server->reply(callPath(Call::LinkPoll), Reply::json(202, R"({"message":"First"})"));
    server->release(callPath(Call::LinkPoll));
    QTRY_COMPARE(bench->view().status(), u"First"_s);

    // The skipped ticks were not queued; the next one polls again.
    server->reply(callPath(Call::LinkPoll), Reply::json(202, R"({"message":"Second"})"));
    bench->tickPollTimer();
    QTRY_COMPARE(bench->view().status(), u"Second"_s);
    QCOMPARE(server->count(callPath(Call::LinkPoll)), 2);
}

bool RequestBusyTest::holdAllKinds()
{
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        if (call != Call::LinkStart) {
            server->hold(callPath(call));
        }
    }
    bench->startLinked();
    const support::WindowView view = bench->view();
    bench->bringAbout(Call::LinkStart);
    const bool hasCode = QTest::qWaitFor([&] { return view.line(u"Link code")->text() == u"TWPC-TEST01"_s; });
    server->hold(callPath(Call::LinkStart));
    bench->bringAbout(Call::LinkPoll);
    bench->bringAbout(Call::LinkStart);
    bench->bringAbout(Call::Instances);
    view.line(u"GDPS Name")->setText(u"Neon Burst"_s);
    bench->bringAbout(Call::CreateInstance);
    return hasCode && QTest::qWaitFor([&] {
               return std::all_of(calls.cbegin(), calls.cend(),
                                  [this](Call call) { return server->heldCount(callPath(call)) == 1; });
           });
}

void RequestBusyTest::allKindsRunSideBySide()
{
    QVERIFY(holdAllKinds());
    for (const Call call : {Call::LinkStart, Call::Session, Call::Instances, Call::CreateInstance}) {
        QVERIFY2(areBusyControlsDisabled(call, bench->view()), support::callName(call));
    }
    QVERIFY(bench->view().button(u"Open Public Pairing Page")->isEnabled());
    QVERIFY(bench->view().line(u"Tarnwick URL")->isEnabled());
}

void RequestBusyTest::repliesMayComeInAnyOrder()
{
    QVERIFY(holdAllKinds());
    QList<Call> busy{Call::CreateInstance, Call::LinkStart, Call::Instances, Call::Session};
    server->reply(callPath(Call::CreateInstance), Reply::json(500, R"({"message":"No room"})"));
    server->reply(callPath(Call::Instances), Reply::json(500, R"({"message":"No list"})"));
    const QStringList outcomes{u"No room"_s,
                               u"Code TWPC-TEST01 is ready. Approve it at "_s + QStringLiteral(TARNWICK_PUBLIC_HOST) +
                                   u"/link/pc before it expires."_s,
                               u"No list"_s, u"No list"_s};
    for (const QString& outcome : outcomes) {
        const Call call = busy.takeFirst();
        server->release(callPath(call));
        QTRY_VERIFY2(areBusyControlsEnabled(call, bench->view()), support::callName(call));
        QTRY_COMPARE(bench->view().status(), outcome);
        // Only its own controls have come back.
        for (const Call other : std::as_const(busy)) {
            QVERIFY2(areBusyControlsDisabled(other, bench->view()), support::callName(other));
        }
    }
    QCOMPARE(bench->view().account().constFirst(), u"Signed in as Ann"_s);
}

QTEST_MAIN(RequestBusyTest)
#include "request_busy_test.moc"
