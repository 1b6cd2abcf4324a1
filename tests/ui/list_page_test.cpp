#include "support/client_test.h"

#include <QHeaderView>
#include <QJsonArray>
#include <QObject>

using support::Call;
using support::Reply;

/// The widths of the project table's columns.
class ListPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstColumnTakesTheSpareWidth()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        const QTableWidget* table = run.view().table();
        const QHeaderView* header = table->horizontalHeader();
        run.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
        const QList<int> before{table->columnWidth(0), table->columnWidth(1), table->columnWidth(2),
                                table->columnWidth(3)};
        run.window().resize(1520, 860);
        QTRY_COMPARE(header->length(), before.at(0) + before.at(1) + before.at(2) + before.at(3) + 300);
        QVERIFY(table->columnWidth(0) > before.at(0));
        // Stretching the last section overrides its resize mode, so that column gets a part of the spare width.
        QCOMPARE(table->columnWidth(0) + table->columnWidth(3), before.at(0) + before.at(3) + 300);
        QCOMPARE(table->columnWidth(1), before.at(1));
        QCOMPARE(table->columnWidth(2), before.at(2));
        QVERIFY(table->columnWidth(1) >= header->sectionSizeHint(1));
        QVERIFY(table->columnWidth(2) >= header->sectionSizeHint(2));
        // A longer text makes its column wider.
        table->item(0, 1)->setText(u"a-much-longer-code-than-before"_s);
        QTRY_VERIFY(table->columnWidth(1) > before.at(1) + 50);
    }

    void aColumnFitsTheFirst500Rows()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
        const auto widthWithALongCodeInRow = [&run](int longRow) {
            QJsonArray projects;
            for (int row = 0; row < 501; ++row) {
                projects.append(QJsonObject{{u"slug"_s, row == longRow ? u"a-much-longer-code"_s : u"code"_s}});
            }
            const QByteArray body = QJsonDocument(QJsonObject{{u"instances"_s, projects}}).toJson();
            run.server.reply(callPath(Call::Instances), Reply::json(200, body));
            run.press(u"Refresh");
            return support::waitFor([&run, longRow] {
                const QTableWidget* table = run.view().table();
                return table->rowCount() == 501 && table->item(longRow, 1)->text().size() > 4;
            })
                       ? run.view().table()->columnWidth(1)
                       : 0;
        };
        QVERIFY(widthWithALongCodeInRow(499) > widthWithALongCodeInRow(500) + 50);
        QVERIFY(widthWithALongCodeInRow(500) > 0);
    }

private:
    using Run = support::ClientRun;
};

TARNWICK_TEST(ListPageTest)
#include "list_page_test.moc"
