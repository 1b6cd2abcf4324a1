// Windows that are destroyed while requests of all five kinds are in flight: none of their handlers runs afterwards.
// The rows are seeds; TARNWICK_TEST_SEED repeats one.
#include "support/client_test.h"

#include <QFile>
#include <QNetworkReply>
#include <QPointer>
#include <QRandomGenerator>
#include <QSignalSpy>

#include <algorithm>
#include <array>
#include <memory>
#include <numeric>
#include <vector>

using support::Call;
using support::Reply;

namespace {

constexpr int stormRounds = 200;
constexpr int stormFullRounds = 400;

constexpr std::size_t stormKinds = 5;
using KindCounts = std::array<int, stormKinds>;

/// Adds one for each kind of request that the window has in flight.
void stormCount(const QWidget& window, KindCounts& counts)
{
    const auto replies = window.findChildren<QNetworkReply*>();
    for (const QNetworkReply* reply : replies) {
        counts.at(static_cast<std::size_t>(reply->property("taskKind").toInt())) += reply->isFinished() ? 0 : 1;
    }
}

void addStormSeed()
{
    bool isGiven = false;
    const quint32 given = qEnvironmentVariable("TARNWICK_TEST_SEED").toUInt(&isGiven);
    const quint32 seed = isGiven ? given : QRandomGenerator::global()->generate();
    QTest::addColumn<quint32>("seed");
    QTest::addRow("seed %u", seed) << seed;
}

} // namespace

class WindowStormTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { run = std::make_unique<support::ClientRun>(); }

    void cleanup() { run.reset(); }

    void windowsGoAtAnyMoment_data() { addStormSeed(); }

    void windowsGoAtAnyMoment()
    {
        QFETCH(quint32, seed);
        random.seed(seed);
        KindCounts begun{};
        for (int round = 0; round < stormRounds; ++round) {
            answerAtRandom();
            run->startLinked();
            const int steps = random.bounded(40);
            const int secondPress = random.bounded(40);
            for (int step = 0; step < steps; ++step) {
                if (step == 0 || step == secondPress) {
                    sendEverything();
                    stormCount(run->window(), begun);
                }
                QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
            }
            QCOMPARE(tracesOfTheWindow(), QStringList());
        }
        // Only a poll (1) needs an earlier reply.
        for (const std::size_t kind : {0U, 2U, 3U, 4U}) {
            QVERIFY(begun.at(kind) > stormRounds / 2);
        }
    }

    void windowsGoWithAllFiveKindsUnderWay_data() { addStormSeed(); }

    void windowsGoWithAllFiveKindsUnderWay()
    {
        QFETCH(quint32, seed);
        random.seed(seed);
        KindCounts begun{};
        KindCounts cutOff{};
        for (int round = 0; round < stormFullRounds; ++round) {
            QVERIFY(startWithACode());
            sendEverything();
            stormCount(run->window(), begun);
            QVERIFY(support::waitFor([this] { return everyCallIsHeld(1); }));
            releaseSome();
            for (int step = random.bounded(20); step > 0; --step) {
                QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
            }
            stormCount(run->window(), cutOff);
            QCOMPARE(tracesOfTheWindow(), QStringList());
        }
        for (std::size_t kind = 0; kind < stormKinds; ++kind) {
            QCOMPARE(begun.at(kind), stormFullRounds);
            // Half of the replies were not released.
            QVERIFY(cutOff.at(kind) > stormFullRounds / 4);
        }
        // Some of the others had finished.
        QVERIFY(std::accumulate(cutOff.begin(), cutOff.end(), 0) < 5 * stormFullRounds);
    }

private:
    void answerAtRandom()
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
        for (const Call call : support::allCalls()) {
            run->server.reply(callPath(call), replies.at(random.bounded(static_cast<int>(replies.size()))));
        }
    }

    /// Presses every button that sends a request, and polls for the code.
    void sendEverything()
    {
        run->view().line(u"GDPS Name")->setText(u"Neon"_s);
        for (const QStringView button : {u"Generate Link Code", u"Refresh", u"Create GDPS"}) {
            run->press(button);
        }
        if (run->pollTimer()->isActive()) {
            run->tick();
        }
    }

    /// Starts a window that shows a code, with all other replies held. False if it shows none.
    bool startWithACode()
    {
        for (const Call call : support::allCalls()) {
            run->server.hold(callPath(call));
        }
        run->server.release(callPath(Call::LinkStart));
        run->startLinked();
        const bool showsIt = run->showLinkCode(u"TWPC-1"_s);
        run->server.hold(callPath(Call::LinkStart));
        return showsIt;
    }

    /// Whether the service holds this many requests of each call.
    bool everyCallIsHeld(qsizetype count) const
    {
        const auto calls = support::allCalls();
        return std::all_of(calls.begin(), calls.end(),
                           [&](Call call) { return run->server.heldCount(callPath(call)) == count; });
    }

    void releaseSome()
    {
        answerAtRandom();
        for (const Call call : support::allCalls()) {
            if (random.bounded(2) == 0) {
                run->server.release(callPath(call));
            }
        }
    }

    /// Destroys the window. Empty if nothing of it runs afterwards.
    QStringList tracesOfTheWindow()
    {
        // Handlers run when a reply finishes. No reply may finish during the destruction, and none may be left.
        QStringList traces;
        const auto replies = run->window().findChildren<QNetworkReply*>();
        std::vector<std::unique_ptr<QSignalSpy>> ends;
        QList<QPointer<QNetworkReply>> left;
        for (QNetworkReply* reply : replies) {
            ends.push_back(std::make_unique<QSignalSpy>(reply, &QNetworkReply::finished));
            left.append(reply);
        }
        run->destroyWindow();
        if (std::any_of(ends.begin(), ends.end(), [](const auto& end) { return !end->isEmpty(); })) {
            traces.append(u"a reply has finished"_s);
        }
        if (std::any_of(left.begin(), left.end(), [](const auto& reply) { return !reply.isNull(); })) {
            traces.append(u"a reply outlives its window"_s);
        }
        // The window itself has saved last; a handler that ran now would save again.
        QFile::remove(run->home().stateFile());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        if (!support::waitFor([this] { return everyCallIsHeld(0); })) {
            traces.append(u"a request outlives its window"_s);
        }
        if (QFile::exists(run->home().stateFile())) {
            traces.append(u"the state has been saved"_s);
        }
        return traces;
    }

    QRandomGenerator random;
    std::unique_ptr<support::ClientRun> run;
};

TARNWICK_TEST(WindowStormTest)
#include "window_storm_test.moc"
