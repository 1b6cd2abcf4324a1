#include "fault_run.h"

#include "support/creation_form.h"
#include "support/wait_for.h"

#include <QNetworkReply>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <chrono>

using support::Call;
using support::callPath;
using support::Reply;
using Qt::StringLiterals::operator""_s;

namespace faults {

namespace {

QNetworkReply* unfinishedReply(const QWidget& window)
{
    const auto replies = window.findChildren<QNetworkReply*>();
    const auto found = std::find_if(replies.begin(), replies.end(), [](auto* reply) { return !reply->isFinished(); });
    return found == replies.end() ? nullptr : *found;
}

} // namespace

bool FaultRun::prepareWhole(Call call)
{
    m_call = call;
    if (call == Call::Session) {
        return prepare(call); // the call creates the window
    }
    // Several cores for the form, every field of which is filled in.
    server.reply(callPath(Call::Session), Reply::json(200, R"({"available_cores":[{"key":"core-a","label":"Core A"},)"
                                                           R"({"key":"core-b","label":"Core B"}]})"));
    if (!prepare(call)) {
        return false;
    }
    support::fillCreationForm(view());
    // Ticks are sent by the test only.
    pollTimer()->setInterval(std::chrono::hours(1));
    pollTimer()->blockSignals(call == Call::LinkStart);
    return true;
}

bool FaultRun::carryOut()
{
    server.forgetRequests();
    // For a session check, the call creates the window.
    const WindowSight before = m_call == Call::Session ? WindowSight() : sight();
    bringAbout(m_call);
    m_before = m_call == Call::Session ? sight() : before;
    m_wasUnderWay = sight().value(u"under way"_s) == QLatin1StringView(callName(m_call));
    const QPointer<QNetworkReply> reply = unfinishedReply(window());
    // The reply is deleted after it has been handled, and by then the next request has been sent.
    return reply && support::waitFor([&reply] { return reply.isNull(); });
}

bool FaultRun::play(Call call, const Reply& reply)
{
    return prepareWhole(call) && playAgain(reply);
}

bool FaultRun::playAgain(const Reply& reply)
{
    server.reply(callPath(m_call), reply);
    if (m_call != Call::Instances) {
        server.hold(callPath(Call::Instances));
    }
    return carryOut();
}

bool FaultRun::playAt(Call call, const QString& origin)
{
    m_leadsElsewhere = true;
    if (call == Call::Session) {
        setOrigin(origin);
    }
    if (!prepareWhole(call)) {
        return false;
    }
    if (call != Call::Session) {
        view().line(u"Tarnwick URL")->setText(origin);
    }
    return carryOut();
}

WindowSight FaultRun::sight()
{
    WindowSight sight = sightOf(window());
    sight.insert(u"token"_s, savedText(u"access_token"_s));
    return sight;
}

/// Qt repeats a GET by itself when its connection ends without an answer; all of these count as one.
QList<QByteArray> FaultRun::arrivals(const Outcome& outcome) const
{
    QList<QByteArray> paths;
    const auto requests = server.requests();
    for (const support::RecordedRequest& request : requests) {
        const bool isRepeatedGet = request.method == "GET" && !paths.isEmpty() && paths.last() == request.path();
        if (outcome.status != 0 || !isRepeatedGet) {
            paths.append(request.path());
        }
    }
    return paths;
}

QList<QByteArray> FaultRun::expectedArrivals(const Outcome& outcome) const
{
    if (m_leadsElsewhere) {
        return {};
    }
    const bool fetches = m_call == Call::Session || m_call == Call::CreateInstance;
    return fetches && outcome.failure.isEmpty() ? QList<QByteArray>{callPath(m_call), callPath(Call::Instances)}
                                                : QList<QByteArray>{callPath(m_call)};
}

void FaultRun::check(const Outcome& outcome)
{
    QVERIFY(m_wasUnderWay);
    QCOMPARE(wordsOf(sight()), wordsOf(sightAfter(m_before, m_call, outcome)));
    const QList<QByteArray> expected = expectedArrivals(outcome);
    QVERIFY(support::waitFor([&] { return arrivals(outcome).size() >= expected.size(); }));
    QCOMPARE(arrivals(outcome), expected);
}

void FaultRun::checkEnd(const Outcome& outcome)
{
    check(outcome);
    QVERIFY(worksOn());
}

bool FaultRun::asksAnother()
{
    support::ScriptedServer another;
    another.reply(callPath(Call::LinkStart), Reply::json(500, R"({"message":"Another service"})"));
    view().line(u"Tarnwick URL")->setText(another.origin());
    press(u"Generate Link Code");
    const bool isAnswered = support::waitFor([this] { return view().status() == u"Another service"_s; });
    view().line(u"Tarnwick URL")->setText(server.origin());
    return isAnswered;
}

/// Links the client again: if this works, four of the five calls work.
bool FaultRun::worksOn()
{
    server.release(callPath(Call::Instances));
    if (!support::waitFor([this] { return window().findChild<QNetworkReply*>() == nullptr; }) || !asksAnother()) {
        return false;
    }
    server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
    server.reply(callPath(Call::Session), Reply::json(200, R"({"user":{"display_name":"Bea"}})"));
    server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{},{},{}]})"));
    pollTimer()->blockSignals(true); // the only tick is sent below
    if (!showLinkCode(u"TWPC-TEST02"_s)) {
        return false;
    }
    pollTimer()->blockSignals(false);
    tick();
    return support::waitFor([this] { return view().status() == u"Loaded 3 Tarnwick project(s)."_s; }) &&
           view().account().constFirst() == u"Signed in as Bea"_s;
}

} // namespace faults
