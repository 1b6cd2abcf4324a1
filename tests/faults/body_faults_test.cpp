// Bodies that are not what the service sends: whatever arrives, each call ends as the rules for its text say.
#include "app/tarnwick_client_window.h"
#include "faults/fault_run.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <memory>

using faults::FaultOutcome;
using support::Call;
using support::Reply;

class BodyFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsNoObjectReadsAsAnEmptyOne_data();
    void whatIsNoObjectReadsAsAnEmptyOne();
    void anOddObjectIsReadForWhatItHas_data();
    void anOddObjectIsReadForWhatItHas();
    void aValueOfTheWrongTypeCountsAsNone_data();
    void aValueOfTheWrongTypeCountsAsNone();

private:
    static std::unique_ptr<faults::FaultRun> newRun()
    {
        return std::make_unique<faults::FaultRun>([] { return std::make_unique<TarnwickClientWindow>(); });
    }
    static void addRows(const char* name, const QByteArray& body);
    static void checkRow(Call call, int status, const QByteArray& body, const QJsonObject& read);
};

namespace {

QByteArray bodyFaultNested(const QByteArray& open, const QByteArray& close, int depth)
{
    return open.repeated(depth) + close.repeated(depth);
}

/// Every key that is read anywhere, all with the same value.
QByteArray bodyFaultEveryKey(const QByteArray& value)
{
    QByteArray body = "{";
    for (const char* key : {"code", "approve_url", "message", "error", "access_token", "user", "available_cores",
                            "instances", "display_name", "plan_name"}) {
        body += '"' + QByteArray(key) + "\":" + value + ',';
    }
    body.back() = '}';
    return body;
}

/// Containers of the right type whose members have the value.
QByteArray bodyFaultEveryInnerKey(const QByteArray& value)
{
    QByteArray body =
        R"({"user":{"display_name":?,"plan_name":?,"gdps_limit_label":?},)"
        R"("available_cores":[?,{"key":?,"label":"only"},{"key":"k","label":?},{"key":"whole","label":"Whole"}],)"
        R"("instances":[?,{"core_label":?,"display_name":?,"manage_url":?,"public_url":?,)"
        R"("slug":?,"status":?}]})";
    return body.replace('?', value);
}

/// An object that is odd, and what has to be read of it.
struct OddObject
{
    const char* name;
    QByteArray bytes;
    QJsonObject read;
};

QJsonObject bodyFaultMessage(const QString& text)
{
    return {{u"message"_s, text}};
}

QByteArray bodyFaultManyKeys()
{
    QByteArray body = "{";
    for (int key = 0; key < 100000; ++key) {
        body += "\"k" + QByteArray::number(key) + "\":1,";
    }
    return body + R"("message":"the last"})";
}

QList<OddObject> bodyFaultOddObjects()
{
    return {
        {"a byte-order mark", "\xef\xbb\xbf{\"message\":\"marked\"}", bodyFaultMessage(u"marked"_s)},
        {"blanks around it", " \n{\"message\":\"blanks\"}\r\n ", bodyFaultMessage(u"blanks"_s)},
        {"a key twice", R"({"message":"first","message":"second"})", bodyFaultMessage(u"second"_s)},
        {"half a surrogate pair",
         R"({"message":"half \ud83d of it","code":"\udd25"})",
         {{u"message"_s, u"half "_s + QChar(0xd83d) + u" of it"_s}, {u"code"_s, QString(QChar(0xdd25))}}},
        {"every escape", R"({"message":"\u0000\u0007\b\f\n\r\t\"\\\/"})",
         bodyFaultMessage(QString(QChar(0)) + u"\a\b\f\n\r\t\"\\/"_s)},
        {"a key without a name", R"({"":"nothing","message":"named"})", bodyFaultMessage(u"named"_s)},
        {"an empty object", "{}", {}},
        {"a hundred thousand keys", bodyFaultManyKeys(), bodyFaultMessage(u"the last"_s)},
    };
}

} // namespace

void BodyFaultsTest::addRows(const char* name, const QByteArray& body)
{
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        QTest::addRow("%s, 200: %s", support::callName(call), name) << call << 200 << body;
        QTest::addRow("%s, 502: %s", support::callName(call), name) << call << 502 << body;
    }
}

void BodyFaultsTest::checkRow(Call call, int status, const QByteArray& body, const QJsonObject& read)
{
    FaultOutcome outcome{.status = status, .errorText = {}, .body = read};
    if (status >= 400) {
        const QString words = read.value(u"message"_s).toString();
        outcome.errorText = words.isEmpty() ? u"Tarnwick returned HTTP %1."_s.arg(status) : words;
    }
    const auto run = newRun();
    QVERIFY(run->play(call, Reply::json(status, body)));
    QVERIFY(run->wasBusy());
    QCOMPARE(run->seen(), run->expected(outcome));
    QCOMPARE(run->arrivals(outcome), run->expectedArrivals(outcome));
    QVERIFY(run->stillAnswers());
    QCOMPARE(run->messages(), QStringList());
}

void BodyFaultsTest::whatIsNoObjectReadsAsAnEmptyOne_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    addRows("empty", "");
    addRows("blanks", " \r\n\t ");
    addRows("a page", "<!DOCTYPE html><html><body><h1>It works!</h1></body></html>");
    addRows("an array", R"([{"message":"in an array"}])");
    addRows("a text", R"("message")");
    addRows("a number", "42");
    addRows("null", "null");
    addRows("cut", R"({"message":"cut)");
    addRows("a comma too many", R"({"message":"comma",})");
    addRows("two objects", R"({"message":"a"}{"message":"b"})");
    addRows("single quotes", "{'message':'quotes'}");
    addRows("5,000 arrays deep", bodyFaultNested("[", "]", 5000));
    addRows("5,000 objects deep", bodyFaultNested(R"({"message":)", "}", 5000));
    addRows("5,000 deep in an object", R"({"message":"deep","instances":)" + bodyFaultNested("[", "]", 5000) + '}');
    addRows("bad UTF-8", "{\"message\":\"\xff\xfe\"}");
    addRows("UTF-8 cut within a character", "{\"message\":\"\xf0\x9f\x94\"}");
    addRows("UTF-16", QByteArray("{\0\"\0m\0\"\0:\0\"\0x\0\"\0}\0", 16));
    addRows("NUL bytes", QByteArray("\0\0\0\0", 4));
    addRows("a NUL byte after the object", QByteArray("{\"message\":\"a\"}\0", 16));
}

void BodyFaultsTest::whatIsNoObjectReadsAsAnEmptyOne()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    checkRow(call, status, body, {});
}

void BodyFaultsTest::anOddObjectIsReadForWhatItHas_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QJsonObject>("read");
    const auto calls = support::allCalls();
    const auto bodies = bodyFaultOddObjects();
    for (const Call call : calls) {
        for (const OddObject& odd : bodies) {
            for (const int status : {200, 502}) {
                QTest::addRow("%s, %d: %s", support::callName(call), status, odd.name)
                    << call << status << odd.bytes << odd.read;
            }
        }
    }
}

void BodyFaultsTest::anOddObjectIsReadForWhatItHas()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QJsonObject, read);
    checkRow(call, status, body, read);
}

void BodyFaultsTest::aValueOfTheWrongTypeCountsAsNone_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    for (const char* value : {"7", "-1e308", "true", "null", "[]", R"(["x"])", "{}", R"({"x":"y"})"}) {
        addRows(value, bodyFaultEveryKey(value));
        addRows(qPrintable(QLatin1StringView(value) + u", inside"_s), bodyFaultEveryInnerKey(value));
    }
}

void BodyFaultsTest::aValueOfTheWrongTypeCountsAsNone()
{
    QFETCH(Call, call);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    const QJsonObject read = QJsonDocument::fromJson(body).object();
    QVERIFY(!read.value(u"message"_s).isString());
    checkRow(call, status, body, read);
}

QTEST_MAIN(BodyFaultsTest)
#include "body_faults_test.moc"
