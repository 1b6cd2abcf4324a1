// The six moments at which the state is saved, and that there is no seventh. The file is taken away before
// each of them: it is there again exactly when something was saved.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/opened_urls.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QFile>
#include <QTest>

#include <functional>
#include <memory>

using support::Call;
using support::Reply;

class StateSaveMomentsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void closingSaves();
    void askingForACodeSavesBeforeTheRequestGoesOut();
    void askingAgainWhileACodeIsOnItsWaySavesNothing();
    void aNewCodeIsSavedAfterItIsShown();
    void anApprovalSavesTheTokenBeforeTheSessionIsChecked();
    void aFailedSessionCheckSavesWithoutTheToken();
    void unlinkingSavesWithoutTheToken();
    void nothingElseSaves_data();
    void nothingElseSaves();

private:
    bool isSaved() const { return QFile::exists(bench->home().stateFile()); }
    bool forget() const { return QFile::remove(bench->home().stateFile()); }
    QJsonObject saved() const { return bench->home().stateObject(); }

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<support::ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

void StateSaveMomentsTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<support::ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
}

void StateSaveMomentsTest::cleanup()
{
    bench.reset();
    server.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void StateSaveMomentsTest::closingSaves()
{
    QVERIFY(bench->settleLinked());
    QVERIFY(forget());
    QVERIFY(bench->window().close());
    QCOMPARE(saved().value(u"access_token"_s).toString(), u"token-1"_s);
}

void StateSaveMomentsTest::askingForACodeSavesBeforeTheRequestGoesOut()
{
    QVERIFY(bench->prepare(Call::LinkStart));
    QVERIFY(forget());
    QJsonObject savedAtArrival;
    server->onRequest(callPath(Call::LinkStart), [&](const support::RecordedRequest&) {
        savedAtArrival = saved();
        return Reply::empty(500);
    });
    bench->view().line(u"Tarnwick URL")->setText(server->origin() + u"//"_s);
    bench->bringAbout(Call::LinkStart);
    // Nothing can have left yet: the event loop has not run.
    QVERIFY(isSaved());
    QTRY_COMPARE(bench->view().status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(savedAtArrival, (QJsonObject{{u"origin"_s, server->origin()}, {u"device_id"_s, u"desk-1"_s}}));
}

void StateSaveMomentsTest::askingAgainWhileACodeIsOnItsWaySavesNothing()
{
    QVERIFY(bench->prepare(Call::LinkStart));
    server->hold(callPath(Call::LinkStart));
    bench->bringAbout(Call::LinkStart);
    QTRY_COMPARE(server->heldCount(callPath(Call::LinkStart)), 1);
    QVERIFY(forget());
    // The button is disabled meanwhile; its signal is not.
    Q_EMIT bench->view().button(u"Generate Link Code")->clicked();
    QCOMPARE(bench->view().status(), u"Requesting a new Tarnwick PC link code..."_s);
    QVERIFY(!isSaved());
}

void StateSaveMomentsTest::aNewCodeIsSavedAfterItIsShown()
{
    QVERIFY(bench->prepare(Call::LinkStart));
    server->hold(callPath(Call::LinkStart));
    bench->bringAbout(Call::LinkStart);
    QTRY_COMPARE(server->heldCount(callPath(Call::LinkStart)), 1);
    QVERIFY(forget());
    int shown = 0;
    bool wasSavedWhenShown = true;
    connect(bench->view().line(u"Link code"), &QLineEdit::textChanged, this, [&] {
        ++shown;
        wasSavedWhenShown = isSaved();
    });
    server->release(callPath(Call::LinkStart));
    QTRY_VERIFY(isSaved());
    QCOMPARE(shown, 1);
    QVERIFY(!wasSavedWhenShown);
}

void StateSaveMomentsTest::anApprovalSavesTheTokenBeforeTheSessionIsChecked()
{
    QVERIFY(bench->prepare(Call::LinkPoll));
    QVERIFY(forget());
    QString tokenAtCheck;
    server->reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"  t-2\n"})"));
    server->onRequest(callPath(Call::Session), [&](const support::RecordedRequest&) {
        tokenAtCheck = saved().value(u"access_token"_s).toString();
        return Reply::json(200, "{}");
    });
    bench->bringAbout(Call::LinkPoll);
    QTRY_COMPARE(bench->view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(tokenAtCheck, u"t-2"_s);
}

void StateSaveMomentsTest::aFailedSessionCheckSavesWithoutTheToken()
{
    server->reply(callPath(Call::Session), Reply::empty(401));
    bench->startLinked();
    QCOMPARE(saved().value(u"access_token"_s).toString(), u"token-1"_s);
    QTRY_COMPARE(bench->view().status(), u"Tarnwick returned HTTP 401."_s);
    QCOMPARE(bench->home().readState(), support::storedState(server->origin()));
}

void StateSaveMomentsTest::unlinkingSavesWithoutTheToken()
{
    QVERIFY(bench->settleLinked());
    bench->view().button(u"Unlink")->click();
    QCOMPARE(bench->home().readState(), support::storedState(server->origin()));
    QCOMPARE(bench->view().status(), u"Tarnwick desktop client unlinked."_s);
}

void StateSaveMomentsTest::nothingElseSaves_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<QString>("status");
    const QString failure = u"Tarnwick returned HTTP 500."_s;
    QTest::newRow("failed code request") << Call::LinkStart << Reply::empty(500) << failure;
    QTest::newRow("pending poll") << Call::LinkPoll << Reply::json(202, R"({"message":"Wait"})") << u"Wait"_s;
    QTest::newRow("failed poll") << Call::LinkPoll << Reply::empty(500) << failure;
    QTest::newRow("expired poll") << Call::LinkPoll << Reply::empty(410) << u"Tarnwick returned HTTP 410."_s;
    QTest::newRow("project list") << Call::Instances << Reply::json(200, "{}") << u"Loaded 0 Tarnwick project(s)."_s;
    QTest::newRow("failed project list") << Call::Instances << Reply::empty(500) << failure;
    QTest::newRow("creation") << Call::CreateInstance << Reply::json(201, "{}") << u"Loaded 1 Tarnwick project(s)."_s;
    QTest::newRow("failed creation") << Call::CreateInstance << Reply::empty(500) << failure;
}

void StateSaveMomentsTest::nothingElseSaves()
{
    QFETCH(Call, call);
    QFETCH(Reply, reply);
    QFETCH(QString, status);
    const support::OpenedUrls opened;
    QVERIFY(bench->prepare(call));
    server->reply(callPath(call), reply);
    bench->bringAbout(call);
    QVERIFY(forget());
    bench->view().line(u"Tarnwick URL")->setText(server->origin() + u'/');
    bench->view().button(u"Open Public Pairing Page")->click();
    QTRY_COMPARE(bench->view().status(), status);
    QVERIFY(!isSaved());
}

QTEST_MAIN(StateSaveMomentsTest)
#include "state_save_moments_test.moc"
