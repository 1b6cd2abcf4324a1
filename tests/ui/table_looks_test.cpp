#include "support/client_test.h"

#include <QApplication>
#include <QHeaderView>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QObject>
#include <QStyledItemDelegate>

using support::Call;
using support::callPath;
using support::hasColour;
using support::pictureOf;
using support::Reply;
using support::solidText;

/// How the style sheet and the palette make the project table look, in pixels.
class TableLooksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        qApp->setStyleSheet({});
        QApplication::setPalette({});
    }

    void aSelectedRowStandsOut()
    {
        Run run;
        run.server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{},{}]})"));
        QVERIFY(run.startSignedIn());
        QVERIFY(showRoomy(run));
        QTableWidget* table = run.view().table();
        for (const int selected : {0, 1}) {
            table->selectRow(selected);
            table->item(selected, 0)->setText(solidText());
            const QImage picture = pictureOf(table->viewport());
            const QRect cell = table->visualItemRect(table->item(selected, 0));
            QCOMPARE(picture.pixelColor(cell.right() - 5, cell.center().y()).name(), u"#733313"_s);
            const QRect other = table->visualItemRect(table->item(1 - selected, 0));
            QVERIFY(picture.pixelColor(other.right() - 5, other.center().y()).name() != u"#733313"_s);
            QVERIFY(hasColour(picture.copy(cell), u"#fff4de"_s));
            // The grid line
            QCOMPARE(picture.pixelColor(cell.right() - 5, cell.bottom() + 1).name(), u"#5d280f"_s);
        }
    }

    void alternateRowsAreDrawnDarkOnALightDesktop()
    {
        QPalette light(QColor(0xef, 0xef, 0xef));
        light.setColor(QPalette::AlternateBase, QColor(0xf7, 0xf7, 0xf7));
        QApplication::setPalette(light);
        Run run;
        run.server.reply(callPath(Call::Instances), Reply::json(200, R"({"instances":[{},{},{}]})"));
        QVERIFY(run.startSignedIn());
        QVERIFY(showRoomy(run));
        QTableWidget* table = run.view().table();
        const QImage picture = pictureOf(table->viewport());
        const auto colourOf = [table, &picture](int row) {
            return picture.pixelColor(table->visualItemRect(table->item(row, 0)).center()).name();
        };
        QCOMPARE(colourOf(0), u"#733313"_s); // selected
        QCOMPARE(colourOf(1), u"#2a1308"_s);
        QCOMPARE(colourOf(2), u"#3b1d0f"_s);
    }

    void theStatusIsDrawnInItsColour()
    {
        Run run;
        run.server.reply(callPath(Call::Instances),
                         Reply::json(200, R"({"instances":[{},{"status":"active"},{"status":"asleep"}]})"));
        QVERIFY(run.startSignedIn());
        QVERIFY(showRoomy(run));
        QTableWidget* table = run.view().table();
        for (int row = 1; row <= 2; ++row) {
            table->item(row, 0)->setText(solidText());
            table->item(row, 3)->setText(solidText());
        }
        const QImage picture = pictureOf(table->viewport());
        const auto cell = [table, &picture](int row, int column) {
            return picture.copy(table->visualItemRect(table->item(row, column)));
        };
        QVERIFY(hasColour(cell(1, 3), u"#76ffa6"_s));
        QVERIFY(hasColour(cell(2, 3), u"#f0c79e"_s));
        QVERIFY(hasColour(cell(1, 0), u"#fff4de"_s));
        QVERIFY(hasColour(cell(2, 0), u"#fff4de"_s));
    }

    void allRowsKeepTheSamePadding()
    {
        Run run;
        const QByteArray project = QJsonDocument(QJsonObject{{u"slug"_s, solidText()}}).toJson();
        run.server.reply(callPath(Call::Instances),
                         Reply::json(200, R"({"instances":[)" + project + ',' + project + "]}"));
        QVERIFY(run.startSignedIn());
        QVERIFY(showRoomy(run));
        QTableWidget* table = run.view().table();
        const QImage picture = pictureOf(table->viewport());
        const auto inkOf = [table, &picture](int row) {
            const QRect cell = table->visualItemRect(table->item(row, 1));
            QRect ink;
            for (int y = cell.top(); y < cell.bottom(); ++y) {
                for (int x = cell.left(); x < cell.right(); ++x) {
                    ink |= picture.pixelColor(x, y).name() == u"#fff4de"_s ? QRect(x, y, 1, 1) : QRect();
                }
            }
            return ink.translated(-cell.topLeft());
        };
        QCOMPARE(table->currentRow(), 0);
        QVERIFY(!inkOf(0).isEmpty());
        QCOMPARE(inkOf(1), inkOf(0));
        // The style sheet's padding on both sides plus Qt's own margin; the text is not elided.
        QVERIFY(inkOf(1).left() >= 8);
        QVERIFY(inkOf(1).right() < table->columnWidth(1) - 8);
        QVERIFY(inkOf(1).width() >= table->fontMetrics().horizontalAdvance(solidText()) - 2);
    }

    void theCurrentCellIsFramedWhileTheTableHasTheFocus()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(showRoomy(run));
        QVERIFY(QTest::qWaitForWindowActive(&run.window()));
        QTableWidget* table = run.view().table();
        const auto edgeOfTheCell = [table] {
            const QRect cell = table->visualItemRect(table->currentItem());
            return pictureOf(table->viewport()).pixelColor(cell.left() + 1, cell.center().y()).name();
        };
        const auto insideOfTheFrame = [table] {
            return pictureOf(table->viewport())
                .copy(table->visualItemRect(table->currentItem()).adjusted(2, 2, -2, -2));
        };
        table->clearFocus();
        QCOMPARE(edgeOfTheCell(), u"#733313"_s);
        const QImage unfocused = insideOfTheFrame();
        table->setFocus();
        QCOMPARE(edgeOfTheCell(), u"#fff4de"_s);
        QCOMPARE(insideOfTheFrame(), unfocused); // neither filled nor marked by Qt
    }

    void aCutTextEndsWithAMark()
    {
        Run run;
        run.start();
        const auto* cells = qobject_cast<QStyledItemDelegate*>(run.view().table()->itemDelegate());
        QVERIFY(cells != nullptr);
        QCOMPARE(cells->displayText(QString(1000, u'x'), QLocale()), QString(1000, u'x'));
        QCOMPARE(cells->displayText(QString(1001, u'x'), QLocale()), QString(1000, u'x') + u"…"_s);
    }

private:
    using Run = support::ClientRun;

    /// Shows the window high enough for the whole page.
    static bool showRoomy(Run& run)
    {
        run.window().resize(1220, 1400);
        run.window().show();
        return QTest::qWaitForWindowExposed(&run.window());
    }
};

TARNWICK_TEST(TableLooksTest)
#include "table_looks_test.moc"
