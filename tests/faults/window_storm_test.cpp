// Windows that go while requests of all five kinds are under way: nothing of them runs afterwards.
#include "app/tarnwick_client_window.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"
#include "support/wait_for.h"
#include "support/window_view.h"

#include <QFile>
#include <QNetworkReply>
#include <QPointer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTimerEvent>

#include <algorithm>
#include <array>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

using support::Call;
using support::callPath;
using support::Reply;

class WindowStormTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void windowsGoAtAnyMoment();
    void windowsGoWithAllFiveKindsUnderWay();

private:
    void answerAtRandom();
    static void sendEverything(const QWidget& window);
    std::unique_ptr<TarnwickClientWindow> startLinked() const;
    std::unique_ptr<TarnwickClientWindow> startWithACode();
    bool everyCallIsHeld(qsizetype count) const;
    void releaseSome();
    /// Ends the window. Empty when nothing of it runs from then on.
    QStringList tracesAfter(std::unique_ptr<TarnwickClientWindow> window) const;

    QRandomGenerator random;
    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<support::TemporaryHome> home;
    std::unique_ptr<support::ScriptedServer> server;
};

namespace {

constexpr int stormRounds = 200;
constexpr int stormFullRounds = 400;

using KindCounts = std::array<int, taskKindCount>;

/// Adds one for each kind of which a request of the window is under way.
void stormCount(const QWidget& window, KindCounts& counts)
{
    const auto replies = window.findChildren<QNetworkReply*>();
    for (const QNetworkReply* reply : replies) {
        counts.at(static_cast<std::size_t>(reply->property("taskKind").toInt())) += reply->isFinished() ? 0 : 1;
    }
}

} // namespace

void WindowStormTest::init()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    random.seed(seed);
    messages = std::make_unique<support::MessageCatcher>();
    home = std::make_unique<support::TemporaryHome>();
    server = std::make_unique<support::ScriptedServer>();
}

void WindowStormTest::cleanup()
{
    server.reset();
    home.reset();
    const QStringList printed = messages->messages();
    messages.reset();
    QCOMPARE(printed, QStringList());
}

void WindowStormTest::answerAtRandom()
{
    const QByteArray body = R"({"code":"TWPC-1","access_token":"token-2","instances":[{},{}]})";
    const QList<Reply> replies = {Reply::json(200, body),
                                  Reply::json(200, body).delay(2),
                                  Reply::json(200, body).drip(9, 1),
                                  Reply::json(202, "{}").delay(1),
                                  Reply::json(500, body).chunked(5),
                                  Reply::json(200, body).cutBodyAfter(10),
                                  Reply::never(),
                                  Reply::resetWithoutAnswer(),
                                  Reply::closeWithoutAnswer()};
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        server->reply(callPath(call), replies.at(random.bounded(static_cast<int>(replies.size()))));
    }
}

/// Presses every button that sends, and has the code polled for.
void WindowStormTest::sendEverything(const QWidget& window)
{
    const support::WindowView view(window);
    view.line(u"GDPS Name")->setText(u"Neon"_s);
    for (const QStringView name : {u"Generate Link Code", u"Refresh", u"Create GDPS"}) {
        view.button(name)->click();
    }
    auto* timer = window.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    if (timer->isActive()) {
        QTimerEvent tick(timer->timerId());
        QCoreApplication::sendEvent(timer, &tick);
    }
}

std::unique_ptr<TarnwickClientWindow> WindowStormTest::startLinked() const
{
    home->writeState(support::storedState(server->origin(), u"token-1"_s));
    return std::make_unique<TarnwickClientWindow>();
}

/// A window that shows a code, while every other answer is held back. Null when it shows none.
std::unique_ptr<TarnwickClientWindow> WindowStormTest::startWithACode()
{
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        server->hold(callPath(call));
    }
    server->release(callPath(Call::LinkStart));
    server->reply(callPath(Call::LinkStart), Reply::json(200, R"({"code":"TWPC-1"})"));
    auto window = startLinked();
    const support::WindowView view(*window);
    view.button(u"Generate Link Code")->click();
    const bool showsIt = support::waitFor([&view] { return !view.line(u"Link code")->text().isEmpty(); });
    server->hold(callPath(Call::LinkStart));
    return showsIt ? std::move(window) : nullptr;
}

/// As many requests of each call as that wait at the service.
bool WindowStormTest::everyCallIsHeld(qsizetype count) const
{
    const auto calls = support::allCalls();
    return std::all_of(calls.begin(), calls.end(),
                       [this, count](Call call) { return server->heldCount(callPath(call)) == count; });
}

void WindowStormTest::releaseSome()
{
    answerAtRandom();
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        if (random.bounded(2) == 0) {
            server->release(callPath(call));
        }
    }
}

QStringList WindowStormTest::tracesAfter(std::unique_ptr<TarnwickClientWindow> window) const
{
    // A handler runs when a reply finishes: no reply does that while the window goes, and none is left afterwards.
    QStringList traces;
    const auto replies = window->findChildren<QNetworkReply*>();
    std::vector<std::unique_ptr<QSignalSpy>> ends;
    QList<QPointer<QNetworkReply>> left;
    for (QNetworkReply* reply : replies) {
        ends.push_back(std::make_unique<QSignalSpy>(reply, &QNetworkReply::finished));
        left.append(reply);
    }
    window.reset();
    if (std::any_of(ends.begin(), ends.end(), [](const auto& end) { return !end->isEmpty(); })) {
        traces.append(u"a reply has finished"_s);
    }
    if (std::any_of(left.begin(), left.end(), [](const auto& reply) { return !reply.isNull(); })) {
        traces.append(u"a reply outlives its window"_s);
    }
    // The last save was the window's own; a handler that ran now would save once more.
    QFile::remove(home->stateFile());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    if (!support::waitFor([this] { return everyCallIsHeld(0); })) {
        traces.append(u"a request outlives its window"_s);
    }
    if (QFile::exists(home->stateFile())) {
        traces.append(u"the state has been saved"_s);
    }
    return traces;
}

void WindowStormTest::windowsGoAtAnyMoment()
{
    KindCounts begun{};
    for (int round = 0; round < stormRounds; ++round) {
        answerAtRandom();
        auto window = startLinked();
        const int steps = random.bounded(40);
        const int secondPress = random.bounded(40);
        for (int step = 0; step < steps; ++step) {
            if (step == 0 || step == secondPress) {
                sendEverything(*window);
                stormCount(*window, begun);
            }
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
        QCOMPARE(tracesAfter(std::move(window)), QStringList());
    }
    // Only what is polled for takes an answer before.
    for (const TaskKind kind :
         {TaskKind::LinkStart, TaskKind::Session, TaskKind::Instances, TaskKind::CreateInstance}) {
        QVERIFY(begun.at(static_cast<std::size_t>(kind)) > stormRounds / 2);
    }
}

void WindowStormTest::windowsGoWithAllFiveKindsUnderWay()
{
    KindCounts begun{};
    KindCounts cutOff{};
    for (int round = 0; round < stormFullRounds; ++round) {
        auto window = startWithACode();
        QVERIFY(window != nullptr);
        sendEverything(*window);
        stormCount(*window, begun);
        QCOMPARE(window->findChildren<QNetworkReply*>().size(), 5);
        QVERIFY(support::waitFor([this] { return everyCallIsHeld(1); }));
        releaseSome();
        for (int step = random.bounded(20); step > 0; --step) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
        stormCount(*window, cutOff);
        QCOMPARE(tracesAfter(std::move(window)), QStringList());
    }
    for (std::size_t kind = 0; kind < taskKindCount; ++kind) {
        QCOMPARE(begun.at(kind), stormFullRounds);
        // Half of the answers were not let go.
        QVERIFY(cutOff.at(kind) > stormFullRounds / 4);
    }
    // Some of the others had come to their end.
    QVERIFY(std::accumulate(cutOff.begin(), cutOff.end(), 0) < 5 * stormFullRounds);
}

QTEST_MAIN(WindowStormTest)
#include "window_storm_test.moc"
