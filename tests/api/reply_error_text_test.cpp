// The one rule that makes an error text from a reply: which status is an error, and whose text is shown.
#include "faults/fault_run.h"
#include "support/client_test.h"

#include <memory>

using faults::FaultRun;
using faults::Outcome;
using support::Call;
using support::Reply;

namespace {

struct ErrorStatus
{
    int status;
    /// What is shown if the service sends no text; empty if the status is no error.
    QString text;
};

const QList<ErrorStatus> errorStatuses{
    {200, {}},
    {201, {}},
    {202, {}},
    {203, {}},
    {299, {}},
    {300, {}},
    {399, {}},
    {400, u"Tarnwick returned HTTP 400."_s},
    {401, u"Tarnwick returned HTTP 401."_s},
    {404, u"Tarnwick returned HTTP 404."_s},
    {410, u"Tarnwick returned HTTP 410."_s},
    {499, u"Tarnwick returned HTTP 499."_s},
    {500, u"Tarnwick returned HTTP 500."_s},
    {599, u"Tarnwick returned HTTP 599."_s},
    {999, u"Tarnwick returned HTTP 999."_s},
};

struct ErrorWords
{
    const char* name;
    QByteArray body;
    /// What is shown for this body; empty if it has no text.
    QString text;
};

QList<ErrorWords> errorWords()
{
    return {{"no words", "{}", {}},
            {"a message", support::json("{'message':'Maintenance'}"), u"Maintenance"_s},
            {"an error", support::json("{'error':'Bad name'}"), u"Bad name"_s},
            {"both", support::json("{'error':'Bad name','message':'Maintenance'}"), u"Maintenance"_s},
            {"an empty message and an error", support::json("{'message':'','error':'Bad name'}"), u"Bad name"_s},
            {"a blank message and an error", support::json("{'message':' ','error':'Bad name'}"), u" "_s},
            {"a number and an error", support::json("{'message':7,'error':'Bad name'}"), u"Bad name"_s},
            {"two empty texts", support::json("{'message':'','error':''}"), {}}};
}

} // namespace

class ReplyErrorTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(list.play(Call::Instances, Reply::json(200, "{}"))); }

    void everyStatusOfAList_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("failure");
        for (const ErrorStatus& status : errorStatuses) {
            for (const ErrorWords& words : errorWords()) {
                const bool isBoundary = status.status == 202 || status.status == 399 || status.status == 400;
                if (words.text == u"Maintenance"_s || words.text.isEmpty() || isBoundary) {
                    const bool hasWords = !status.text.isEmpty() && !words.text.isEmpty();
                    QTest::addRow("%d, %s", status.status, words.name)
                        << status.status << words.body << (hasWords ? words.text : status.text);
                }
            }
        }
    }

    void everyStatusOfAList()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, failure);
        QVERIFY(list.playAgain(Reply::json(status, body)));
        list.check(Outcome::failed(status, failure));
    }

    void everyCallFollowsTheRule_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<Outcome>("outcome");
        for (const Call call : support::allCalls()) {
            const auto add = [call](const char* name, const Reply& reply, const Outcome& outcome) {
                QTest::addRow("%s: %s", support::callName(call), name) << call << reply << outcome;
            };
            const QByteArray words = support::json("{'message':'Words','error':'Not shown'}");
            // For these two, the service's own message of a success is shown.
            const bool isShown = call == Call::LinkPoll || call == Call::CreateInstance;
            const faults::WindowSight shows =
                isShown ? faults::WindowSight{{u"status"_s, u"Words"_s}} : faults::WindowSight();
            add("201", Reply::json(201, words), Outcome::success(201, shows));
            add("202", Reply::json(202, words), Outcome::success(202, shows));
            add("202, no words", Reply::json(202, "{}"), Outcome::success(202));
            add("204", Reply::empty(204), Outcome::success(204));
            add("304", Reply::empty(304), Outcome::success(304));
            add("400", Reply::json(400, words), Outcome::failed(400, u"Words"_s));
            add("401", Reply::empty(401), Outcome::failed(401, u"Tarnwick returned HTTP 401."_s));
            add("404, a page", Reply::html(404, "<h1>Not Found</h1>"),
                Outcome::failed(404, u"Tarnwick returned HTTP 404."_s));
            add("410", Reply::json(410, words), Outcome::failed(410, u"Words"_s));
            add("503, and what a success holds",
                Reply::json(503, support::json("{'error':'Down','code':'X','access_token':'t','user':{},"
                                               "'available_cores':[{'key':'x'}],'instances':[{}]}")),
                Outcome::failed(503, u"Down"_s));
        }
    }

    void everyCallFollowsTheRule()
    {
        QFETCH(Call, call);
        QFETCH(Reply, reply);
        QFETCH(Outcome, outcome);
        FaultRun run;
        QVERIFY(run.play(call, reply));
        run.checkEnd(outcome);
    }

private:
    FaultRun list;
};

TARNWICK_TEST(ReplyErrorTextTest)
#include "reply_error_text_test.moc"
