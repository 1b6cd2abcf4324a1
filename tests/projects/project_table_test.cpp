#include "support/client_test.h"

#include <QBrush>
#include <QColor>
#include <QItemSelectionModel>

using support::Call;
using support::callPath;
using support::Reply;

/// How the project table shows the list.
class ProjectTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theStatusColourTellsWhatRuns_data()
    {
        QTest::addColumn<QString>("status");
        QTest::addColumn<QColor>("colour");
        for (const char* running : {"online", "Online", "active", "ACTIVE"}) {
            QTest::newRow(running) << QString::fromLatin1(running) << QColor(0x76, 0xff, 0xa6);
        }
        for (const char* other : {"running", "inactive", " online", "active ", "online active", ""}) {
            QTest::addRow("'%s'", other) << QString::fromLatin1(other) << QColor(0xf0, 0xc7, 0x9e);
        }
    }

    void theStatusColourTellsWhatRuns()
    {
        QFETCH(QString, status);
        QFETCH(QColor, colour);
        Run run;
        QVERIFY(startWith(run, "{'status':'" + status.toUtf8() + "'}"));
        const QTableWidget* table = run.view().table();
        QCOMPARE(table->item(0, 3)->text(), status);
        QCOMPARE(table->item(0, 3)->data(Qt::ForegroundRole).value<QBrush>(), QBrush(colour, Qt::SolidPattern));
    }

    /// Only the status has a role besides its text: the colour.
    void nothingElseIsSetInACell()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        for (int column = 0; column < 4; ++column) {
            const QTableWidgetItem* item = run.view().table()->item(0, column);
            QCOMPARE(item->flags(), QTableWidgetItem().flags());
            QCOMPARE(item->type(), int(QTableWidgetItem::Type));
            for (int role = 0; role < Qt::UserRole + 2; ++role) {
                const bool isStated =
                    role == Qt::DisplayRole || role == Qt::EditRole || (role == Qt::ForegroundRole && column == 3);
                QCOMPARE(item->data(role).isValid(), isStated);
            }
        }
    }

    void theFirstRowIsSelectedAndCurrentAfterEveryFill()
    {
        Run run;
        QVERIFY(startWith(run, "{},{},{}"));
        const QTableWidget* table = run.view().table();
        QCOMPARE(table->currentRow(), 0);
        QCOMPARE(selectedRows(table), QList<int>{0});

        run.view().table()->selectRow(2);
        QCOMPARE(table->currentRow(), 2);
        QString textWhenSelected;
        const auto noteText = [&] {
            textWhenSelected = run.view().status();
        };
        connect(run.view().table(), &QTableWidget::itemSelectionChanged, this, [&] { noteText(); });
        QVERIFY(refreshTo(run, "{},{},{}"));
        QCOMPARE(textWhenSelected, u"Refreshing your Tarnwick projects..."_s); // the count comes last
        QCOMPARE(table->rowCount(), 3);
        QCOMPARE(table->currentRow(), 0);
        QCOMPARE(selectedRows(table), QList<int>{0});
    }

    void anEmptyListLeavesNoCurrentRow_data()
    {
        QTest::addColumn<bool>("selected");
        QTest::newRow("after a selected row") << true;
        QTest::newRow("after a current row that is not selected") << false;
    }

    void anEmptyListLeavesNoCurrentRow()
    {
        QFETCH(bool, selected);
        Run run;
        QVERIFY(run.startSignedIn());
        if (!selected) {
            run.view().table()->clearSelection(); // so that filling the table does not change the selection
        }
        QCOMPARE(run.view().table()->currentRow(), 0);
        QVERIFY(run.view().button(u"Open Selected Project")->isEnabled());
        QVERIFY(refreshTo(run, ""));
        QCOMPARE(run.view().table()->currentRow(), -1);
        QVERIFY(selectedRows(run.view().table()).isEmpty());
        QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
    }

    /// A change of the selection triggers the update; its result depends on the current row only.
    void theControlsAreComputedWhenTheSelectionChanges()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        QTableWidget* table = run.view().table();
        QPushButton* open = run.view().button(u"Open Selected Project");
        open->setEnabled(false);
        table->clearSelection();
        QCOMPARE(table->currentRow(), 0);
        QVERIFY(open->isEnabled());
        table->selectRow(0);
        table->selectionModel()->clearCurrentIndex();
        QVERIFY(open->isEnabled());
    }

private:
    using Run = support::ClientRun;

    static Reply listOf(const QByteArray& elements)
    {
        return Reply::json(200, support::json("{'instances':[") + support::json(elements.constData()) + "]}");
    }
    static bool startWith(Run& run, const QByteArray& elements)
    {
        run.server.reply(callPath(Call::Instances), listOf(elements));
        return run.startSignedIn();
    }
    static bool refreshTo(Run& run, const QByteArray& elements)
    {
        run.server.reply(callPath(Call::Instances), listOf(elements));
        run.press(u"Refresh");
        return support::waitFor([&run] { return run.view().status().startsWith(u"Loaded "_s); });
    }
    static QList<int> selectedRows(const QTableWidget* table)
    {
        QList<int> rows;
        const QModelIndexList indexes = table->selectionModel()->selectedRows();
        for (const QModelIndex& index : indexes) {
            rows.append(index.row());
        }
        return rows;
    }
};

TARNWICK_TEST(ProjectTableTest)
#include "project_table_test.moc"
