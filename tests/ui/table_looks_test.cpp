#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/picture.h"

#include <QApplication>
#include <QHeaderView>
#include <QImage>
#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::colourInside;
using support::hasColour;
using support::pictureOf;
using support::Reply;
using support::solidText;

/// What style sheet and palette make of the project table, as a picture shows it.
class TableLooksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void theHeaderHasALineBelow();
    void aSelectedRowStandsOut();
    void alternateRowsAreDrawnDarkOnALightDesktop();
    void theStatusIsDrawnInItsColour();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    /// Shows the window high enough for the whole page.
    static bool showRoomy(Run& run)
    {
        run.window().resize(1220, 1400);
        run.window().show();
        return QTest::qWaitForWindowExposed(&run.window());
    }
};

void TableLooksTest::theHeaderHasALineBelow()
{
    Run run;
    run.start();
    QVERIFY(showRoomy(run));
    QHeaderView* header = run.view().table()->horizontalHeader();
    run.view().table()->horizontalHeaderItem(0)->setText(solidText());
    const QImage picture = pictureOf(header->viewport());
    QCOMPARE(colourInside(picture, 4), u"#311106"_s);
    QCOMPARE(picture.pixelColor(4, picture.height() - 1).name(), u"#7d3d0c"_s);
    QCOMPARE(picture.pixelColor(4, 0).name(), u"#311106"_s);
    QVERIFY(hasColour(picture, u"#ffb25b"_s));
}

void TableLooksTest::aSelectedRowStandsOut()
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

void TableLooksTest::alternateRowsAreDrawnDarkOnALightDesktop()
{
    qApp->setStyleSheet({});
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

void TableLooksTest::theStatusIsDrawnInItsColour()
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

QTEST_MAIN(TableLooksTest)
#include "table_looks_test.moc"
