// The order in which a reply is handled: the busy flag is cleared and the controls are updated before its handler runs,
// and the reply is deleted afterwards.
#include "support/client_test.h"

#include <QAbstractItemModel>
#include <QNetworkReply>
#include <QPointer>

#include <memory>

using support::Call;
using support::Reply;

class ReplyOrderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { run = std::make_unique<support::ClientRun>(); }

    void cleanup() { run.reset(); }

    void aKindIsFreeBeforeItsBranchRuns_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("link start") << Call::LinkStart << u"Generate Link Code"_s
                                    << u"Requesting a new Tarnwick PC link code..."_s;
        QTest::newRow("session") << Call::Session << u"Unlink"_s << u"Checking linked Tarnwick session..."_s;
        QTest::newRow("instances") << Call::Instances << u"Refresh"_s << u"Refreshing your Tarnwick projects..."_s;
        QTest::newRow("create") << Call::CreateInstance << u"Create GDPS"_s
                                << u"Creating your GDPS from the Tarnwick desktop client..."_s;
    }

    void aKindIsFreeBeforeItsBranchRuns()
    {
        QFETCH(Call, call);
        QFETCH(QString, button);
        QFETCH(QString, sentence);
        QVERIFY(run->prepare(call));
        run->bringAbout(call);
        QVERIFY(!run->view().button(button)->isEnabled());
        QCOMPARE(run->view().status(), sentence);
        QStringList sentences;
        const support::EnabledWatch watch(run->view().button(button),
                                          [&](bool) { sentences.append(run->view().status()); });
        QTRY_VERIFY(run->view().status() != sentence);
        QCOMPARE(sentences, QStringList{sentence});
    }

    void aBranchMaySendTheNextRequestOfItsOwnKind()
    {
        QVERIFY(run->prepare(Call::Instances));
        run->server.forgetRequests();
        // The next press comes while the previous reply is still being handled.
        bool isFirst = true;
        connect(run->view().table()->model(), &QAbstractItemModel::rowsInserted, this, [&] {
            if (std::exchange(isFirst, false)) {
                run->press(u"Refresh");
            }
        });
        run->bringAbout(Call::Instances);
        QTRY_COMPARE(run->server.count(callPath(Call::Instances)), 2);
        QTRY_VERIFY(run->view().button(u"Refresh")->isEnabled());
        QCOMPARE(run->view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    }

    /// Not one event loop iteration later: slots that are connected after the window's find everything done.
    void aReplyIsHandledWhenItFinishes()
    {
        const auto statuses = std::make_shared<QStringList>();
        const QNetworkReply* reply = heldReply();
        QVERIFY(reply != nullptr);
        connect(reply, &QNetworkReply::finished, this, [this, statuses] { statuses->append(run->view().status()); });
        run->server.release(callPath(Call::Instances));
        QTRY_COMPARE(*statuses, QStringList{u"Loaded 1 Tarnwick project(s)."_s});
    }

    void aReplyBelongsToTheKindOfItsTag()
    {
        QNetworkReply* reply = heldReply();
        QVERIFY(reply != nullptr);
        QCOMPARE(reply->property("taskKind").toInt(), 3);
        // With its kind changed, the list's reply is handled as a link start's, and its own kind stays busy.
        reply->setProperty("taskKind", 0);
        run->server.reply(callPath(Call::Instances), Reply::json(200, R"({"code":"TAGGED","instances":[]})"));
        run->server.release(callPath(Call::Instances));
        QTRY_COMPARE(run->view().line(u"Link code")->text(), u"TAGGED"_s);
        QVERIFY(!run->view().button(u"Refresh")->isEnabled());
        QCOMPARE(run->view().table()->rowCount(), 1);
    }

    void aReplyOfNoKnownKindDoesNothing_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("status");
        for (const int kind : {5, -1}) {
            for (const int status : {200, 500}) {
                QTest::addRow("kind %d, status %d", kind, status) << kind << status;
            }
        }
    }

    void aReplyOfNoKnownKindDoesNothing()
    {
        QFETCH(int, kind);
        QFETCH(int, status);
        const QPointer<QNetworkReply> reply = heldReply();
        QVERIFY(reply);
        reply->setProperty("taskKind", kind);
        run->server.reply(callPath(Call::Instances), Reply::json(status, R"({"message":"Not shown","code":"X"})"));
        run->server.release(callPath(Call::Instances));
        QTRY_VERIFY(!reply);
        QCOMPARE(run->view().status(), u"Refreshing your Tarnwick projects..."_s);
        QVERIFY(!run->view().button(u"Refresh")->isEnabled());
        QVERIFY(run->view().button(u"Unlink")->isEnabled());
        QCOMPARE(run->view().table()->rowCount(), 1);
        QCOMPARE(run->view().line(u"Link code")->text(), QString());
    }

private:
    /// A request for the list that has arrived and is held. Null if there is none.
    QNetworkReply* heldReply()
    {
        if (!run->startSignedIn()) {
            return nullptr;
        }
        run->server.hold(callPath(Call::Instances));
        run->press(u"Refresh");
        const bool isHeld = support::waitFor([this] {
            return run->server.heldCount(callPath(Call::Instances)) == 1 &&
                   run->window().findChildren<QNetworkReply*>().size() == 1;
        });
        return isHeld ? run->window().findChild<QNetworkReply*>() : nullptr;
    }

    std::unique_ptr<support::ClientRun> run;
};

TARNWICK_TEST(ReplyOrderTest)
#include "reply_order_test.moc"
