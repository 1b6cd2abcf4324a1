#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QAbstractItemView>
#include <QBrush>
#include <QColor>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// How the project table shows the list.
class ProjectTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void theColumnsShowNameCodeCoreAndStatus();
    void theStatusColourTellsWhatRuns_data();
    void theStatusColourTellsWhatRuns();
    void onlyTheStatusCellIsColoured();
    void emptyFieldsStillMakeARow();
    void markupIsShownAsItWasSent();
    void theFirstRowIsSelectedAndCurrentAfterEveryFill();
    void anEmptyListLeavesNoCurrentRow();
    void theButtonFollowsAFillThatChangesNoSelection();
    void theTableIsNeverSorted();
    void aShorterListDropsTheOldRows();
    void theColumnsKeepToTheirContentsAfterEveryFill();
    void theFirstListInAShownWindowFitsItsColumns();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static Reply listOf(const QByteArray& elements) { return Reply::json(200, R"({"instances":[)" + elements + "]}"); }
    static QList<int> selectedRows(const QTableWidget* table)
    {
        QList<int> rows;
        const QModelIndexList indexes = table->selectionModel()->selectedRows();
        for (const QModelIndex& index : indexes) {
            rows.append(index.row());
        }
        return rows;
    }
    static QBrush foreground(const QTableWidget* table, int row, int column)
    {
        return table->item(row, column)->data(Qt::ForegroundRole).value<QBrush>();
    }
};

void ProjectTableTest::theColumnsShowNameCodeCoreAndStatus()
{
    Run run;
    run.server.reply(callPath(Call::Instances),
                     listOf(R"({"status":"S","core_label":"C","slug":"L","display_name":"N"})"));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().row(0), (QStringList{u"N"_s, u"L"_s, u"C"_s, u"S"_s}));
    for (int column = 0; column < 4; ++column) {
        QCOMPARE(run.view().table()->item(0, column)->type(), int(QTableWidgetItem::Type));
        QVERIFY(run.view().table()->item(0, column)->icon().isNull());
    }
}

void ProjectTableTest::theStatusColourTellsWhatRuns_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QColor>("colour");
    const QColor running(0x76, 0xff, 0xa6);
    const QColor other(0xf0, 0xc7, 0x9e);
    QTest::newRow("online") << QByteArray("online") << running;
    QTest::newRow("Online") << QByteArray("Online") << running;
    QTest::newRow("active") << QByteArray("active") << running;
    QTest::newRow("ACTIVE") << QByteArray("ACTIVE") << running;
    QTest::newRow("aCtIvE") << QByteArray("aCtIvE") << running;
    QTest::newRow("running") << QByteArray("running") << other;
    QTest::newRow("offline") << QByteArray("offline") << other;
    QTest::newRow("inactive") << QByteArray("inactive") << other;
    QTest::newRow("leading space") << QByteArray(" online") << other;
    QTest::newRow("trailing space") << QByteArray("active ") << other;
    QTest::newRow("two words") << QByteArray("online active") << other;
    QTest::newRow("empty") << QByteArray() << other;
}

void ProjectTableTest::theStatusColourTellsWhatRuns()
{
    QFETCH(QByteArray, status);
    QFETCH(QColor, colour);
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(R"({"status":")" + status + R"("})"));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().table()->item(0, 3)->text(), QString::fromUtf8(status));
    QCOMPARE(foreground(run.view().table(), 0, 3).color(), colour);
    QCOMPARE(foreground(run.view().table(), 0, 3).style(), Qt::SolidPattern);
}

void ProjectTableTest::onlyTheStatusCellIsColoured()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QVERIFY(run.view().table()->item(0, 3)->data(Qt::ForegroundRole).isValid());
    for (int column = 0; column < 3; ++column) {
        QVERIFY(!run.view().table()->item(0, column)->data(Qt::ForegroundRole).isValid());
    }
    for (int column = 0; column < 4; ++column) {
        QVERIFY(!run.view().table()->item(0, column)->data(Qt::BackgroundRole).isValid());
        QVERIFY(!run.view().table()->item(0, column)->data(Qt::FontRole).isValid());
    }
}

void ProjectTableTest::emptyFieldsStillMakeARow()
{
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(R"({"manage_url":"https://m.example"},{})"));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().table()->rowCount(), 2);
    for (int row = 0; row < 2; ++row) {
        QCOMPARE(run.view().row(row), (QStringList{QString(), QString(), QString(), QString()}));
        QCOMPARE(foreground(run.view().table(), row, 3).color(), QColor(0xf0, 0xc7, 0x9e));
    }
}

void ProjectTableTest::markupIsShownAsItWasSent()
{
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(R"({"display_name":"<b>Neon</b> &amp;"})"));
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().row(0).constFirst(), u"<b>Neon</b> &amp;"_s);
}

void ProjectTableTest::theFirstRowIsSelectedAndCurrentAfterEveryFill()
{
    Run run;
    run.server.reply(callPath(Call::Instances), listOf("{},{},{}"));
    QVERIFY(run.startSignedIn());
    const QTableWidget* table = run.view().table();
    QCOMPARE(table->currentRow(), 0);
    QCOMPARE(selectedRows(table), QList<int>{0});

    run.view().table()->selectRow(2);
    QCOMPARE(table->currentRow(), 2);
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Loaded 3 Tarnwick project(s)."_s);
    QCOMPARE(table->currentRow(), 0);
    QCOMPARE(selectedRows(table), QList<int>{0});
}

void ProjectTableTest::anEmptyListLeavesNoCurrentRow()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QCOMPARE(run.view().table()->currentRow(), 0);
    QVERIFY(run.view().button(u"Open Selected Project")->isEnabled());
    run.server.reply(callPath(Call::Instances), listOf({}));
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
    QCOMPARE(run.view().table()->rowCount(), 0);
    QCOMPARE(run.view().table()->currentRow(), -1);
    QVERIFY(selectedRows(run.view().table()).isEmpty());
    QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
}

void ProjectTableTest::theButtonFollowsAFillThatChangesNoSelection()
{
    Run run;
    QVERIFY(run.startSignedIn());
    run.view().table()->clearSelection();
    QCOMPARE(run.view().table()->currentRow(), 0);
    QVERIFY(run.view().button(u"Open Selected Project")->isEnabled());
    run.server.reply(callPath(Call::Instances), listOf({}));
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Loaded 0 Tarnwick project(s)."_s);
    QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
}

void ProjectTableTest::theTableIsNeverSorted()
{
    Run run;
    run.server.reply(callPath(Call::Instances),
                     listOf(R"({"display_name":"b"},{"display_name":"a"},{"display_name":"c"})"));
    QVERIFY(run.startSignedIn());
    QVERIFY(!run.view().table()->isSortingEnabled());
    QCOMPARE(run.view().row(0).constFirst(), u"b"_s);
    QCOMPARE(run.view().row(1).constFirst(), u"a"_s);
    QCOMPARE(run.view().row(2).constFirst(), u"c"_s);
}

void ProjectTableTest::aShorterListDropsTheOldRows()
{
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(R"({"slug":"a"},{"slug":"b"},{"slug":"c"})"));
    QVERIFY(run.startSignedIn());
    run.server.reply(callPath(Call::Instances), listOf(R"({"slug":"d","status":"active"})"));
    run.press(u"Refresh");
    QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    QCOMPARE(run.view().table()->rowCount(), 1);
    QCOMPARE(run.view().row(0), (QStringList{QString(), u"d"_s, QString(), u"active"_s}));
}

void ProjectTableTest::theColumnsKeepToTheirContentsAfterEveryFill()
{
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(R"({"slug":"short"})"));
    QVERIFY(run.startSignedIn());
    const QHeaderView* header = run.view().table()->horizontalHeader();
    const auto keepsToContents = [header] {
        return header->sectionResizeMode(0) == QHeaderView::Stretch &&
               header->sectionResizeMode(1) == QHeaderView::ResizeToContents &&
               header->sectionResizeMode(2) == QHeaderView::ResizeToContents &&
               header->sectionResizeMode(3) == QHeaderView::ResizeToContents;
    };
    QVERIFY(keepsToContents());

    run.window().show();
    const int narrow = header->sectionSize(1);
    run.server.reply(callPath(Call::Instances), listOf(R"({"slug":"as-long-as-a-code-can-be-in-a-column"})"));
    run.view().button(u"Refresh")->click();
    QTRY_VERIFY(header->sectionSize(1) > narrow);
    QVERIFY(keepsToContents());

    run.server.reply(callPath(Call::Instances), listOf(""));
    run.view().button(u"Refresh")->click();
    QTRY_COMPARE(run.view().table()->rowCount(), 0);
    QVERIFY(keepsToContents());

    run.view().button(u"Unlink")->click();
    QVERIFY(keepsToContents());
}

void ProjectTableTest::theFirstListInAShownWindowFitsItsColumns()
{
    Run run;
    run.server.reply(callPath(Call::Instances), listOf(""));
    QVERIFY(run.startSignedIn());
    run.window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&run.window()));

    const QByteArray project =
        R"({"slug":"as-long-as-a-code-can-be","core_label":"A core of that length","status":"x"})";
    run.server.reply(callPath(Call::Instances), listOf(project + ',' + project + ',' + project));
    run.view().button(u"Refresh")->click();
    QTRY_COMPARE(run.view().table()->rowCount(), 3);
    const QAbstractItemView* view = run.view().table();
    for (const int column : {1, 2}) {
        const int needed = view->sizeHintForColumn(column);
        QTRY_COMPARE(run.view().table()->columnWidth(column), needed);
        QVERIFY(needed > run.view().table()->horizontalHeader()->sectionSizeHint(column));
    }
}

QTEST_MAIN(ProjectTableTest)
#include "project_table_test.moc"
