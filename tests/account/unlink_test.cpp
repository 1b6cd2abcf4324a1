#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/enabled_watch.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// What "Unlink" forgets, and what it leaves alone.
class UnlinkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void theAccountIsForgotten();
    void theStateFileLosesTheTokenOnly();
    void theFormIsEmptied();
    void emojiAccentPresetAndUrlAreKept();
    void theServiceIsNotTold();
    void pollingEndsAndTheCodeIsForgotten();
    void theStepsComeInOrder();
    void unlinkingWorksInEveryState_data();
    void unlinkingWorksInEveryState();
    void theNextLinkUsesTheSameDeviceIdentifier();
    void anUnlinkedDesktopMayUnlinkAgain();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
};

void UnlinkTest::theAccountIsForgotten()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
    run.press(u"Unlink");
    QCOMPARE(run.view().status(), u"Tarnwick desktop client unlinked."_s);
    QCOMPARE(run.view().account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
    QCOMPARE(run.view().table()->rowCount(), 0);
    QCOMPARE(run.view().combo(u"Core")->count(), 1);
    QCOMPARE(run.view().combo(u"Core")->itemText(0), u"No cores available"_s);
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
    QVERIFY(!run.view().button(u"Refresh")->isEnabled());
    QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
    QVERIFY(!run.view().button(u"Create GDPS")->isEnabled());
}

void UnlinkTest::theStateFileLosesTheTokenOnly()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"Tarnwick URL")->setText(run.server.origin() + u"/"_s);
    run.press(u"Unlink");
    QCOMPARE(run.home().stateObject(),
             (QJsonObject{{u"origin"_s, run.server.origin()}, {u"device_id"_s, u"desk-1"_s}}));
}

void UnlinkTest::theFormIsEmptied()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().description()->setPlainText(u"Bright\nand loud"_s);
    run.view().line(u"Tags")->setText(u"stars"_s);
    run.view().checkBox(u"Show this GDPS in the public recent list")->setChecked(false);
    run.view().checkBox(u"Start this GDPS in maintenance mode")->setChecked(true);
    run.press(u"Unlink");
    QCOMPARE(run.view().line(u"GDPS Name")->text(), QString());
    QCOMPARE(run.view().description()->toPlainText(), QString());
    QCOMPARE(run.view().line(u"Tags")->text(), QString());
    QVERIFY(run.view().checkBox(u"Show this GDPS in the public recent list")->isChecked());
    QVERIFY(!run.view().checkBox(u"Start this GDPS in maintenance mode")->isChecked());
}

void UnlinkTest::emojiAccentPresetAndUrlAreKept()
{
    Run run;
    QVERIFY(run.startSignedIn());
    const QString typedUrl = u" "_s + run.server.origin() + u"/ "_s;
    run.view().line(u"Tarnwick URL")->setText(typedUrl);
    run.view().line(u"Emoji")->setText(u"⭐"_s);
    run.view().line(u"Accent")->setText(u"#123456"_s);
    run.view().combo(u"Preset")->setCurrentIndex(2);
    run.press(u"Unlink");
    QCOMPARE(run.view().line(u"Tarnwick URL")->text(), typedUrl);
    QCOMPARE(run.view().line(u"Emoji")->text(), u"⭐"_s);
    QCOMPARE(run.view().line(u"Accent")->text(), u"#123456"_s);
    QCOMPARE(run.view().combo(u"Preset")->currentText(), u"hardcore"_s);
}

void UnlinkTest::theServiceIsNotTold()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.forgetRequests();
    run.press(u"Unlink");
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(), 1);
    QCOMPARE(run.server.count(callPath(Call::LinkStart)), 1);
}

void UnlinkTest::pollingEndsAndTheCodeIsForgotten()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
    QVERIFY(run.pollTimer()->isActive());
    run.press(u"Unlink");
    QVERIFY(!run.pollTimer()->isActive());
    QCOMPARE(run.view().line(u"Link code")->text(), QString());
    run.press(u"Open Public Pairing Page");
    QCOMPARE(run.opened.last(), QUrl(run.server.origin() + u"/link/pc"_s));
    run.tick();
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::LinkPoll)), 0);
}

void UnlinkTest::theStepsComeInOrder()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().line(u"Tags")->setText(u"stars"_s);
    const QString statusBefore = run.view().status();
    QStringList steps;
    const auto note = [&steps](const QString& step) {
        return [&steps, step] {
            steps.append(step);
        };
    };

    connect(run.view().line(u"Link code"), &QLineEdit::textChanged, this, [&] {
        steps.append(u"code"_s);
        QVERIFY(!run.pollTimer()->isActive());
        QCOMPARE(run.view().table()->rowCount(), 1);
    });
    connect(run.view().line(u"GDPS Name"), &QLineEdit::textChanged, this, note(u"name"_s));
    connect(run.view().line(u"Tags"), &QLineEdit::textChanged, this, note(u"tags"_s));
    connect(run.view().combo(u"Core"), &QComboBox::currentTextChanged, this, [&](const QString& text) {
        if (!text.isEmpty()) { // the former items are being removed otherwise
            steps.append(u"cores"_s);
            QCOMPARE(run.view().table()->rowCount(), 1);
        }
    });
    // Emptying the table drops its selection, the first thing that makes the buttons follow.
    const support::EnabledWatch watch(run.view().button(u"Unlink"), [&](bool enabled) {
        steps.append(u"table"_s);
        QVERIFY(!enabled);
        QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
        QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
        QCOMPARE(run.view().status(), statusBefore);
    });
    run.press(u"Unlink");
    QCOMPARE(steps, (QStringList{u"code"_s, u"name"_s, u"tags"_s, u"cores"_s, u"table"_s}));
    QCOMPARE(run.view().account().constFirst(), u"Not linked yet"_s);
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
}

void UnlinkTest::unlinkingWorksInEveryState_data()
{
    QTest::addColumn<Call>("inFlight");
    for (const Call call : support::allCalls()) {
        QTest::newRow(support::callName(call)) << call;
    }
}

void UnlinkTest::unlinkingWorksInEveryState()
{
    QFETCH(Call, inFlight);
    Run run;
    if (inFlight == Call::Session) {
        run.server.hold(callPath(Call::Session));
        run.startLinked();
    } else {
        QVERIFY(run.startSignedIn());
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        run.view().line(u"GDPS Name")->setText(u"Neon"_s);
        run.server.hold(callPath(inFlight));
        switch (inFlight) {
        case Call::LinkStart:
            run.press(u"Generate Link Code");
            break;
        case Call::LinkPoll:
            run.tick();
            break;
        case Call::Instances:
            run.press(u"Refresh");
            break;
        case Call::CreateInstance:
            run.press(u"Create GDPS");
            break;
        case Call::Session:
            break;
        }
    }
    QTRY_COMPARE(run.server.heldCount(callPath(inFlight)), 1);

    run.forcePress(u"Unlink");
    QCOMPARE(run.view().status(), u"Tarnwick desktop client unlinked."_s);
    QCOMPARE(run.view().account(), (QStringList{u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}));
    QCOMPARE(run.view().table()->rowCount(), 0);
    QCOMPARE(run.view().line(u"Link code")->text(), QString());
    QCOMPARE(run.view().line(u"GDPS Name")->text(), QString());
    QVERIFY(!run.pollTimer()->isActive());
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    // Nothing is cancelled.
    QCOMPARE(run.server.heldCount(callPath(inFlight)), 1);
}

void UnlinkTest::theNextLinkUsesTheSameDeviceIdentifier()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.press(u"Unlink");
    run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    QCOMPARE(run.server.requests(callPath(Call::LinkStart)).constFirst().body, "device_id=desk-1");
    run.tick();
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.savedText(u"device_id"_s), u"desk-1"_s);
    QCOMPARE(run.savedText(u"access_token"_s), u"token-2"_s);
}

void UnlinkTest::anUnlinkedDesktopMayUnlinkAgain()
{
    Run run;
    run.start();
    run.forcePress(u"Unlink");
    QCOMPARE(run.view().status(), u"Tarnwick desktop client unlinked."_s);
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
    QCOMPARE(run.savedText(u"device_id"_s), u"desk-1"_s);
}

QTEST_MAIN(UnlinkTest)
#include "unlink_test.moc"
