#include "support/client_test.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QFocusFrame>
#include <QObject>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>

using support::Call;
using support::callPath;
using support::Reply;

/// Using the window without a mouse.
class KeyboardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tabVisitsEveryControlInReadingOrder_data()
    {
        QTest::addColumn<bool>("linked");
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("names");
        const QString link = u"Tarnwick URL, Link code, Generate Link Code, Open Public Pairing Page, "_s;
        QTest::newRow("linked, list") << true << 0
                                      << link + u"Refresh, Unlink, Your GDPS List, Tarnwick projects, "
                                                "Open Selected Project"_s;
        // The tab bar's name is the current tab's title.
        QTest::newRow("linked, form") << true << 1
                                      << link + u"Refresh, Unlink, Create GDPS, GDPS Name, Description, Emoji, Accent, "
                                                "Tags, Core, Preset, Show this GDPS in the public recent list, "
                                                "Start this GDPS in maintenance mode, Create GDPS"_s;
        // Tab skips what is disabled.
        QTest::newRow("unlinked, list") << false << 0 << link + u"Your GDPS List, Tarnwick projects"_s;
        QTest::newRow("unlinked, form") << false << 1 << link + u"Create GDPS"_s;
    }

    void tabVisitsEveryControlInReadingOrder()
    {
        QFETCH(bool, linked);
        QFETCH(int, page);
        QFETCH(QString, names);
        Run run;
        if (linked) {
            QVERIFY(run.startSignedIn());
        } else {
            run.start();
        }
        run.view().tabs()->setCurrentIndex(page);
        QVERIFY(showActive(run));
        run.view().line(u"Tarnwick URL")->setFocus();
        QCOMPARE(visitedWithTab(), names);
    }

    void theLinkCodeCanBeCopiedButNotTyped()
    {
        Run run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        QLineEdit* code = run.view().line(u"Link code");
        QTest::keyClicks(code, u"abc"_s);
        QTest::keyClick(code, Qt::Key_Backspace);
        QCOMPARE(code->text(), u"TWPC-1"_s);

        QApplication::clipboard()->setText(u"something else"_s);
        QTest::keySequence(code, QKeySequence::SelectAll);
        QTest::keySequence(code, QKeySequence::Copy);
        QCOMPARE(QApplication::clipboard()->text(), u"TWPC-1"_s);
        QTest::keySequence(code, QKeySequence::Cut);
        QCOMPARE(code->text(), u"TWPC-1"_s);
    }

    void theFocusedFieldIsScrolledIntoView()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.view().tabs()->setCurrentIndex(1);
        QVERIFY(showActive(run));
        run.window().resize(1060, 760);
        const auto* area = qobject_cast<QScrollArea*>(run.view().tabs()->widget(1));
        // A long text makes the viewport lower than the description, of which only the first line has to be visible.
        run.view().label(u"StatusText"_s)->setText(u"Maintenance\n"_s.repeated(6));
        QTRY_VERIFY(area->viewport()->height() < run.view().description()->height());
        const auto isInView = [area](const QWidget* field) {
            const QSize firstLine(field->width(), qMin(field->height(), 42));
            return area->viewport()->rect().contains(QRect(field->mapTo(area->viewport(), QPoint()), firstLine));
        };
        QPushButton* create = run.view().button(u"Create GDPS");
        QTRY_VERIFY(!isInView(create));
        run.view().tabs()->tabBar()->setFocus();
        const QList<std::pair<QWidget*, Qt::KeyboardModifier>> ways{{create, Qt::NoModifier},
                                                                    {run.view().line(u"GDPS Name"), Qt::ShiftModifier}};
        for (const auto& [last, modifier] : ways) {
            while (!last->hasFocus()) {
                QWidget* before = QApplication::focusWidget();
                QTest::keyClick(before, Qt::Key_Tab, modifier);
                QVERIFY(QApplication::focusWidget() != before);
                QVERIFY2(isInView(QApplication::focusWidget()), qPrintable(nameOf(QApplication::focusWidget())));
            }
        }
        // Without a key, as a screen reader does it: then Qt itself scrolls nothing.
        run.view().description()->setFocus();
        QVERIFY(isInView(run.view().description()));
    }

    void theTableIsInViewWhileItsRowsAreWalked_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("smallest") << QSize(1060, 760);
        QTest::newRow("at start") << QSize(1220, 860);
    }

    void theTableIsInViewWhileItsRowsAreWalked()
    {
        QFETCH(QSize, size);
        Run run;
        run.server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{},{},{},{},{},{},{},{}]})"));
        QVERIFY(run.startSignedIn());
        run.window().resize(size);
        QVERIFY(showActive(run));
        QTableWidget* table = run.view().table();
        const QWidget* viewport = qobject_cast<QScrollArea*>(run.view().tabs()->widget(0))->viewport();
        const auto placeOf = [viewport](const QWidget* inside, const QRect& part) {
            return QRect(inside->mapTo(viewport, part.topLeft()), part.size());
        };
        run.view().tabs()->tabBar()->setFocus();
        QTest::keyClick(run.view().tabs()->tabBar(), Qt::Key_Tab);
        QVERIFY(table->hasFocus());
        QVERIFY(viewport->rect().contains(placeOf(table, table->rect())));
        for (int row = 1; row < table->rowCount(); ++row) {
            QTest::keyClick(table, Qt::Key_Down);
            QCOMPARE(table->currentRow(), row);
            const QRect cell = table->visualItemRect(table->currentItem());
            QVERIFY(table->viewport()->rect().contains(cell));
            QVERIFY(viewport->rect().contains(placeOf(table->viewport(), cell)));
        }
        QTest::keyClick(table, Qt::Key_Tab);
        QVERIFY(run.view().button(u"Open Selected Project")->hasFocus());
        QTest::keyClick(run.view().button(u"Open Selected Project"), Qt::Key_Tab, Qt::ShiftModifier);
        QVERIFY(viewport->rect().contains(placeOf(table, table->rect())));
    }

    void aFieldUnderTheMouseStaysWhereItIs()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QScrollBar* bar = formScrolledDown(run);
        const QLineEdit* tags = run.view().line(u"Tags");
        const QWidget* viewport = qobject_cast<QScrollArea*>(run.view().tabs()->widget(1))->viewport();
        bar->setValue(bar->value() + tags->mapTo(viewport, tags->rect().center()).y());
        const int before = bar->value();
        const QPoint lowerHalf = tags->mapTo(&run.window(), tags->rect().center() + QPoint(0, 5));
        QTest::mouseClick(run.window().windowHandle(), Qt::LeftButton, {}, lowerHalf);
        QVERIFY(tags->hasFocus());
        QCOMPARE(bar->value(), before);
    }

    void comingBackFromAnotherWindowDoesNotScrollThePage()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.view().line(u"GDPS Name")->setFocus();
        const QScrollBar* bar = formScrolledDown(run);
        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        run.window().activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&run.window()));
        QTRY_VERIFY(run.view().line(u"GDPS Name")->hasFocus());
        QVERIFY(bar->value() > 0 && bar->value() == bar->maximum());
    }

    void aFrameMarksTheFocusedControl()
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

    void aPopUpListIsNotFramed()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.view().tabs()->setCurrentIndex(1);
        QVERIFY(showActive(run));
        QComboBox* preset = run.view().combo(u"Preset");
        preset->setFocus();
        const auto* frame = run.window().findChild<QFocusFrame*>();
        QCOMPARE(frame->widget(), preset);
        {
            // The offscreen platform prints a message about pop-ups.
            const support::MessageCatcher platform;
            preset->showPopup();
            QTRY_VERIFY(preset->view()->hasFocus());
        }
        QCOMPARE(frame->widget(), nullptr);
        QVERIFY(frame->isHidden());
        preset->hidePopup();
    }

private:
    using Run = support::ClientRun;

    static bool showActive(Run& run)
    {
        run.window().show();
        return QTest::qWaitForWindowActive(&run.window());
    }
    /// Shows the form's page in a window that is too low for it, and scrolls to its end.
    static QScrollBar* formScrolledDown(Run& run)
    {
        run.view().tabs()->setCurrentIndex(1);
        run.window().resize(1060, 760);
        QScrollBar* bar = qobject_cast<QScrollArea*>(run.view().tabs()->widget(1))->verticalScrollBar();
        if (showActive(run) && support::waitFor([bar] { return bar->maximum() > 0; })) {
            bar->setValue(bar->maximum());
        }
        return bar;
    }
    /// The control's label, else its accessible name.
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
    /// The names of the widgets that Tab visits, from the focused one until the focus returns to it.
    static QString visitedWithTab()
    {
        const QWidget* first = QApplication::focusWidget();
        QStringList names;
        do {
            names.append(nameOf(QApplication::focusWidget()));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (QApplication::focusWidget() != first && names.size() < 50);
        return names.join(u", "_s);
    }
};

TARNWICK_TEST(KeyboardTest)
#include "keyboard_test.moc"
