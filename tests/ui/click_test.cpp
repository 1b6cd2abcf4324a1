#include "support/client_test.h"

#include <QSignalSpy>

/// Only a click on a button triggers anything: not a press without a release, a key in a field or an activated row.
class ClickTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPressThatIsDraggedAwayDoesNothing_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text : {"Generate Link Code", "Open Public Pairing Page", "Refresh", "Unlink",
                                 "Open Selected Project", "Create GDPS"}) {
            QTest::newRow(text) << QString::fromLatin1(text);
        }
    }

    void aPressThatIsDraggedAwayDoesNothing()
    {
        QFETCH(QString, text);
        Run run;
        QVERIFY(showSignedIn(run));
        run.view().tabs()->setCurrentIndex(text == u"Create GDPS"_s ? 1 : 0);
        QPushButton* button = run.view().button(text);
        const QPoint outside(-20, -20);
        QTest::mousePress(button, Qt::LeftButton);
        QVERIFY(button->isDown());
        QTest::mouseMove(button, outside);
        QVERIFY(!button->isDown());
        QTest::mouseRelease(button, Qt::LeftButton, {}, outside);
        QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QVERIFY(run.opened.isEmpty());

        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(run.view().status() != u"Loaded 1 Tarnwick project(s)."_s || !run.opened.isEmpty());
    }

    void theReturnKeyInAFieldDoesNothing_data()
    {
        QTest::addColumn<QString>("field");
        for (const char* field : {"Tarnwick URL", "Link code", "GDPS Name", "Emoji", "Accent", "Tags"}) {
            QTest::newRow(field) << QString::fromLatin1(field);
        }
    }

    void theReturnKeyInAFieldDoesNothing()
    {
        QFETCH(QString, field);
        Run run;
        QVERIFY(showSignedIn(run));
        QSignalSpy returns(run.view().line(field), &QLineEdit::returnPressed);
        QTest::keyClick(run.view().line(field), Qt::Key_Return);
        QCOMPARE(returns.count(), 1);
        QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QVERIFY(run.opened.isEmpty());
    }

    void anActivatedRowDoesNothing()
    {
        Run run;
        QVERIFY(showSignedIn(run));
        QTableWidget* table = run.view().table();
        QSignalSpy activations(table, &QTableWidget::itemActivated);
        QTest::keyClick(table, Qt::Key_Return);
        const QPoint cell = table->visualItemRect(table->item(0, 1)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, cell);
        QVERIFY(activations.count() >= 2);
        QCOMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QVERIFY(run.opened.isEmpty());
    }

private:
    using Run = support::ClientRun;

    /// Shows the window high enough for the whole page, with a complete form.
    static bool showSignedIn(Run& run)
    {
        if (!run.prepare(support::Call::CreateInstance)) {
            return false;
        }
        run.window().resize(1220, 1400);
        run.window().show();
        return QTest::qWaitForWindowExposed(&run.window());
    }
};

TARNWICK_TEST(ClickTest)
#include "click_test.moc"
