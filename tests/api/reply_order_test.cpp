// The order in which a reply is handled: its kind is free and the controls are right before its branch runs, and
// the reply goes away afterwards.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QAbstractItemModel>
#include <QNetworkReply>
#include <QPointer>
#include <QTest>

#include <memory>

using support::Call;
using support::Reply;
using support::ScriptedServer;

class ReplyOrderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theCodeRequestIsFreeBeforeTheCodeIsShown();
    void theSessionIsFreeBeforeTheCoresAreFilled();
    void theListIsFreeBeforeTheTableIsFilled();
    void theCreationIsFreeBeforeTheFormIsCleared();
    void aBranchMaySendTheNextRequestOfItsOwnKind();
    void everyReplyIsDeleted_data();
    void everyReplyIsDeleted();
    void aReplyBelongsToTheKindOfItsTag();
    void aReplyOfNoKnownKindDoesNothing_data();
    void aReplyOfNoKnownKindDoesNothing();

private:
    /// The reply in flight, once the request has come in and waits.
    QNetworkReply* heldReply(Call call);

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

void ReplyOrderTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
}

void ReplyOrderTest::cleanup()
{
    bench.reset();
    server.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

QNetworkReply* ReplyOrderTest::heldReply(Call call)
{
    const bool isThere = QTest::qWaitFor([this, call] {
        return server->heldCount(callPath(call)) == 1 && bench->window().findChildren<QNetworkReply*>().size() == 1;
    });
    return isThere ? bench->window().findChild<QNetworkReply*>() : nullptr;
}

void ReplyOrderTest::theCodeRequestIsFreeBeforeTheCodeIsShown()
{
    QVERIFY(bench->prepare(Call::LinkStart));
    const QPushButton* button = bench->view().button(u"Generate Link Code");
    QList<bool> wasFree;
    connect(bench->view().line(u"Link code"), &QLineEdit::textChanged, this,
            [&] { wasFree.append(button->isEnabled()); });
    bench->bringAbout(Call::LinkStart);
    QVERIFY(!button->isEnabled());
    QTRY_COMPARE(bench->view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    QCOMPARE(wasFree, QList<bool>{true});
}

void ReplyOrderTest::theSessionIsFreeBeforeTheCoresAreFilled()
{
    server->hold(callPath(Call::Session));
    bench->startLinked();
    const QPushButton* button = bench->view().button(u"Unlink");
    QVERIFY(!button->isEnabled());
    QList<bool> wasFree;
    QStringList accounts;
    connect(bench->view().combo(u"Core")->model(), &QAbstractItemModel::rowsInserted, this, [&] {
        wasFree.append(button->isEnabled());
        accounts.append(bench->view().account().constFirst());
    });
    server->release(callPath(Call::Session));
    QTRY_COMPARE(bench->view().combo(u"Core")->currentText(), u"Core A"_s);
    QCOMPARE(wasFree, QList<bool>{true});
    QCOMPARE(accounts, QStringList{u"Signed in as Ann"_s});
}

void ReplyOrderTest::theListIsFreeBeforeTheTableIsFilled()
{
    QVERIFY(bench->prepare(Call::Instances));
    const QPushButton* button = bench->view().button(u"Refresh");
    QList<bool> wasFree;
    QStringList statuses;
    connect(bench->view().table()->model(), &QAbstractItemModel::rowsInserted, this, [&] {
        wasFree.append(button->isEnabled());
        statuses.append(bench->view().status());
    });
    bench->bringAbout(Call::Instances);
    QVERIFY(!button->isEnabled());
    QTRY_COMPARE(bench->view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(wasFree, QList<bool>{true});
    // The sentence comes last.
    QCOMPARE(statuses, QStringList{u"Refreshing your Tarnwick projects..."_s});
}

void ReplyOrderTest::theCreationIsFreeBeforeTheFormIsCleared()
{
    QVERIFY(bench->prepare(Call::CreateInstance));
    const QPushButton* button = bench->view().button(u"Create GDPS");
    QList<bool> wasFree;
    connect(bench->view().line(u"GDPS Name"), &QLineEdit::textChanged, this,
            [&] { wasFree.append(button->isEnabled()); });
    bench->bringAbout(Call::CreateInstance);
    QVERIFY(!button->isEnabled());
    QTRY_COMPARE(bench->view().line(u"GDPS Name")->text(), QString());
    QCOMPARE(wasFree, QList<bool>{true});
}

void ReplyOrderTest::aBranchMaySendTheNextRequestOfItsOwnKind()
{
    QVERIFY(bench->prepare(Call::Instances));
    server->forgetRequests();
    // The next press comes while the reply before it is still being handled.
    bool isFirst = true;
    connect(bench->view().table()->model(), &QAbstractItemModel::rowsInserted, this, [&] {
        if (std::exchange(isFirst, false)) {
            bench->view().button(u"Refresh")->click();
        }
    });
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE(server->count(callPath(Call::Instances)), 2);
    QTRY_VERIFY(bench->view().button(u"Refresh")->isEnabled());
    QCOMPARE(bench->view().status(), u"Loaded 1 Tarnwick project(s)."_s);
}

void ReplyOrderTest::everyReplyIsDeleted_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    const auto calls = support::allCalls();
    for (const Call call : calls) {
        const char* name = support::callName(call);
        QTest::addRow("%s, success", name) << call << Reply::json(200, "{}");
        QTest::addRow("%s, accepted", name) << call << Reply::json(202, "{}");
        QTest::addRow("%s, error", name) << call << Reply::empty(500);
        QTest::addRow("%s, cut", name) << call << Reply::json(200, "{}").cutBodyAfter(1);
    }
}

void ReplyOrderTest::everyReplyIsDeleted()
{
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QVERIFY(bench->prepare(call));
    server->hold(callPath(call));
    bench->bringAbout(call);
    const QPointer<QNetworkReply> watched = heldReply(call);
    QVERIFY(watched);
    int finishes = 0;
    connect(watched, &QNetworkReply::finished, this, [&finishes] { ++finishes; });
    server->reply(callPath(call), reply);
    server->release(callPath(call));
    QTRY_VERIFY(!watched);
    QCOMPARE(finishes, 1);
}

void ReplyOrderTest::aReplyBelongsToTheKindOfItsTag()
{
    QVERIFY(bench->prepare(Call::Instances));
    server->hold(callPath(Call::Instances));
    bench->bringAbout(Call::Instances);
    QNetworkReply* reply = heldReply(Call::Instances);
    QVERIFY(reply != nullptr);
    QCOMPARE(reply->property("taskKind").toInt(), 3);
    // Retagged, the list's reply is a link start's: the code is taken from it, and its own kind stays busy.
    reply->setProperty("taskKind", 0);
    server->reply(callPath(Call::Instances), Reply::json(200, R"({"code":"TAGGED","instances":[]})"));
    server->release(callPath(Call::Instances));
    QTRY_COMPARE(bench->view().line(u"Link code")->text(), u"TAGGED"_s);
    QVERIFY(!bench->view().button(u"Refresh")->isEnabled());
    QCOMPARE(bench->view().table()->rowCount(), 1);
}

void ReplyOrderTest::aReplyOfNoKnownKindDoesNothing_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("status");
    for (const int kind : {5, 99, -1}) {
        for (const int status : {200, 202, 500}) {
            QTest::addRow("kind %d, status %d", kind, status) << kind << status;
        }
    }
}

void ReplyOrderTest::aReplyOfNoKnownKindDoesNothing()
{
    QFETCH(int, kind);
    QFETCH(int, status);
    QVERIFY(bench->prepare(Call::Instances));
    server->hold(callPath(Call::Instances));
    bench->bringAbout(Call::Instances);
    const QPointer<QNetworkReply> reply = heldReply(Call::Instances);
    QVERIFY(reply);
    reply->setProperty("taskKind", kind);
    server->reply(callPath(Call::Instances), Reply::json(status, R"({"message":"Not shown","code":"X"})"));
    server->release(callPath(Call::Instances));
    QTRY_VERIFY(!reply);
    QCOMPARE(bench->view().status(), u"Refreshing your Tarnwick projects..."_s);
    QVERIFY(!bench->view().button(u"Refresh")->isEnabled());
    QVERIFY(bench->view().button(u"Unlink")->isEnabled());
    QCOMPARE(bench->view().table()->rowCount(), 1);
    QCOMPARE(bench->view().line(u"Link code")->text(), QString());
}

QTEST_MAIN(ReplyOrderTest)
#include "reply_order_test.moc"
