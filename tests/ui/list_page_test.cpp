#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/layout_contents.h"

#include <QHeaderView>
#include <QObject>
#include <QRegularExpression>
#include <QScrollArea>
#include <QTest>
#include <QVBoxLayout>

using support::contentsOf;

/// The page "Your GDPS List".
class ListPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void thePageHoldsTwoCards();
    void theIntroductionCardHoldsTitleAndText();
    void theTableCardHoldsTableAndButton();
    void theTableStartsWithFourColumnsAndNoRows();
    void theTableSelectsOneWholeRow();
    void theTableCannotBeEdited();
    void theRowsAlternateAndHaveNoNumbers();
    void theFirstColumnTakesTheSpareWidth();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static QBoxLayout* pageOf(const Run& run)
    {
        const auto* area = qobject_cast<QScrollArea*>(run.view().tabs()->widget(0));
        return qobject_cast<QBoxLayout*>(area->widget()->layout());
    }
    static QVBoxLayout* columnOf(const Run& run, int card)
    {
        return qobject_cast<QVBoxLayout*>(pageOf(run)->itemAt(card)->widget()->layout());
    }
};

void ListPageTest::thePageHoldsTwoCards()
{
    Run run;
    run.start();
    QCOMPARE(contentsOf(pageOf(run)), (QStringList{u"QFrame#PanelCard"_s, u"QFrame#PanelCard, stretch 1"_s}));
}

void ListPageTest::theIntroductionCardHoldsTitleAndText()
{
    Run run;
    run.start();
    const QVBoxLayout* column = columnOf(run, 0);
    QVERIFY(column != nullptr);
    QCOMPARE(column->contentsMargins(), QMargins(22, 18, 22, 18));
    QCOMPARE(column->spacing(), 8);
    QCOMPARE(contentsOf(column),
             (QStringList{u"QLabel#CardTitle \"Your Tarnwick Projects\""_s,
                          u"QLabel#MutedLabel \"Pick any project row and open its panel or public page. The table "
                          "stretches automatically so the UI stays aligned on resize.\""_s}));
    QVERIFY(qobject_cast<QLabel*>(column->itemAt(1)->widget())->wordWrap());
}

void ListPageTest::theTableCardHoldsTableAndButton()
{
    Run run;
    run.start();
    const QVBoxLayout* column = columnOf(run, 1);
    QVERIFY(column != nullptr);
    QCOMPARE(column->contentsMargins(), QMargins(18, 18, 18, 18));
    QCOMPARE(column->spacing(), 12);
    QCOMPARE(contentsOf(column),
             (QStringList{u"QTableWidget, stretch 1"_s, u"QPushButton \"Open Selected Project\", left"_s}));
}

void ListPageTest::theTableStartsWithFourColumnsAndNoRows()
{
    Run run;
    run.start();
    const QTableWidget* table = run.view().table();
    QCOMPARE(table->rowCount(), 0);
    QCOMPARE(table->columnCount(), 4);
    QStringList titles;
    for (int column = 0; column < 4; ++column) {
        titles.append(table->horizontalHeaderItem(column)->text());
    }
    QCOMPARE(titles, (QStringList{u"GDPS"_s, u"Code"_s, u"Core"_s, u"Status"_s}));
}

void ListPageTest::theTableSelectsOneWholeRow()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QTableWidget* table = run.view().table();
    QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
    table->insertRow(1);
    table->setCurrentCell(1, 2);
    QCOMPARE(table->selectionModel()->selectedIndexes().size(), 4);
    QVERIFY(table->selectionModel()->isRowSelected(1));
}

void ListPageTest::theTableCannotBeEdited()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QTableWidget* table = run.view().table();
    QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
    table->setCurrentCell(0, 0);
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClicks(table, u"x"_s);
    QVERIFY(!table->isPersistentEditorOpen(table->item(0, 0)));
    QVERIFY(table->viewport()->findChildren<QLineEdit*>().isEmpty());
    QCOMPARE(table->item(0, 0)->text(), u"Neon"_s);
}

void ListPageTest::theRowsAlternateAndHaveNoNumbers()
{
    Run run;
    run.start();
    const QTableWidget* table = run.view().table();
    QVERIFY(table->alternatingRowColors());
    QVERIFY(table->verticalHeader()->isHidden());
    QVERIFY(!table->horizontalHeader()->isHidden());
}

void ListPageTest::theFirstColumnTakesTheSpareWidth()
{
    Run run;
    QVERIFY(run.startSignedIn());
    const QTableWidget* table = run.view().table();
    const QHeaderView* header = table->horizontalHeader();
    QVERIFY(header->stretchLastSection());
    QCOMPARE(header->sectionResizeMode(0), QHeaderView::Stretch);
    for (const int column : {1, 2, 3}) {
        QCOMPARE(header->sectionResizeMode(column), QHeaderView::ResizeToContents);
    }

    run.window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
    const QList<int> before{table->columnWidth(0), table->columnWidth(1), table->columnWidth(2), table->columnWidth(3)};
    run.window().resize(1520, 860);
    QTRY_COMPARE(header->length(), before.at(0) + before.at(1) + before.at(2) + before.at(3) + 300);
    QVERIFY(table->columnWidth(0) > before.at(0));
    // Stretching the last section overrides its own mode, so that column shares what there is to spare.
    QCOMPARE(table->columnWidth(0) + table->columnWidth(3), before.at(0) + before.at(3) + 300);
    QCOMPARE(table->columnWidth(1), before.at(1));
    QCOMPARE(table->columnWidth(2), before.at(2));
    QVERIFY(table->columnWidth(1) >= header->sectionSizeHint(1));
    QVERIFY(table->columnWidth(2) >= header->sectionSizeHint(2));
    // A longer text makes its column wider.
    table->item(0, 1)->setText(u"a-much-longer-code-than-before"_s);
    QTRY_VERIFY(table->columnWidth(1) > before.at(1) + 50);
}

QTEST_MAIN(ListPageTest)
#include "list_page_test.moc"
