#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QAccessible>
#include <QApplication>
#include <QFocusFrame>
#include <QObject>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// The window without a mouse.
class KeyboardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void tabVisitsEveryControlInReadingOrder_data();
    void tabVisitsEveryControlInReadingOrder();
    void backtabGoesTheSameWayBack();
    void tabLeavesTheTableAndTheDescription();
    void arrowKeysWalkTheRows();
    void arrowKeysSwitchThePages();
    void spacePressesTheFocusedControl();
    void theFocusedFieldIsScrolledIntoView();
    void aClickedButtonThatDisablesItselfDoesNotScrollItsPage();
    void aFrameMarksTheFocusedControl();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static bool showActive(Run& run)
    {
        run.window().show();
        return QTest::qWaitForWindowActive(&run.window());
    }
    /// What a person calls the control: its label, else the name that a screen reader is told.
    static QString nameOf(QWidget* control)
    {
        const auto labels = control->window()->findChildren<QLabel*>();
        for (const QLabel* label : labels) {
            if (label->buddy() == control) {
                return label->text();
            }
        }
        return QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name);
    }
    /// The names of the widgets that the key visits, starting with the focused one, until it comes round.
    static QStringList visitedWith(Qt::Key key)
    {
        const QWidget* first = QApplication::focusWidget();
        QStringList names;
        do {
            names.append(nameOf(QApplication::focusWidget()));
            QTest::keyClick(QApplication::focusWidget(), key,
                            key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
        } while (QApplication::focusWidget() != first && names.size() < 50);
        return names;
    }
    static QStringList namesBeforeThePages(bool linked)
    {
        const QStringList link{u"Tarnwick URL"_s, u"Link code"_s, u"Generate Link Code"_s,
                               u"Open Public Pairing Page"_s};
        return linked ? link + QStringList{u"Refresh"_s, u"Unlink"_s} : link;
    }
    /// The tabs are called by the current one.
    static QStringList namesOfTheForm()
    {
        return {u"Create GDPS"_s,
                u"GDPS Name"_s,
                u"Description"_s,
                u"Emoji"_s,
                u"Accent"_s,
                u"Tags"_s,
                u"Core"_s,
                u"Preset"_s,
                u"Show this GDPS in the public recent list"_s,
                u"Start this GDPS in maintenance mode"_s,
                u"Create GDPS"_s};
    }
};

void KeyboardTest::tabVisitsEveryControlInReadingOrder_data()
{
    QTest::addColumn<bool>("linked");
    QTest::addColumn<int>("page");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("linked, list") << true << 0
                                  << namesBeforeThePages(true) + QStringList{u"Your GDPS List"_s,
                                                                             u"Tarnwick projects"_s,
                                                                             u"Open Selected Project"_s};
    QTest::newRow("linked, form") << true << 1 << namesBeforeThePages(true) + namesOfTheForm();
    // What is disabled is passed over.
    QTest::newRow("unlinked, list") << false << 0
                                    << namesBeforeThePages(false) +
                                           QStringList{u"Your GDPS List"_s, u"Tarnwick projects"_s};
    QTest::newRow("unlinked, form") << false << 1 << namesBeforeThePages(false) + QStringList{u"Create GDPS"_s};
}

void KeyboardTest::tabVisitsEveryControlInReadingOrder()
{
    QFETCH(bool, linked);
    QFETCH(int, page);
    QFETCH(QStringList, names);
    Run run;
    if (linked) {
        QVERIFY(run.startSignedIn());
    } else {
        run.start();
    }
    run.view().tabs()->setCurrentIndex(page);
    QVERIFY(showActive(run));
    run.view().line(u"Tarnwick URL")->setFocus();
    QCOMPARE(visitedWith(Qt::Key_Tab), names);
}

void KeyboardTest::backtabGoesTheSameWayBack()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().tabs()->setCurrentIndex(1);
    QVERIFY(showActive(run));
    run.view().button(u"Create GDPS")->setFocus();
    QStringList names = namesBeforeThePages(true) + namesOfTheForm();
    std::reverse(names.begin(), names.end());
    QCOMPARE(visitedWith(Qt::Key_Backtab), names);
}

void KeyboardTest::tabLeavesTheTableAndTheDescription()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(showActive(run));
    run.view().table()->setFocus();
    QTest::keyClick(run.view().table(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), run.view().button(u"Open Selected Project"));

    run.view().tabs()->setCurrentIndex(1);
    run.view().description()->setFocus();
    QTest::keyClick(run.view().description(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), run.view().line(u"Emoji"));
    QCOMPARE(run.view().description()->toPlainText(), QString());
}

void KeyboardTest::arrowKeysWalkTheRows()
{
    Run run;
    run.server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{},{},{}]})"));
    QVERIFY(run.startSignedIn());
    QVERIFY(showActive(run));
    run.view().table()->setFocus();
    QTest::keyClick(run.view().table(), Qt::Key_Down);
    QTest::keyClick(run.view().table(), Qt::Key_Down);
    QCOMPARE(run.view().table()->currentRow(), 2);
    QVERIFY(run.view().table()->selectionModel()->isRowSelected(2));
    QVERIFY(run.view().button(u"Open Selected Project")->isEnabled());
}

void KeyboardTest::arrowKeysSwitchThePages()
{
    Run run;
    run.start();
    QVERIFY(showActive(run));
    QTabBar* bar = run.view().tabs()->tabBar();
    bar->setFocus();
    QTest::keyClick(bar, Qt::Key_Right);
    QCOMPARE(run.view().tabs()->currentIndex(), 1);
    QTest::keyClick(bar, Qt::Key_Left);
    QCOMPARE(run.view().tabs()->currentIndex(), 0);
}

void KeyboardTest::spacePressesTheFocusedControl()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(showActive(run));
    QPushButton* open = run.view().button(u"Open Selected Project");
    open->setFocus();
    QTest::keyClick(open, Qt::Key_Space);
    QCOMPARE(run.opened.urls(), QList<QUrl>{QUrl(u"https://manage.example/neon"_s)});

    run.view().tabs()->setCurrentIndex(1);
    QCheckBox* maintenance = run.view().checkBox(u"Start this GDPS in maintenance mode");
    maintenance->setFocus();
    QTest::keyClick(maintenance, Qt::Key_Space);
    QVERIFY(maintenance->isChecked());
}

void KeyboardTest::theFocusedFieldIsScrolledIntoView()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().tabs()->setCurrentIndex(1);
    QVERIFY(showActive(run));
    run.window().resize(1060, 760);
    const auto* area = qobject_cast<QScrollArea*>(run.view().tabs()->widget(1));
    // The description is higher than what may be left for its page; its first line is what counts.
    const auto isInView = [area](const QWidget* field) {
        const QSize firstLine(field->width(), qMin(field->height(), 42));
        return area->viewport()->rect().contains(QRect(field->mapTo(area->viewport(), QPoint()), firstLine));
    };
    QPushButton* create = run.view().button(u"Create GDPS");
    QTRY_VERIFY(!isInView(create));
    run.view().tabs()->tabBar()->setFocus();
    while (!create->hasFocus()) {
        QWidget* before = QApplication::focusWidget();
        QTest::keyClick(before, Qt::Key_Tab);
        QVERIFY(QApplication::focusWidget() != before);
        QVERIFY2(isInView(QApplication::focusWidget()), qPrintable(nameOf(QApplication::focusWidget())));
    }
}

void KeyboardTest::aClickedButtonThatDisablesItselfDoesNotScrollItsPage()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.server.reply(callPath(Call::CreateInstance), Reply::never());
    run.view().line(u"GDPS Name")->setText(u"Neon"_s);
    run.view().tabs()->setCurrentIndex(1);
    QVERIFY(showActive(run));
    run.window().resize(1060, 760);
    const auto* area = qobject_cast<QScrollArea*>(run.view().tabs()->widget(1));
    QScrollBar* bar = area->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    bar->setValue(bar->maximum());

    QPushButton* create = run.view().button(u"Create GDPS");
    QTest::mouseClick(create, Qt::LeftButton);

    QVERIFY(!create->isEnabled());
    QVERIFY(QApplication::focusWidget() != create);
    QCOMPARE(bar->value(), bar->maximum());
}

void KeyboardTest::aFrameMarksTheFocusedControl()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(showActive(run));
    const QList<QWidget*> controls{run.view().line(u"Link code"), run.view().button(u"Unlink"),
                                   run.view().tabs()->tabBar(), run.view().table()};
    for (QWidget* control : controls) {
        control->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), control);
        const auto* frame = run.window().findChild<QFocusFrame*>();
        QVERIFY(frame != nullptr);
        QCOMPARE(frame->widget(), control);
        QVERIFY(frame->isVisible());
    }
    run.view().table()->clearFocus();
    QVERIFY(run.window().findChild<QFocusFrame*>()->isHidden());
}

QTEST_MAIN(KeyboardTest)
#include "keyboard_test.moc"
