#include "support/client_test.h"

#include <QObject>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>

using support::Call;
using support::callPath;
using support::Reply;

/// How the fields of the creation form treat what is typed into them.
class CreatePageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWheelChangesAChoiceOnlyWithTheFocus_data()
    {
        QTest::addColumn<QString>("label");
        QTest::newRow("core") << u"Core"_s;
        QTest::newRow("preset") << u"Preset"_s;
    }

    void theWheelChangesAChoiceOnlyWithTheFocus()
    {
        QFETCH(QString, label);
        Run run;
        run.server.reply(callPath(Call::Session), Reply::json(200, R"({"available_cores":[{"key":"a"},{"key":"b"}]})"));
        QVERIFY(run.startSignedIn());
        run.view().tabs()->setCurrentIndex(1);
        run.window().show();
        QVERIFY(QTest::qWaitForWindowActive(&run.window()));
        QComboBox* choice = run.view().combo(label);
        const auto turnWheel = [choice] {
            const QPointF place = choice->rect().center();
            QWheelEvent turn(place, choice->mapToGlobal(place), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                             Qt::NoScrollPhase, false);
            // Only a spontaneous wheel event is passed on to parent widgets and may set the focus.
            QSpontaneKeyEvent::setSpontaneous(&turn);
            qApp->notify(choice, &turn);
        };
        const QScrollBar* bar = qobject_cast<QScrollArea*>(run.view().tabs()->widget(1))->verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 0);
        turnWheel();
        QCOMPARE(choice->currentIndex(), 0);
        QVERIFY(bar->value() > 0);
        QVERIFY(!choice->hasFocus());

        choice->setFocus();
        const int before = bar->value();
        turnWheel();
        QCOMPARE(choice->currentIndex(), 1);
        QCOMPARE(bar->value(), before);
    }

    void theEmojiLimitCountsUtf16Units()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QLineEdit* emoji = run.view().line(u"Emoji");
        emoji->insert(u"abcde"_s);
        QCOMPARE(emoji->text(), u"🔥abcd"_s);
        emoji->clear();
        emoji->insert(u"🔥🔥🔥🔥"_s);
        QCOMPARE(emoji->text(), u"🔥🔥🔥"_s);
    }

    void aSeventhParagraphDropsTheOldest()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QPlainTextEdit* description = run.view().description();
        const QString digits = u"123456"_s;
        for (const QChar digit : digits) {
            QTest::keyClicks(description, QString(digit));
            QTest::keyClick(description, Qt::Key_Return);
        }
        QCOMPARE(description->toPlainText(), u"2\n3\n4\n5\n6\n"_s);
        QTest::keyClicks(description, u"7"_s);
        QCOMPARE(description->toPlainText(), u"2\n3\n4\n5\n6\n7"_s);
    }

private:
    using Run = support::ClientRun;
};

TARNWICK_TEST(CreatePageTest)
#include "create_page_test.moc"
