// Every status that a server can send, with and without words of its own.
#include "app/tarnwick_client_window.h"
#include "faults/fault_run.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QTest>
#include <QVersionNumber>

#include <algorithm>
#include <array>
#include <memory>

using faults::FaultOutcome;
using support::Call;
using support::Reply;

class StatusFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyStatusOfAList_data();
    void everyStatusOfAList();
    void cleanupTestCase();
    void aStatusOfEveryCall_data();
    void aStatusOfEveryCall();
    void aPreliminaryStatusEndsTheCallToo_data();
    void aPreliminaryStatusEndsTheCallToo();

private:
    static std::unique_ptr<faults::FaultRun> newRun()
    {
        return std::make_unique<faults::FaultRun>([] { return std::make_unique<TarnwickClientWindow>(); });
    }

    std::unique_ptr<faults::FaultRun> shared;
};

namespace {

struct StatusFaultWords
{
    const char* name;
    QByteArray body;
    /// What the window shows when the status is an error; empty for its own sentence.
    QString shown;
};

QList<StatusFaultWords> statusFaultWords()
{
    return {{"no words", "{}", {}},
            {"a message", R"({"message":"Words"})", u"Words"_s},
            {"an error", R"({"error":"Short"})", u"Short"_s},
            {"both", R"({"message":"Words","error":"Short"})", u"Words"_s},
            {"an empty message and an error", R"({"message":"","error":"Short"})", u"Short"_s},
            {"a number and an error", R"({"message":7,"error":"Short"})", u"Short"_s}};
}

bool statusFaultHasBody(int status)
{
    return status != 204 && status != 304;
}

bool statusFaultRedirects(int status)
{
    constexpr std::array redirects = {301, 302, 303, 305, 307, 308};
    return std::find(redirects.begin(), redirects.end(), status) != redirects.end();
}

/// What a final status and these words have to lead to.
FaultOutcome statusFaultOutcome(int status, const StatusFaultWords& words)
{
    FaultOutcome outcome{.status = status, .errorText = {}, .body = {}};
    if (statusFaultHasBody(status)) {
        outcome.body = QJsonDocument::fromJson(words.body).object();
    }
    if (statusFaultRedirects(status)) {
        outcome.errorText = u"Unknown protocol specified"_s; // Qt reads nothing of a redirect that leads nowhere
    } else if (status >= 400) {
        outcome.errorText = words.shown.isEmpty() ? u"Tarnwick returned HTTP %1."_s.arg(status) : words.shown;
    }
    return outcome;
}

/// Qt passes over a 100. Any other status counts as the answer, one without words, in Qt 6.4; a later Qt may pass over
/// it, too.
FaultOutcome statusFaultPreliminaryOutcome(int status, const QString& shown)
{
    const FaultOutcome passedOver{.status = 500, .errorText = u"The answer"_s, .body = {}};
    const FaultOutcome taken{.status = status, .errorText = {}, .body = {}};
    const bool mayPassOver = QLibraryInfo::version() >= QVersionNumber(6, 5) && shown == passedOver.errorText;
    return status == 100 || mayPassOver ? passedOver : taken;
}

} // namespace

void StatusFaultsTest::initTestCase()
{
    shared = newRun();
    QVERIFY(shared->play(Call::Instances, Reply::json(200, "{}")));
}

void StatusFaultsTest::cleanupTestCase()
{
    QVERIFY(shared->stillAnswers());
    QCOMPARE(shared->messages(), QStringList());
}

void StatusFaultsTest::everyStatusOfAList_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<FaultOutcome>("outcome");
    const auto everyWords = statusFaultWords();
    for (int status = 200; status <= 599; ++status) {
        for (const StatusFaultWords& words : everyWords) {
            QTest::addRow("%d, %s", status, words.name)
                << Reply::json(status, words.body) << statusFaultOutcome(status, words);
        }
    }
}

void StatusFaultsTest::everyStatusOfAList()
{
    QFETCH(Reply, reply);
    QFETCH(FaultOutcome, outcome);
    QVERIFY(shared->playAgain(reply));
    QVERIFY(shared->wasBusy());
    QCOMPARE(shared->seen(), shared->expected(outcome));
    QCOMPARE(shared->arrivals(outcome), shared->expectedArrivals(outcome));
}

void StatusFaultsTest::aStatusOfEveryCall_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<FaultOutcome>("outcome");
    const auto calls = support::allCalls();
    const auto everyWords = statusFaultWords();
    for (const Call call : calls) {
        for (const int status :
             {200, 201, 202, 204, 206, 226, 299, 300, 304, 306, 399, 400, 401, 403, 404, 405, 407, 408,
              409, 410, 413, 418, 422, 425, 429, 431, 451, 499, 500, 501, 502, 503, 504, 505, 511, 599}) {
            const StatusFaultWords& words = everyWords.at((status + static_cast<int>(call)) % everyWords.size());
            QTest::addRow("%s: %d, %s", support::callName(call), status, words.name)
                << call << Reply::json(status, words.body) << statusFaultOutcome(status, words);
        }
        QTest::addRow("%s: 401 that asks for a password", support::callName(call))
            << call << Reply::json(401, "{}").header("WWW-Authenticate", "Basic realm=\"a\"")
            << FaultOutcome{.status = 401, .errorText = u"Tarnwick returned HTTP 401."_s, .body = {}};
    }
}

void StatusFaultsTest::aStatusOfEveryCall()
{
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QFETCH(FaultOutcome, outcome);
    const auto run = newRun();
    QVERIFY(run->play(call, reply));
    QVERIFY(run->wasBusy());
    QCOMPARE(run->seen(), run->expected(outcome));
    QCOMPARE(run->arrivals(outcome), run->expectedArrivals(outcome));
    QVERIFY(run->stillAnswers());
    QCOMPARE(run->messages(), QStringList());
}

void StatusFaultsTest::aPreliminaryStatusEndsTheCallToo_data()
{
    QTest::addColumn<int>("status");
    for (int status = 100; status <= 199; ++status) {
        if (status != 101) { // after it, the connection is no longer HTTP: a matter of the connection's own tests
            QTest::addRow("%d", status) << status;
        }
    }
}

void StatusFaultsTest::aPreliminaryStatusEndsTheCallToo()
{
    QFETCH(int, status);
    const QByteArray preliminary = "HTTP/1.1 " + QByteArray::number(status) + " Wait\r\n\r\n";
    const QByteArray answer = Reply::json(500, R"({"message":"The answer"})").bytes();
    QVERIFY(shared->playAgain(Reply::raw(preliminary + answer).keepOpen()));
    QVERIFY(shared->wasBusy());
    const FaultOutcome outcome = statusFaultPreliminaryOutcome(status, shared->bench().view().status());
    QCOMPARE(shared->seen(), shared->expected(outcome));
    QCOMPARE(shared->arrivals(outcome), shared->expectedArrivals(outcome));

    // What is left of the bytes is nobody's answer.
    const QByteArray three = R"({"instances":[{},{},{}]})";
    const FaultOutcome list{.status = 200, .errorText = {}, .body = QJsonDocument::fromJson(three).object()};
    QVERIFY(shared->playAgain(Reply::json(200, three)));
    QCOMPARE(shared->seen(), shared->expected(list));
    QCOMPARE(shared->arrivals(list), shared->expectedArrivals(list));
}

QTEST_MAIN(StatusFaultsTest)
#include "status_faults_test.moc"
