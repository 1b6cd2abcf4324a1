#include "support/client_test.h"

#include <QProperty>
#include <QTimer>

using support::Call;
using support::callPath;
using support::Reply;

/// What "Unlink" clears, and what it keeps.
class UnlinkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theAccountIsForgotten()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.press(u"Unlink");
        QCOMPARE(run.view().status(), u"Tarnwick desktop client unlinked."_s);
        QCOMPARE(run.view().account(), notLinked());
        QCOMPARE(run.view().table()->rowCount(), 0);
        QCOMPARE(run.view().combo(u"Core")->count(), 1);
        QCOMPARE(run.view().combo(u"Core")->itemText(0), u"No cores available"_s);
        for (const QStringView button : {u"Unlink", u"Refresh", u"Open Selected Project", u"Create GDPS"}) {
            QVERIFY2(!run.view().button(button)->isEnabled(), qPrintable(button.toString()));
        }
    }

    void theStateFileLosesTheTokenOnly()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.view().line(u"Tarnwick URL")->setText(run.server.origin() + u"/"_s);
        run.press(u"Unlink");
        QCOMPARE(run.home().stateObject(),
                 (QJsonObject{{u"origin"_s, run.server.origin()}, {u"device_id"_s, u"desk-1"_s}}));
    }

    void theFormKeepsOnlyEmojiAccentAndPreset()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        support::fillCreationForm(run.view());
        const QString typedUrl = u" "_s + run.server.origin() + u"/ "_s;
        run.view().line(u"Tarnwick URL")->setText(typedUrl);
        run.press(u"Unlink");
        const support::CreationForm expected{.name = {},
                                             .description = {},
                                             .emoji = u"⭐"_s,
                                             .accent = u"#123456"_s,
                                             .tags = {},
                                             .core = u"No cores available"_s,
                                             .preset = u"hardcore"_s,
                                             .isListed = true,
                                             .isInMaintenance = false};
        QCOMPARE(support::creationFormIn(run.view()).words(), expected.words());
        QCOMPARE(run.view().line(u"Tarnwick URL")->text(), typedUrl);
    }

    void theServiceIsNotTold()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.server.forgetRequests();
        run.press(u"Unlink");
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(), 1);
        QCOMPARE(run.server.requests().constFirst().body, "device_id=desk-1");
    }

    void pollingEndsAndTheCodeIsForgotten_data()
    {
        QTest::addColumn<bool>("linked");
        QTest::newRow("linked") << true;
        QTest::newRow("not linked") << false;
    }

    void pollingEndsAndTheCodeIsForgotten()
    {
        QFETCH(bool, linked);
        Run run;
        if (linked) {
            QVERIFY(run.startSignedIn());
        } else {
            run.start();
        }
        QVERIFY(run.showLinkCode(u"TWPC-1"_s, u"https://pair.example/1"_s));
        run.forcePress(u"Unlink");
        QVERIFY(!run.pollTimer()->isActive());
        QCOMPARE(run.view().line(u"Link code")->text(), QString());
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.last(), QUrl(run.server.origin() + u"/link/pc"_s));
        run.tick();
        QVERIFY(run.markerComesBack());
        QCOMPARE(run.server.count(callPath(Call::LinkPoll)), 0);
    }

    void theStepsComeInOrder()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        support::fillCreationForm(run.view());
        QStringList steps;
        const auto note = [&steps](const QString& step) {
            return [&steps, step] {
                steps.append(step);
            };
        };
        const support::WindowView view = run.view();
        const auto timer = run.pollTimer()->bindableActive().addNotifier(note(u"timer"_s));
        connect(view.line(u"Link code"), &QLineEdit::textChanged, this, note(u"code"_s));
        connect(view.line(u"GDPS Name"), &QLineEdit::textChanged, this, note(u"name"_s));
        connect(view.description(), &QPlainTextEdit::textChanged, this, note(u"description"_s));
        connect(view.line(u"Tags"), &QLineEdit::textChanged, this, note(u"tags"_s));
        connect(view.checkBox(u"Show this GDPS in the public recent list"), &QCheckBox::toggled, this,
                note(u"listed"_s));
        connect(view.checkBox(u"Start this GDPS in maintenance mode"), &QCheckBox::toggled, this,
                note(u"maintenance"_s));
        connect(view.combo(u"Core"), &QComboBox::currentTextChanged, this,
                [&steps](const QString& text) { steps.append(text); });
        // Emptying the table clears its selection, which is the first change that updates the buttons.
        const support::EnabledWatch button(view.button(u"Unlink"), [&](bool enabled) {
            steps.append(enabled ? u"linked"_s : u"table"_s);
            QCOMPARE(run.view().account().constFirst(), u"Signed in as Ann"_s);
            QCOMPARE(run.savedText(u"access_token"_s), u"token-1"_s);
            QVERIFY(run.view().status() != u"Tarnwick desktop client unlinked."_s);
        });
        run.press(u"Unlink");
        QCOMPARE(steps, (QStringList{u"timer"_s, u"code"_s, u"name"_s, u"description"_s, u"tags"_s, u"listed"_s,
                                     u"maintenance"_s, QString(), u"No cores available"_s, u"table"_s}));
    }

private:
    using Run = support::ClientRun;

    static QStringList notLinked() { return {u"Not linked yet"_s, u"Plan: -"_s, u"Limit: -"_s}; }
};

TARNWICK_TEST(UnlinkTest)
#include "unlink_test.moc"
