// Bodies that a correct service does not send.
#include "faults/fault_run.h"
#include "support/client_test.h"

using faults::FaultRun;
using faults::Outcome;
using faults::WindowSight;
using support::Call;
using support::Reply;

namespace {

QByteArray bodyNested(const QByteArray& open, const QByteArray& close)
{
    return open.repeated(5000) + close.repeated(5000);
}

QByteArray bodyOfManyKeys()
{
    QByteArray body = "{";
    for (int key = 0; key < 100000; ++key) {
        body += "\"k" + QByteArray::number(key) + "\":1,";
    }
    return body + support::json("'message':'the last'}");
}

/// Every key that the client reads in the body itself, all with the same value.
QByteArray bodyOfEveryKey(const QByteArray& value)
{
    return support::json("{'message':?,'error':?,'code':?,'approve_url':?,'access_token':?,'user':?,"
                         "'available_cores':?,'instances':?}")
        .replace('?', value);
}

/// Objects and arrays of the right type whose members have this value.
QByteArray bodyOfEveryInnerKey(const QByteArray& value)
{
    return support::json(
               "{'user':{'display_name':?,'plan_name':?,'gdps_limit_label':?},"
               "'available_cores':[?,{'key':?,'label':'only'},{'key':'k','label':?},{'key':'whole','label':'Whole'}],"
               "'instances':[?,{'core_label':?,'display_name':?,'manage_url':?,'public_url':?,'slug':?,'status':?}]}")
        .replace('?', value);
}

} // namespace

class BodyFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(list.play(Call::Instances, Reply::json(200, "{}"))); }

    void whatIsNoObjectReadsAsAnEmptyOne_data()
    {
        QTest::addColumn<QByteArray>("body");
        const auto add = [](const char* name, const QByteArray& body) {
            QTest::newRow(name) << body;
        };
        add("empty", "");
        add("a page", "<!DOCTYPE html><html><body><h1>It works!</h1></body></html>");
        add("an array", support::json("[{'message':'in an array'}]"));
        add("a text", support::json("'message'"));
        add("cut", support::json("{'message':'cut'"));
        add("a comma too many", support::json("{'message':'comma',}"));
        add("two objects", support::json("{'message':'a'}{'message':'b'}"));
        add("arrays in arrays", bodyNested("[", "]"));
        add("objects in objects", bodyNested(support::json("{'message':"), "}"));
        add("arrays in arrays in an object", support::json("{'message':'deep','x':") + bodyNested("[", "]") + '}');
        add("bad UTF-8", "{\"message\":\"\xff\xfe\"}");
        add("UTF-8 cut within a character", "{\"message\":\"\xf0\x9f\x94\"}");
        add("UTF-16", QByteArray("{\0\"\0m\0\"\0:\0\"\0x\0\"\0}\0", 16));
        add("a NUL byte after the object", QByteArray("{\"message\":\"a\"}\0", 16));
        // These two are objects, but without any key that the client reads.
        add("the message further in", support::json("{'data':{'message':'further in'}}"));
        add("other letter case", support::json("{'Message':'large','ERROR':'larger'}"));
    }

    void whatIsNoObjectReadsAsAnEmptyOne()
    {
        QFETCH(QByteArray, body);
        QVERIFY(list.playAgain(Reply::json(200, body)));
        list.check(Outcome::success());
        QVERIFY(list.playAgain(Reply::json(502, body)));
        list.check(Outcome::failed(502, u"Tarnwick returned HTTP 502."_s));
    }

    void anOddObjectIsReadForWhatItHas_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("message");
        const auto add = [](const char* name, const QByteArray& body, const QString& message) {
            QTest::newRow(name) << body << message;
        };
        add("a byte-order mark", "\xef\xbb\xbf{\"message\":\"marked\"}", u"marked"_s);
        add("blanks around it", " \n{\"message\":\"blanks\"}\r\n ", u"blanks"_s);
        add("a key twice", support::json("{'message':'first','message':'second'}"), u"second"_s);
        add("half a surrogate pair", support::json("{'message':'half \\ud83d of it'}"),
            u"half "_s + QChar(0xd83d) + u" of it"_s);
        add("every escape", support::json("{'message':'\\u0000\\u0007\\b\\f\\n\\r\\t\\'\\\\\\/'}"),
            QString(QChar(0)) + u"\a\b\f\n\r\t\"\\/"_s);
        add("a key without a name", support::json("{'':'nothing','message':'named'}"), u"named"_s);
        add("a hundred thousand keys", bodyOfManyKeys(), u"the last"_s);
        add("placeholders", support::json("{'message':'100%1 of %2 used: %L3 %%'}"), u"100%1 of %2 used: %L3 %%"_s);
        add("blanks around the text", support::json("{'message':'  kept\\r\\n'}"), u"  kept\r\n"_s);
    }

    void anOddObjectIsReadForWhatItHas()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, message);
        FaultRun creation;
        QVERIFY(creation.play(Call::CreateInstance, Reply::json(502, body)));
        creation.check(Outcome::failed(502, message));
        FaultRun poll;
        QVERIFY(poll.play(Call::LinkPoll, Reply::json(200, body)));
        poll.check(Outcome::success(200, {{u"status"_s, message}}));
    }

    void theContentTypeDoesNotMatter_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::newRow("text") << QByteArray("text/plain");
        QTest::newRow("HTML") << QByteArray("text/html; charset=latin1");
        QTest::newRow("nonsense") << QByteArray("!");
    }

    void theContentTypeDoesNotMatter()
    {
        QFETCH(QByteArray, type);
        QVERIFY(list.playAgain(Reply::json(500, R"({"message":"Größe"})").header("Content-Type", type)));
        list.check(Outcome::failed(500, u"Größe"_s));
    }

    void aValueOfTheWrongTypeCountsAsNone_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<WindowSight>("shows");
        for (const char* value : {"7", "null", "[]", R"({"x":"y"})"}) {
            for (const Call call : support::allCalls()) {
                QTest::addRow("%s: %s", support::callName(call), value)
                    << call << bodyOfEveryKey(value) << WindowSight();
            }
            const QByteArray body = bodyOfEveryInnerKey(value);
            QTest::addRow("session: %s, inside", value)
                << Call::Session << body << WindowSight{{u"cores"_s, u"k = k, Whole = whole"_s}, {u"Core"_s, u"k"_s}};
            QTest::addRow("instances: %s, inside", value)
                << Call::Instances << body
                << WindowSight{{u"projects"_s, u"[ |  |  | ][ |  |  | ]"_s},
                               {u"status"_s, u"Loaded 2 Tarnwick project(s)."_s}};
        }
    }

    void aValueOfTheWrongTypeCountsAsNone()
    {
        QFETCH(Call, call);
        QFETCH(QByteArray, body);
        QFETCH(WindowSight, shows);
        FaultRun run;
        QVERIFY(run.play(call, Reply::json(200, body)));
        run.check(Outcome::success(200, shows));
    }

private:
    FaultRun list;
};

TARNWICK_TEST(BodyFaultsTest)
#include "body_faults_test.moc"
