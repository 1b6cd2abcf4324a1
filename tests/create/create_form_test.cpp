#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/enabled_watch.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// What the creation form says and does around its request.
class CreateFormTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void anUnlinkedDesktopIsTurnedAwayFirst_data();
    void anUnlinkedDesktopIsTurnedAwayFirst();
    void aMissingNameIsTurnedAway_data();
    void aMissingNameIsTurnedAway();
    void theProgressTextComesBeforeTheRequest();
    void aSecondPressWhileCreatingChangesOnlyTheStatusText();
    void aMissingNameIsNoticedEvenWhileCreating();
    void theFormKeepsItsContentsWhileTheRequestIsInFlight();
    void afterASuccessTheFormMakesRoomForTheNext();
    void afterAFailureTheFormKeepsEverything_data();
    void afterAFailureTheFormKeepsEverything();
    void anUnreachableServiceIsReportedAndTheFormKept();
    void aFailureKeepsTheLink();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
    static constexpr QStringView publicBox = u"Show this GDPS in the public recent list";
    static constexpr QStringView maintenanceBox = u"Start this GDPS in maintenance mode";

    static void fillForm(const Run& run)
    {
        const support::WindowView view = run.view();
        view.line(u"GDPS Name")->setText(u" Neon "_s);
        view.description()->setPlainText(u"Bright\nand loud"_s);
        view.line(u"Emoji")->setText(u"⭐"_s);
        view.line(u"Accent")->setText(u"#123456"_s);
        view.line(u"Tags")->setText(u"stars"_s);
        view.combo(u"Core")->setCurrentIndex(1);
        view.combo(u"Preset")->setCurrentIndex(2);
        view.checkBox(publicBox)->setChecked(false);
        view.checkBox(maintenanceBox)->setChecked(true);
    }
    /// Everything that the form holds, as texts.
    static QStringList formOf(const Run& run)
    {
        const support::WindowView view = run.view();
        return {view.line(u"GDPS Name")->text(),
                view.description()->toPlainText(),
                view.line(u"Emoji")->text(),
                view.line(u"Accent")->text(),
                view.line(u"Tags")->text(),
                view.combo(u"Core")->currentText(),
                view.combo(u"Preset")->currentText(),
                view.checkBox(publicBox)->isChecked() ? u"public"_s : u"hidden"_s,
                view.checkBox(maintenanceBox)->isChecked() ? u"maintenance"_s : u"open"_s};
    }
    static bool startWithTwoCores(Run& run)
    {
        run.server.reply(callPath(Call::Session), Reply::json(200, R"({"available_cores":[{"key":"a"},{"key":"b"}]})"));
        return run.startSignedIn();
    }
    static QString creatingText() { return u"Creating your GDPS from the Tarnwick desktop client..."_s; }
};

void CreateFormTest::anUnlinkedDesktopIsTurnedAwayFirst_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("without a name") << QString();
    QTest::newRow("with a name") << u"Neon"_s;
}

void CreateFormTest::anUnlinkedDesktopIsTurnedAwayFirst()
{
    QFETCH(QString, name);
    Run run;
    run.start();
    run.view().line(u"GDPS Name")->setText(name);
    run.forcePress(u"Create GDPS");
    QCOMPARE(run.view().status(), u"Link the desktop client first."_s);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::CreateInstance)), 0);
    QCOMPARE(run.view().line(u"GDPS Name")->text(), name);
}

void CreateFormTest::aMissingNameIsTurnedAway_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << u"   "_s;
    QTest::newRow("tabs and a wide blank") << u"\t\u3000"_s;
}

void CreateFormTest::aMissingNameIsTurnedAway()
{
    QFETCH(QString, name);
    Run run;
    QVERIFY(run.startSignedIn());
    fillForm(run);
    run.view().line(u"GDPS Name")->setText(name);
    const QStringList before = formOf(run);
    run.view().tabs()->setCurrentIndex(1);
    run.window().show();
    QVERIFY(QTest::qWaitForWindowActive(&run.window()));
    run.view().line(u"Accent")->setFocus();
    QVERIFY(run.view().line(u"Accent")->hasFocus());
    run.press(u"Create GDPS");
    QCOMPARE(run.view().status(), u"Enter a GDPS name first."_s);
    QCOMPARE(formOf(run), before);
    QVERIFY(run.view().button(u"Create GDPS")->isEnabled());
    QVERIFY(run.view().line(u"Accent")->hasFocus());
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::CreateInstance)), 0);
}

void CreateFormTest::theProgressTextComesBeforeTheRequest()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.server.hold(callPath(Call::CreateInstance));
    QString statusWhenSending;
    const support::EnabledWatch watch(run.view().button(u"Create GDPS"), [&](bool enabled) {
        QVERIFY(!enabled);
        statusWhenSending = run.view().status();
    });
    run.press(u"Create GDPS");
    QCOMPARE(statusWhenSending, creatingText());
    QTRY_COMPARE(run.server.heldCount(callPath(Call::CreateInstance)), 1);
    QCOMPARE(run.view().status(), creatingText());
}

void CreateFormTest::aSecondPressWhileCreatingChangesOnlyTheStatusText()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.server.hold(callPath(Call::CreateInstance));
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::CreateInstance)), 1);
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    const QStringList before = formOf(run);

    run.forcePress(u"Create GDPS");
    QCOMPARE(run.view().status(), creatingText());
    QCOMPARE(formOf(run), before);
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::CreateInstance)), 1);
    // The reply of the first press decides what comes next.
    run.server.release(callPath(Call::CreateInstance));
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.view().line(u"GDPS Name")->text(), QString());
}

void CreateFormTest::aMissingNameIsNoticedEvenWhileCreating()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.server.hold(callPath(Call::CreateInstance));
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::CreateInstance)), 1);
    run.view().line(u"GDPS Name")->clear();
    run.forcePress(u"Create GDPS");
    QCOMPARE(run.view().status(), u"Enter a GDPS name first."_s);
}

void CreateFormTest::theFormKeepsItsContentsWhileTheRequestIsInFlight()
{
    Run run;
    QVERIFY(startWithTwoCores(run));
    fillForm(run);
    const QStringList before = formOf(run);
    run.server.hold(callPath(Call::CreateInstance));
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::CreateInstance)), 1);
    QCOMPARE(formOf(run), before);
    QVERIFY(!run.view().button(u"Create GDPS")->isEnabled());
    QVERIFY(!run.view().line(u"GDPS Name")->isEnabled());
}

void CreateFormTest::afterASuccessTheFormMakesRoomForTheNext()
{
    Run run;
    QVERIFY(startWithTwoCores(run));
    fillForm(run);
    run.server.hold(callPath(Call::Instances));
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Instances)), 1);
    QCOMPARE(run.view().status(), u"Neon Burst is ready."_s);
    QCOMPARE(formOf(run), (QStringList{QString(), QString(), u"⭐"_s, u"#123456"_s, QString(), u"b"_s, u"hardcore"_s,
                                       u"public"_s, u"open"_s}));
    QVERIFY(run.view().button(u"Create GDPS")->isEnabled());
}

void CreateFormTest::afterAFailureTheFormKeepsEverything_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("shown");
    QTest::newRow("rejected") << 422 << QByteArray(R"({"message":"","error":"Bad name"})") << u"Bad name"_s;
    QTest::newRow("limit") << 403 << QByteArray(R"({"message":"Limit reached"})") << u"Limit reached"_s;
    QTest::newRow("server error") << 500 << QByteArray("oops") << u"Tarnwick returned HTTP 500."_s;
}

void CreateFormTest::afterAFailureTheFormKeepsEverything()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, shown);
    Run run;
    QVERIFY(startWithTwoCores(run));
    fillForm(run);
    const QStringList before = formOf(run);
    run.server.reply(callPath(Call::CreateInstance), Reply::json(status, body));
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.view().status(), shown);
    QCOMPARE(formOf(run), before);
    QVERIFY(run.view().button(u"Create GDPS")->isEnabled());
    QVERIFY(run.view().line(u"GDPS Name")->isEnabled());
    QVERIFY(run.markerComesBack());
    QCOMPARE(run.server.count(callPath(Call::CreateInstance)), 1);
    QCOMPARE(run.server.count(callPath(Call::Instances)), 1);
}

void CreateFormTest::anUnreachableServiceIsReportedAndTheFormKept()
{
    Run run;
    QVERIFY(startWithTwoCores(run));
    fillForm(run);
    const QStringList before = formOf(run);
    support::ScriptedServer gone;
    run.view().line(u"Tarnwick URL")->setText(gone.origin());
    gone.stop();
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.view().status(), u"Connection refused"_s);
    QCOMPARE(formOf(run), before);
    QVERIFY(run.view().button(u"Create GDPS")->isEnabled());
}

void CreateFormTest::aFailureKeepsTheLink()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.server.reply(callPath(Call::CreateInstance), Reply::json(401, R"({"message":"Sign in again."})"));
    run.press(u"Create GDPS");
    QTRY_COMPARE(run.view().status(), u"Sign in again."_s);
    QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
    QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
    QCOMPARE(run.view().table()->rowCount(), 1);
}

QTEST_MAIN(CreateFormTest)
#include "create_form_test.moc"
