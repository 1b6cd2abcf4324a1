#include "fault_run.h"

#include "support/creation_form.h"
#include "support/wait_for.h"

#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <utility>

using support::Call;
using support::Reply;
using Qt::StringLiterals::operator""_s;

namespace faults {

namespace {

/// The control that is disabled while the call is under way; empty when there is none at that time.
QString busyButton(Call call)
{
    switch (call) {
    case Call::LinkStart:
        return u"Generate Link Code"_s;
    case Call::Session:
        return u"Unlink"_s;
    case Call::Instances:
        return u"Refresh"_s;
    case Call::CreateInstance:
        return u"Create GDPS"_s;
    case Call::LinkPoll:
        break;
    }
    return {};
}

} // namespace

FaultRun::FaultRun(support::ServiceBench::WindowMaker makeWindow) : m_makeWindow(std::move(makeWindow)) {}

FaultRun::FaultRun(support::ServiceBench::WindowMaker makeWindow, const support::TlsIdentity& identity)
    : server(identity),
      m_makeWindow(std::move(makeWindow))
{
}

void FaultRun::begin(const QString& origin)
{
    m_bench = std::make_unique<support::ServiceBench>(server, m_makeWindow, origin);
    m_before = sightBeforeStart(origin, u"token-1"_s);
}

bool FaultRun::prepare(Call call)
{
    m_call = call;
    if (call == Call::Session) {
        return m_bench->prepare(call); // the window is made by the call
    }
    // A choice of cores for the form, which is filled in whole.
    server.reply(callPath(Call::Session), Reply::json(200, R"({"available_cores":[{"key":"core-a","label":"Core A"},)"
                                                           R"({"key":"core-b","label":"Core B"}]})"));
    if (!m_bench->prepare(call)) {
        return false;
    }
    support::fillCreationForm(m_bench->view());
    auto* timer = m_bench->window().findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    if (call == Call::LinkPoll) {
        // The test makes the ticks.
        timer->setInterval(std::chrono::hours(1));
    } else if (call == Call::LinkStart) {
        // On a slow machine a poll of the new code would come before the look at what its arrival led to.
        timer->blockSignals(true);
    }
    m_before = sightOf(*m_bench);
    return true;
}

bool FaultRun::carryOut(Call call)
{
    server.forgetRequests();
    m_bench->bringAbout(call);
    const QString busy = busyButton(call);
    m_wasBusy = busy.isEmpty() || !m_bench->view().button(busy)->isEnabled();
    return settles();
}

bool FaultRun::settles()
{
    // A reply is an object of the window until it has been handled, and what it leads to begins before it goes.
    while (const auto* reply = m_bench->window().findChild<QNetworkReply*>()) {
        QSignalSpy gone(reply, &QObject::destroyed);
        if (!gone.wait(20000)) {
            return false;
        }
    }
    return true;
}

bool FaultRun::play(Call call, const Reply& reply)
{
    begin(server.origin());
    if (!prepare(call)) {
        return false;
    }
    server.reply(callPath(call), reply);
    return carryOut(call);
}

bool FaultRun::playAgain(const Reply& reply)
{
    server.reply(callPath(m_call), reply);
    if (m_call != Call::Session) {
        m_before = sightOf(*m_bench);
        return carryOut(m_call);
    }
    const QByteArray path = callPath(Call::Session);
    server.hold(path);
    if (!linksAnew(Reply::json(200, R"({"access_token":"token-2"})").thenClose()) ||
        !support::waitFor([this, &path] { return server.heldCount(path) == 1; })) {
        return false;
    }
    m_before = sightOf(*m_bench);
    m_wasBusy = !m_bench->view().button(busyButton(Call::Session))->isEnabled();
    server.release(path);
    return settles();
}

bool FaultRun::playAt(Call call, const QString& origin)
{
    begin(call == Call::Session ? origin : server.origin());
    if (!prepare(call)) {
        return false;
    }
    if (call != Call::Session) {
        m_bench->view().line(u"Tarnwick URL")->setText(origin);
        m_before = sightOf(*m_bench);
    }
    return carryOut(call);
}

QStringList FaultRun::seen()
{
    return sightOf(*m_bench).words();
}

QStringList FaultRun::expected(const FaultOutcome& outcome) const
{
    return sightAfter(m_call, outcome, m_before).words();
}

QList<QByteArray> FaultRun::arrivals(const FaultOutcome& outcome) const
{
    const bool isUnanswered = outcome.status == 0;
    QList<QByteArray> paths;
    const auto requests = server.requests();
    for (const support::RecordedRequest& request : requests) {
        const bool isRepeatedGet = request.method == "GET" && !paths.isEmpty() && paths.last() == request.path();
        if (!isUnanswered || !isRepeatedGet) {
            paths.append(request.path());
        }
    }
    return paths;
}

QList<QByteArray> FaultRun::expectedArrivals(const FaultOutcome& outcome) const
{
    return QList<QByteArray>{callPath(m_call)} + followUpsOf(m_call, outcome);
}

bool FaultRun::asksAnother()
{
    support::ScriptedServer another;
    another.reply(callPath(Call::LinkStart), Reply::json(500, R"({"message":"Another service"})"));
    const support::WindowView view = m_bench->view();
    view.line(u"Tarnwick URL")->setText(another.origin());
    view.button(u"Generate Link Code")->click();
    const bool isAnswered = support::waitFor([&view] { return view.status() == u"Another service"_s; });
    view.line(u"Tarnwick URL")->setText(server.origin());
    return isAnswered;
}

/// Up to the session check that follows the approval.
bool FaultRun::linksAnew(const Reply& approval)
{
    server.reply(callPath(Call::LinkStart), Reply::json(200, R"({"code":"TWPC-TEST02"})"));
    server.reply(callPath(Call::LinkPoll), approval);
    const support::WindowView view = m_bench->view();
    auto* timer = m_bench->window().findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    timer->blockSignals(true); // the one tick is made here
    view.button(u"Generate Link Code")->click();
    if (!support::waitFor([&view] { return view.line(u"Link code")->text() == u"TWPC-TEST02"_s; })) {
        return false;
    }
    timer->blockSignals(false);
    server.forgetRequests();
    m_bench->tickPollTimer();
    return true;
}

bool FaultRun::stillAnswers()
{
    if (!asksAnother()) {
        return false;
    }
    server.reply(callPath(Call::Session), Reply::json(200, R"({"user":{"display_name":"Bea"}})"));
    server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{},{},{}]})"));
    server.reply(callPath(Call::CreateInstance), Reply::json(201, "{}"));

    const support::WindowView view = m_bench->view();
    if (!linksAnew(Reply::json(200, R"({"access_token":"token-2"})"))) {
        return false;
    }
    if (!support::waitFor([&view] { return view.status() == u"Loaded 3 Tarnwick project(s)."_s; }) ||
        view.account().constFirst() != u"Signed in as Bea"_s) {
        return false;
    }
    if (m_call != Call::CreateInstance) {
        return true;
    }
    view.line(u"GDPS Name")->setText(u"Second"_s);
    view.button(u"Create GDPS")->click();
    return settles() && view.line(u"GDPS Name")->text().isEmpty() &&
           server.requests(callPath(Call::CreateInstance)).constLast().body.startsWith("display_name=Second&");
}

void FaultRun::checkEnd(const FaultOutcome& outcome, const QList<QByteArray>& wantedArrivals)
{
    QVERIFY(wasBusy());
    QCOMPARE(seen(), expected(outcome));
    QCOMPARE(arrivals(outcome), wantedArrivals);
    QVERIFY(stillAnswers());
    QCOMPARE(messages(), QStringList());
}

} // namespace faults
