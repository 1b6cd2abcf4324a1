#include "support/client_test.h"

#include <QObject>

#include <optional>

using support::Call;
using support::callPath;
using support::Reply;

/// Which controls are enabled: this depends only on the link, on the requests in flight and on the current row.
class ControlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void controlsFollowTheThreeFacts_data()
    {
        QTest::addColumn<bool>("linked");
        QTest::addColumn<std::optional<Call>>("inFlight");
        QTest::addColumn<bool>("row");
        QTest::addColumn<QString>("disabled");
        const auto add = [](const char* name, bool linked, std::optional<Call> inFlight, bool row,
                            const char* disabled) {
            QTest::newRow(name) << linked << inFlight << row << QString::fromLatin1(disabled);
        };
        add("unlinked", false, std::nullopt, false, "refresh unlink open form");
        add("unlinked, a row", false, std::nullopt, true, "refresh unlink open form");
        add("unlinked, link start", false, Call::LinkStart, true, "generate refresh unlink open form");
        add("unlinked, link poll", false, Call::LinkPoll, true, "refresh unlink open form");
        add("unlinked, session", false, Call::Session, true, "refresh unlink open form");
        add("unlinked, instances", false, Call::Instances, true, "refresh unlink open form");
        add("unlinked, create", false, Call::CreateInstance, true, "refresh unlink open form");
        add("linked", true, std::nullopt, false, "open");
        add("linked, a row", true, std::nullopt, true, "");
        add("linked, link start", true, Call::LinkStart, true, "generate");
        add("linked, link poll", true, Call::LinkPoll, true, "");
        add("linked, session", true, Call::Session, true, "unlink");
        add("linked, instances", true, Call::Instances, true, "refresh");
        add("linked, create", true, Call::CreateInstance, true, "form");
    }

    void controlsFollowTheThreeFacts()
    {
        QFETCH(bool, linked);
        QFETCH(std::optional<Call>, inFlight);
        QFETCH(bool, row);
        QFETCH(QString, disabled);
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
        QCOMPARE(disabledIn(run), disabled);
    }

    void aRequestDisablesItsControlsUntilItsAnswer_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("during");
        QTest::addColumn<QString>("after");
        const auto add = [](Call call, const QString& during, const QString& afterFailure) {
            QTest::addRow("%s, success", support::callName(call)) << call << 200 << during << QString();
            QTest::addRow("%s, failure", support::callName(call)) << call << 500 << during << afterFailure;
        };
        add(Call::LinkStart, u"generate"_s, {});
        add(Call::LinkPoll, {}, {});
        add(Call::Session, u"unlink"_s, u"refresh unlink open form"_s);
        add(Call::Instances, u"refresh"_s, {});
        add(Call::CreateInstance, u"form"_s, {});
    }

    void aRequestDisablesItsControlsUntilItsAnswer()
    {
        QFETCH(Call, call);
        QFETCH(int, status);
        QFETCH(QString, during);
        QFETCH(QString, after);
        Run run;
        QVERIFY(prepare(run, call));
        QCOMPARE(disabledIn(run), QString());
        run.server.hold(callPath(call));
        bringAbout(run, call);
        if (call != Call::Session) { // the check only follows the reply to a poll
            QCOMPARE(disabledIn(run), during);
        }
        QTRY_COMPARE(run.server.heldCount(callPath(call)), 1);
        QCOMPARE(disabledIn(run), during);

        const QString before = run.view().status();
        if (status == 500) {
            run.server.reply(callPath(call), Reply::json(500, R"({"message":"Failed"})"));
        }
        run.server.release(callPath(call));
        if (call != Call::LinkPoll || status == 500) { // a pending poll does not change the text
            QTRY_VERIFY(run.view().status() != before);
        }
        QTRY_COMPARE(disabledIn(run), after);
    }

    void aTokenThatIsNotConfirmedYetCountsAsLinked()
    {
        Run run;
        run.startLinked();
        // No event has been handled since, so the session check is in flight.
        QCOMPARE(disabledIn(run), u"unlink open"_s);
    }

    void aChangedSelectionSetsEveryControlInOrder_data()
    {
        QTest::addColumn<bool>("linked");
        QTest::newRow("linked") << true;
        QTest::newRow("unlinked") << false;
    }

    void aChangedSelectionSetsEveryControlInOrder()
    {
        QFETCH(bool, linked);
        Run run;
        QVERIFY(run.startSignedIn());
        if (!linked) {
            run.press(u"Unlink");
            run.view().table()->insertRow(0);
            run.view().table()->selectRow(0);
        }
        const QString disabled = disabledIn(run);
        QCOMPARE(disabled, linked ? QString() : u"refresh unlink open form"_s);
        QStringList names;
        std::vector<std::unique_ptr<support::EnabledWatch>> watches;
        const auto controls = controlsIn(run.view());
        for (const auto& [name, control] : controls) {
            control->setEnabled(!control->isEnabled());
            const auto note = [&names, name = name](bool /*enabled*/) {
                names.append(name);
            };
            watches.push_back(std::make_unique<support::EnabledWatch>(control, note));
        }
        // The current row stays.
        run.view().table()->clearSelection();
        QCOMPARE(run.view().table()->currentRow(), 0);
        QCOMPARE(names, (QStringList{u"generate"_s, u"pairing"_s, u"refresh"_s, u"unlink"_s, u"open"_s, u"create"_s,
                                     u"name"_s, u"description"_s, u"emoji"_s, u"accent"_s, u"tags"_s, u"core"_s,
                                     u"preset"_s, u"public"_s, u"maintenance"_s}));
        QCOMPARE(disabledIn(run), disabled);
    }

private:
    using Run = support::ClientRun;

    /// Every control that can be enabled and disabled, with a short name.
    static QList<std::pair<QString, QWidget*>> controlsIn(const support::WindowView& view)
    {
        return {{u"generate"_s, view.button(u"Generate Link Code")},
                {u"pairing"_s, view.button(u"Open Public Pairing Page")},
                {u"refresh"_s, view.button(u"Refresh")},
                {u"unlink"_s, view.button(u"Unlink")},
                {u"open"_s, view.button(u"Open Selected Project")},
                {u"create"_s, view.button(u"Create GDPS")},
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
    /// What is disabled now: the names of controls, and the classes of all other widgets, which should always be
    /// enabled. "form" is the creation button with all its fields.
    static QString disabledIn(Run& run)
    {
        QStringList names;
        QList<QWidget*> others = run.window().findChildren<QWidget*>();
        const auto controls = controlsIn(run.view());
        for (const auto& [name, control] : controls) {
            others.removeOne(control);
            if (!control->isEnabled()) {
                names.append(name);
            }
        }
        for (const QWidget* other : others) {
            // Qt shows and hides its scroll buttons itself.
            if (!other->isEnabled() && other->parentWidget()->isEnabled() && !other->inherits("QToolButton")) {
                names.append(QString::fromLatin1(other->metaObject()->className()));
            }
        }
        return names.join(u' ').replace(u"create name description emoji accent tags core preset public maintenance"_s,
                                        u"form"_s);
    }
    /// Prepares a linked desktop so that only the press or the tick is missing.
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
        case Call::Session: // the approved poll starts the check
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
};

TARNWICK_TEST(ControlsTest)
#include "controls_test.moc"
