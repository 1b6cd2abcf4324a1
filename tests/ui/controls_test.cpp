#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

#include <optional>

using support::Call;
using support::callPath;
using support::Reply;

/// Which controls can be used when: a pure function of the link, of what is in flight and of the current row.
class ControlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void controlsFollowTheThreeFacts_data();
    void controlsFollowTheThreeFacts();
    void aRequestDisablesItsControlsAtOnce_data();
    void aRequestDisablesItsControlsAtOnce();
    void anAnswerFreesItsControls_data();
    void anAnswerFreesItsControls();
    void aTokenThatIsNotConfirmedYetCountsAsLinked();
    void theSelectionSignalComputesAnew();
    void aListWithoutProjectsLeavesNothingToOpen();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
    using Names = QStringList;

    static QList<std::pair<QString, QWidget*>> formControls(const support::WindowView& view)
    {
        return {{u"create"_s, view.button(u"Create GDPS")},
                {u"name"_s, view.line(u"GDPS Name")},
                {u"description"_s, view.description()},
                {u"emoji"_s, view.line(u"Emoji")},
                {u"accent"_s, view.line(u"Accent")},
                {u"tags"_s, view.line(u"Tags")},
                {u"core"_s, view.combo(u"Core")},
                {u"preset"_s, view.combo(u"Preset")},
                {u"public"_s, view.checkBox(u"Show this GDPS in the public recent list")},
                {u"maintenance"_s, view.checkBox(u"Start this GDPS in maintenance mode")}};
    }
    /// Everything that a person could use, by a short name.
    static QList<std::pair<QString, QWidget*>> allControls(const support::WindowView& view)
    {
        return QList<std::pair<QString, QWidget*>>{{u"generate"_s, view.button(u"Generate Link Code")},
                                                   {u"pairing"_s, view.button(u"Open Public Pairing Page")},
                                                   {u"refresh"_s, view.button(u"Refresh")},
                                                   {u"unlink"_s, view.button(u"Unlink")},
                                                   {u"open"_s, view.button(u"Open Selected Project")}} +
               formControls(view) +
               QList<std::pair<QString, QWidget*>>{{u"url"_s, view.line(u"Tarnwick URL")},
                                                   {u"code"_s, view.line(u"Link code")},
                                                   {u"table"_s, view.table()},
                                                   {u"tabs"_s, view.tabs()},
                                                   {u"list page"_s, view.tabs()->widget(0)},
                                                   {u"create page"_s, view.tabs()->widget(1)}};
    }
    /// The names of those that cannot be used at the moment.
    static Names disabledOf(const support::WindowView& view)
    {
        Names names;
        const auto controls = allControls(view);
        for (const auto& [name, control] : controls) {
            if (!control->isEnabled()) {
                names.append(name);
            }
        }
        return names;
    }
    static Names formNames(const support::WindowView& view)
    {
        Names names;
        const auto controls = formControls(view);
        for (const auto& [name, control] : controls) {
            names.append(name);
        }
        return names;
    }
    /// Brings a signed-in desktop to the point at which the button or the tick is all that is missing.
    static bool prepare(Run& run, Call call)
    {
        if (!run.startSignedIn() || !run.showLinkCode(u"TWPC-1"_s)) {
            return false;
        }
        run.pollTimer()->setInterval(600000);
        run.view().line(u"GDPS Name")->setText(u"Neon"_s);
        if (call == Call::Session) {
            run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"token-2"})"));
        }
        return true;
    }
    static void bringAbout(Run& run, Call call)
    {
        switch (call) {
        case Call::LinkStart:
            run.press(u"Generate Link Code");
            break;
        case Call::LinkPoll:
        case Call::Session: // the approved poll brings about the check
            run.tick();
            break;
        case Call::Instances:
            run.press(u"Refresh");
            break;
        case Call::CreateInstance:
            run.press(u"Create GDPS");
            break;
        }
    }
    static Names disabledDuring(Call call, const support::WindowView& view)
    {
        switch (call) {
        case Call::LinkStart:
            return {u"generate"_s};
        case Call::LinkPoll:
            return {};
        case Call::Session:
            return {u"unlink"_s};
        case Call::Instances:
            return {u"refresh"_s};
        case Call::CreateInstance:
            return formNames(view);
        }
        return {};
    }
    static void addCalls()
    {
        QTest::addColumn<Call>("call");
        for (const Call call : support::allCalls()) {
            QTest::newRow(support::callName(call)) << call;
        }
    }
};

void ControlsTest::controlsFollowTheThreeFacts_data()
{
    QTest::addColumn<bool>("linked");
    QTest::addColumn<std::optional<Call>>("inFlight");
    QTest::addColumn<bool>("row");
    QList<std::optional<Call>> inFlight{std::nullopt};
    for (const Call call : support::allCalls()) {
        inFlight.append(call);
    }
    for (const bool linked : {false, true}) {
        for (const auto& call : inFlight) {
            for (const bool row : {false, true}) {
                QTest::addRow("%s, %s, %s", linked ? "linked" : "unlinked", call ? support::callName(*call) : "nothing",
                              row ? "a row" : "no row")
                    << linked << call << row;
            }
        }
    }
}

void ControlsTest::controlsFollowTheThreeFacts()
{
    QFETCH(bool, linked);
    QFETCH(std::optional<Call>, inFlight);
    QFETCH(bool, row);
    Run run;
    run.server.reply(callPath(Call::Instances), Reply::json(200, "{}"));
    QVERIFY(prepare(run, inFlight.value_or(Call::Instances)));
    if (inFlight) {
        run.server.hold(callPath(*inFlight));
        bringAbout(run, *inFlight);
        QTRY_COMPARE(run.server.heldCount(callPath(*inFlight)), 1);
    }
    if (!linked) {
        run.forcePress(u"Unlink");
    }
    if (row) {
        run.view().table()->insertRow(0);
        run.view().table()->selectRow(0);
    }
    QCOMPARE(run.view().table()->currentRow(), row ? 0 : -1);

    Names expected;
    if (inFlight == Call::LinkStart) {
        expected.append(u"generate"_s);
    }
    if (!linked || inFlight == Call::Instances) {
        expected.append(u"refresh"_s);
    }
    if (!linked || inFlight == Call::Session) {
        expected.append(u"unlink"_s);
    }
    if (!linked || !row) {
        expected.append(u"open"_s);
    }
    if (!linked || inFlight == Call::CreateInstance) {
        expected.append(formNames(run.view()));
    }
    QCOMPARE(disabledOf(run.view()), expected);

    const auto labels = run.window().findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        QVERIFY2(label->isEnabled(), qPrintable(label->text()));
    }
}

void ControlsTest::aRequestDisablesItsControlsAtOnce_data()
{
    addCalls();
}

void ControlsTest::aRequestDisablesItsControlsAtOnce()
{
    QFETCH(Call, call);
    Run run;
    if (call == Call::Session) {
        run.startLinked();
        QCOMPARE(disabledOf(run.view()), (Names{u"unlink"_s, u"open"_s}));
        return;
    }
    QVERIFY(prepare(run, call));
    QCOMPARE(disabledOf(run.view()), Names());
    bringAbout(run, call);
    // No event has been handled since.
    QCOMPARE(disabledOf(run.view()), disabledDuring(call, run.view()));
}

void ControlsTest::anAnswerFreesItsControls_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<bool>("success");
    for (const Call call : support::allCalls()) {
        QTest::addRow("%s, success", support::callName(call)) << call << true;
        QTest::addRow("%s, failure", support::callName(call)) << call << false;
    }
}

void ControlsTest::anAnswerFreesItsControls()
{
    QFETCH(Call, call);
    QFETCH(bool, success);
    Run run;
    QVERIFY(prepare(run, call));
    run.server.hold(callPath(call));
    bringAbout(run, call);
    QTRY_COMPARE(run.server.heldCount(callPath(call)), 1);
    QCOMPARE(disabledOf(run.view()), disabledDuring(call, run.view()));

    const QString before = run.view().status();
    if (!success) {
        run.server.reply(callPath(call), Reply::json(500, R"({"message":"Failed"})"));
    }
    run.server.release(callPath(call));
    QTRY_VERIFY(run.view().status() != before);
    if (success) {
        // A session check or a creation is followed by a fetch.
        QTRY_COMPARE(disabledOf(run.view()), Names());
    } else {
        QCOMPARE(run.view().status(), u"Failed"_s);
        const Names afterSigningOut = Names{u"refresh"_s, u"unlink"_s, u"open"_s} + formNames(run.view());
        QCOMPARE(disabledOf(run.view()), call == Call::Session ? afterSigningOut : Names());
    }
}

void ControlsTest::aTokenThatIsNotConfirmedYetCountsAsLinked()
{
    Run run;
    run.server.hold(callPath(Call::Session));
    run.startLinked();
    QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
    QCOMPARE(disabledOf(run.view()), (Names{u"unlink"_s, u"open"_s}));
}

void ControlsTest::theSelectionSignalComputesAnew()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QPushButton* open = run.view().button(u"Open Selected Project");
    QVERIFY(open->isEnabled());
    run.view().table()->selectionModel()->clearCurrentIndex();
    run.view().table()->clearSelection();
    QVERIFY(!open->isEnabled());
    run.view().table()->selectRow(0);
    QVERIFY(open->isEnabled());
}

void ControlsTest::aListWithoutProjectsLeavesNothingToOpen()
{
    Run run;
    run.server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[]})"));
    QVERIFY(run.startSignedIn());
    QCOMPARE(disabledOf(run.view()), Names{u"open"_s});
}

QTEST_MAIN(ControlsTest)
#include "controls_test.moc"
