// What the client does with the reply to a creation.
#include "support/client_test.h"

#include <memory>

using support::Call;
using support::CreationForm;
using support::Reply;

class ReplyCreateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        run = std::make_unique<support::ClientRun>();
        run->server.reply(callPath(Call::Session),
                          Reply::json(200, R"({"available_cores":[{"key":"a"},{"key":"b","label":"Core B"}]})"));
        QVERIFY(run->startSignedIn());
        run->server.hold(callPath(Call::Instances));
        run->server.forgetRequests();
        support::fillCreationForm(run->view());
    }

    void cleanup() { run.reset(); }

    void aSuccessEmptiesWhatDescribesOneGdpsAndKeepsTheChoices()
    {
        const support::WindowView view = run->view();
        run->press(u"Create GDPS");
        QTRY_COMPARE(view.status(), u"Neon Burst is ready."_s);
        const CreationForm left{.name = {},
                                .description = {},
                                .emoji = u"⭐"_s,
                                .accent = u"#123456"_s,
                                .tags = {},
                                .core = u"Core B"_s,
                                .preset = u"hardcore"_s,
                                .isListed = true,
                                .isInMaintenance = false};
        QCOMPARE(support::creationFormIn(view).words(), left.words());
        QCOMPARE(view.combo(u"Core")->count(), 2);
        QVERIFY(view.button(u"Create GDPS")->isEnabled());
    }

    void theFormIsResetBeforeTheSentenceAndTheList()
    {
        const support::WindowView view = run->view();
        QStringList order;
        const auto note = [&](const QString& step) {
            order.append(step);
            // Until the form is reset, the status text is unchanged and no list request is in flight.
            QCOMPARE(view.status(), u"Creating your GDPS from the Tarnwick desktop client..."_s);
            QVERIFY(view.button(u"Refresh")->isEnabled());
        };
        connect(view.line(u"GDPS Name"), &QLineEdit::textChanged, this, [&] { note(u"name"_s); });
        connect(view.description(), &QPlainTextEdit::textChanged, this, [&] { note(u"description"_s); });
        connect(view.line(u"Tags"), &QLineEdit::textChanged, this, [&] { note(u"tags"_s); });
        connect(view.checkBox(u"Show this GDPS in the public recent list"), &QCheckBox::toggled, this,
                [&] { note(u"public"_s); });
        connect(view.checkBox(u"Start this GDPS in maintenance mode"), &QCheckBox::toggled, this,
                [&] { note(u"maintenance"_s); });
        // The list is requested last: its button shows when, and the status text at that time is recorded.
        QStringList sentences;
        const support::EnabledWatch watch(view.button(u"Refresh"), [&](bool) { sentences.append(view.status()); });
        run->press(u"Create GDPS");
        QTRY_COMPARE(view.status(), u"Neon Burst is ready."_s);
        QCOMPARE(order, (QStringList{u"name"_s, u"description"_s, u"tags"_s, u"public"_s, u"maintenance"_s}));
        QCOMPARE(sentences, QStringList{u"Neon Burst is ready."_s});
    }

    void theSentenceIsTheServicesOwn_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("sentence");
        const QString usual = u"Tarnwick created your GDPS from the desktop client."_s;
        QTest::newRow("message") << QByteArray(R"({"message":"Done"})") << u"Done"_s;
        QTest::newRow("empty message") << QByteArray(R"({"message":""})") << QString();
        QTest::newRow("blank message") << QByteArray(R"({"message":" "})") << u" "_s;
        QTest::newRow("message is null") << QByteArray(R"({"message":null})") << usual;
        QTest::newRow("error only") << QByteArray(R"({"error":"Not shown"})") << usual;
        QTest::newRow("message with a placeholder") << QByteArray(R"({"message":"%1 is ready"})") << u"%1 is ready"_s;
        QTest::newRow("no body") << QByteArray() << usual;
    }

    void theSentenceIsTheServicesOwn()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, sentence);
        run->server.reply(callPath(Call::CreateInstance), Reply::json(200, body));
        run->press(u"Create GDPS");
        QTRY_COMPARE(run->server.heldCount(callPath(Call::Instances)), 1);
        QCOMPARE(run->view().status(), sentence);
        QCOMPARE(run->view().table()->rowCount(), 1); // the new project comes with the list
    }

    void theListIsNotFetchedTwice()
    {
        run->press(u"Refresh");
        QTRY_COMPARE(run->server.heldCount(callPath(Call::Instances)), 1);
        run->press(u"Create GDPS");
        QTRY_COMPARE(run->view().status(), u"Neon Burst is ready."_s);
        run->server.release(callPath(Call::Instances));
        QTRY_COMPARE(run->view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QVERIFY(run->markerComesBack());
        QCOMPARE(run->server.count(callPath(Call::Instances)), 1);
    }

private:
    std::unique_ptr<support::ClientRun> run;
};

TARNWICK_TEST(ReplyCreateTest)
#include "reply_create_test.moc"
