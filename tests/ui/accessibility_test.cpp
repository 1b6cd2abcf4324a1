#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QObject>
#include <QRegularExpression>
#include <QScrollArea>
#include <QTabBar>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// What a screen reader is told, and that texts of the service are shown as they were sent.
class AccessibilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void everyFieldIsNamedByItsLabel_data();
    void everyFieldIsNamedByItsLabel();
    void theTableTheTabsAndTheListsOfChoicesHaveNames();
    void noLabelHasANameOfItsOwn();
    void aChangedStatusIsWhatItsLabelIsCalled();
    void theScrollAreasAreNoTabStops();
    void serviceTextsAreShownAsTheyWereSent();
    void aServiceMessageWithTagsIsShownAsText();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static QString nameOf(QWidget* widget)
    {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    }
};

void AccessibilityTest::everyFieldIsNamedByItsLabel_data()
{
    QTest::addColumn<QString>("label");
    for (const char* label :
         {"Tarnwick URL", "Link code", "GDPS Name", "Description", "Emoji", "Accent", "Tags", "Core", "Preset"}) {
        QTest::newRow(label) << QString::fromLatin1(label);
    }
}

void AccessibilityTest::everyFieldIsNamedByItsLabel()
{
    QFETCH(QString, label);
    Run run;
    run.start();
    auto* field = run.view().field<QWidget>(label);
    QVERIFY(field != nullptr);
    // Some kinds of fields are called by their contents; the label is what they have in common.
    const auto relations = QAccessible::queryAccessibleInterface(field)->relations(QAccessible::Label);
    QCOMPARE(relations.size(), 1);
    QCOMPARE(relations.constFirst().first->text(QAccessible::Name), label);
    QVERIFY(field->accessibleName().isEmpty());
}

void AccessibilityTest::theTableTheTabsAndTheListsOfChoicesHaveNames()
{
    Run run;
    run.start();
    QCOMPARE(nameOf(run.view().table()), u"Tarnwick projects"_s);
    // Qt 6.4 tells the current tab's title all the same.
    QCOMPARE(run.view().tabs()->tabBar()->accessibleName(), u"Sections"_s);
    QVERIFY(!nameOf(run.view().tabs()->tabBar()).isEmpty());
    for (const QString& label : {u"Core"_s, u"Preset"_s}) {
        QCOMPARE(nameOf(run.view().field<QComboBox>(label)->view()), label);
    }
}

void AccessibilityTest::noLabelHasANameOfItsOwn()
{
    Run run;
    run.start();
    const auto labels = run.window().findChildren<QLabel*>();
    QVERIFY(labels.size() > 20);
    for (const QLabel* label : labels) {
        QCOMPARE(label->accessibleName(), QString());
    }
}

void AccessibilityTest::aChangedStatusIsWhatItsLabelIsCalled()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QCOMPARE(nameOf(run.view().label(u"StatusText"_s)), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(nameOf(run.view().label(u"PrimaryValue"_s)), u"Signed in as Ann"_s);
    run.press(u"Unlink");
    QCOMPARE(nameOf(run.view().label(u"StatusText"_s)), u"Tarnwick desktop client unlinked."_s);
    QCOMPARE(nameOf(run.view().label(u"PrimaryValue"_s)), u"Not linked yet"_s);
}

void AccessibilityTest::theScrollAreasAreNoTabStops()
{
    Run run;
    run.start();
    for (int index = 0; index < 2; ++index) {
        QCOMPARE(run.view().tabs()->widget(index)->focusPolicy(), Qt::NoFocus);
    }
}

void AccessibilityTest::serviceTextsAreShownAsTheyWereSent()
{
    Run run;
    const QString markup = u"<b>Ann</b><img src=\"file:///etc/hosts\">&amp;"_s;
    const QJsonObject user{{u"display_name"_s, markup}, {u"plan_name"_s, markup}, {u"gdps_limit_label"_s, markup}};
    run.server.reply(callPath(Call::Session), Reply::json(200, QJsonObject{{u"user"_s, user}}));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().account(),
             (QStringList{u"Signed in as "_s + markup, u"Plan: "_s + markup, u"Limit: "_s + markup}));
    QList<QLabel*> labels = run.window().findChildren<QLabel*>(u"MutedValue"_s);
    labels.append(run.view().label(u"PrimaryValue"_s));
    QCOMPARE(labels.size(), 3);
    for (const QLabel* label : labels) {
        QCOMPARE(label->textFormat(), Qt::PlainText);
        // Every character takes up room; as markup, most of them would be gone.
        QVERIFY(label->sizeHint().width() >= label->fontMetrics().horizontalAdvance(label->text()));
    }
}

void AccessibilityTest::aServiceMessageWithTagsIsShownAsText()
{
    Run run;
    run.start();
    const QString message = u"<a href=\"file:///etc/hosts\">Try</a> <img src=x> &lt;"_s;
    run.server.reply(callPath(Call::LinkStart), Reply::json(500, QJsonObject{{u"message"_s, message}}));
    run.press(u"Generate Link Code");
    QTRY_COMPARE(run.view().status(), message);
    const QLabel* status = run.view().label(u"StatusText"_s);
    QCOMPARE(status->textFormat(), Qt::PlainText);
    QVERIFY(!status->hasSelectedText());
    QVERIFY(!status->openExternalLinks());
}

QTEST_MAIN(AccessibilityTest)
#include "accessibility_test.moc"
