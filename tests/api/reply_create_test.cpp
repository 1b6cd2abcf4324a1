// What a reply to a creation does.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QTest>

#include <memory>

using support::Call;
using support::Reply;
using support::ScriptedServer;

class ReplyCreateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aSuccessEmptiesWhatDescribesOneGdps();
    void aSuccessKeepsTheChoices();
    void theFormIsResetBeforeTheSentenceAndTheList();
    void theSentenceIsTheServicesOwn_data();
    void theSentenceIsTheServicesOwn();
    void theListIsFetchedAndSetsTheSentenceAgain();
    void theListIsNotFetchedTwice();
    void afterAnUnlinkThereIsNoListToFetch();
    void aFailureKeepsTheForm();

private:
    /// Fills the whole form and presses the button.
    void create();

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

namespace {

QCheckBox* publicBox(const support::WindowView& view)
{
    return view.checkBox(u"Show this GDPS in the public recent list");
}

QCheckBox* maintenanceBox(const support::WindowView& view)
{
    return view.checkBox(u"Start this GDPS in maintenance mode");
}

} // namespace

void ReplyCreateTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    server = std::make_unique<ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
    server->reply(callPath(Call::Session),
                  Reply::json(200, R"({"available_cores":[{"key":"a"},{"key":"b","label":"Core B"}]})"));
    QVERIFY(bench->settleLinked());
    server->hold(callPath(Call::Instances));
    server->forgetRequests();
}

void ReplyCreateTest::cleanup()
{
    bench.reset();
    server.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void ReplyCreateTest::create()
{
    const support::WindowView view = bench->view();
    view.line(u"GDPS Name")->setText(u"Neon Burst"_s);
    view.description()->setPlainText(u"Two\nlines"_s);
    view.line(u"Emoji")->setText(u"⭐"_s);
    view.line(u"Accent")->setText(u"#00ff00"_s);
    view.line(u"Tags")->setText(u"stars, cube"_s);
    view.combo(u"Core")->setCurrentIndex(1);
    view.combo(u"Preset")->setCurrentText(u"hardcore"_s);
    publicBox(view)->setChecked(false);
    maintenanceBox(view)->setChecked(true);
    bench->bringAbout(Call::CreateInstance);
}

void ReplyCreateTest::aSuccessEmptiesWhatDescribesOneGdps()
{
    create();
    const support::WindowView view = bench->view();
    QTRY_COMPARE(view.status(), u"Neon Burst is ready."_s);
    QCOMPARE(view.line(u"GDPS Name")->text(), QString());
    QCOMPARE(view.description()->toPlainText(), QString());
    QCOMPARE(view.line(u"Tags")->text(), QString());
    QVERIFY(publicBox(view)->isChecked());
    QVERIFY(!maintenanceBox(view)->isChecked());
    QVERIFY(view.button(u"Create GDPS")->isEnabled());
}

void ReplyCreateTest::aSuccessKeepsTheChoices()
{
    create();
    const support::WindowView view = bench->view();
    QTRY_COMPARE(view.status(), u"Neon Burst is ready."_s);
    QCOMPARE(view.line(u"Emoji")->text(), u"⭐"_s);
    QCOMPARE(view.line(u"Accent")->text(), u"#00ff00"_s);
    QCOMPARE(view.combo(u"Core")->currentText(), u"Core B"_s);
    QCOMPARE(view.combo(u"Core")->count(), 2);
    QCOMPARE(view.combo(u"Preset")->currentText(), u"hardcore"_s);
}

void ReplyCreateTest::theFormIsResetBeforeTheSentenceAndTheList()
{
    const support::WindowView view = bench->view();
    server->hold(callPath(Call::CreateInstance));
    create();
    QTRY_COMPARE(server->heldCount(callPath(Call::CreateInstance)), 1);
    QStringList order;
    const auto note = [&](const QString& step) {
        order.append(step);
        // The sentence is still the old one, and no list is under way, until the form has been reset.
        QCOMPARE(view.status(), u"Creating your GDPS from the Tarnwick desktop client..."_s);
        QVERIFY(view.button(u"Refresh")->isEnabled());
    };
    connect(view.line(u"GDPS Name"), &QLineEdit::textChanged, this, [&] { note(u"name"_s); });
    connect(view.description(), &QPlainTextEdit::textChanged, this, [&] { note(u"description"_s); });
    connect(view.line(u"Tags"), &QLineEdit::textChanged, this, [&] { note(u"tags"_s); });
    connect(publicBox(view), &QCheckBox::toggled, this, [&] { note(u"public"_s); });
    connect(maintenanceBox(view), &QCheckBox::toggled, this, [&] { note(u"maintenance"_s); });
    server->release(callPath(Call::CreateInstance));
    QTRY_COMPARE(view.status(), u"Neon Burst is ready."_s);
    QCOMPARE(order, (QStringList{u"name"_s, u"description"_s, u"tags"_s, u"public"_s, u"maintenance"_s}));
    QVERIFY(!view.button(u"Refresh")->isEnabled());
}

void ReplyCreateTest::theSentenceIsTheServicesOwn_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("sentence");
    const QString usual = u"Tarnwick created your GDPS from the desktop client."_s;
    QTest::newRow("message") << 201 << QByteArray(R"({"message":"Done"})") << u"Done"_s;
    QTest::newRow("empty message") << 200 << QByteArray(R"({"message":""})") << QString();
    QTest::newRow("blank message") << 200 << QByteArray(R"({"message":" "})") << u" "_s;
    QTest::newRow("no message") << 200 << QByteArray("{}") << usual;
    QTest::newRow("message is null") << 200 << QByteArray(R"({"message":null})") << usual;
    QTest::newRow("message is a number") << 200 << QByteArray(R"({"message":7})") << usual;
    QTest::newRow("error only") << 200 << QByteArray(R"({"error":"Not shown"})") << usual;
    QTest::newRow("message with a placeholder")
        << 200 << QByteArray(R"({"message":"%1 is ready"})") << u"%1 is ready"_s;
    QTest::newRow("no body") << 204 << QByteArray() << usual;
}

void ReplyCreateTest::theSentenceIsTheServicesOwn()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, sentence);
    server->reply(callPath(Call::CreateInstance), body.isEmpty() ? Reply::empty(status) : Reply::json(status, body));
    create();
    QTRY_COMPARE(server->heldCount(callPath(Call::Instances)), 1);
    QCOMPARE(bench->view().status(), sentence);
    QCOMPARE(bench->view().line(u"GDPS Name")->text(), QString());
}

void ReplyCreateTest::theListIsFetchedAndSetsTheSentenceAgain()
{
    create();
    QTRY_COMPARE(server->heldCount(callPath(Call::Instances)), 1);
    QCOMPARE(bench->view().status(), u"Neon Burst is ready."_s);
    server->reply(callPath(Call::Instances),
                  Reply::json(200, R"({"instances":[{"display_name":"Neon"},{"display_name":"Neon Burst"}]})"));
    server->release(callPath(Call::Instances));
    QTRY_COMPARE(bench->view().status(), u"Loaded 2 Tarnwick project(s)."_s);
    QCOMPARE(bench->view().row(1).constFirst(), u"Neon Burst"_s);
}

void ReplyCreateTest::theListIsNotFetchedTwice()
{
    bench->bringAbout(Call::Instances);
    QTRY_COMPARE(server->heldCount(callPath(Call::Instances)), 1);
    create();
    QTRY_COMPARE(bench->view().status(), u"Neon Burst is ready."_s);
    server->release(callPath(Call::Instances));
    QTRY_COMPARE(bench->view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(server->count(callPath(Call::Instances)), 1);
}

void ReplyCreateTest::afterAnUnlinkThereIsNoListToFetch()
{
    server->hold(callPath(Call::CreateInstance));
    create();
    QTRY_COMPARE(server->heldCount(callPath(Call::CreateInstance)), 1);
    bench->view().button(u"Unlink")->click();
    server->release(callPath(Call::CreateInstance));
    // The late reply is handled all the same, but without a token nothing is asked for.
    QTRY_COMPARE(bench->view().status(), u"Neon Burst is ready."_s);
    server->reply(callPath(Call::LinkStart), Reply::empty(500));
    bench->bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench->view().status(), u"Tarnwick returned HTTP 500."_s);
    QCOMPARE(server->count(callPath(Call::Instances)), 0);
}

void ReplyCreateTest::aFailureKeepsTheForm()
{
    server->reply(callPath(Call::CreateInstance),
                  Reply::json(422, R"({"message":"","error":"Bad name","instances":[]})"));
    create();
    const support::WindowView view = bench->view();
    QTRY_COMPARE(view.status(), u"Bad name"_s);
    QCOMPARE(view.line(u"GDPS Name")->text(), u"Neon Burst"_s);
    QCOMPARE(view.description()->toPlainText(), u"Two\nlines"_s);
    QCOMPARE(view.line(u"Tags")->text(), u"stars, cube"_s);
    QVERIFY(!publicBox(view)->isChecked());
    QVERIFY(maintenanceBox(view)->isChecked());
    QVERIFY(view.button(u"Create GDPS")->isEnabled());
    QVERIFY(view.button(u"Refresh")->isEnabled());
    QCOMPARE(server->count(callPath(Call::Instances)), 0);
}

QTEST_MAIN(ReplyCreateTest)
#include "reply_create_test.moc"
