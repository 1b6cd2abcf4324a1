#include "support/client_test.h"

#include <QFrame>
#include <QHeaderView>
#include <QMainWindow>
#include <QObject>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

using support::Call;
using support::callPath;
using support::Reply;

/// Which widgets grow with the window, and what size the fields have in a small window.
class ResizingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void extraHeightGoesToTheTabs()
    {
        Run run;
        run.start();
        QVERIFY(showAt(run, roomy));
        const QWidget* header = cardOf(run.view().label(u"HeroTitle"_s));
        const QWidget* status = run.view().label(u"StatusText"_s)->parentWidget();
        const QRect headerBefore = header->geometry();
        const QRect statusBefore = status->geometry();
        const QRect linkBefore = linkCard(run)->geometry();
        const QRect accountBefore = accountCard(run)->geometry();
        const QRect tabsBefore = run.view().tabs()->geometry();

        QVERIFY(resizeTo(run, {1220, 1600}));
        QCOMPARE(header->geometry(), headerBefore);
        QCOMPARE(status->geometry(), statusBefore);
        QCOMPARE(linkCard(run)->geometry(), linkBefore);
        QCOMPARE(accountCard(run)->geometry(), accountBefore);
        QCOMPARE(run.view().tabs()->geometry(), tabsBefore.adjusted(0, 0, 0, 200));
    }

    void onTheListPageExtraHeightGoesToTheTable()
    {
        Run run;
        run.start();
        QVERIFY(showAt(run, roomy));
        const QTableWidget* table = run.view().table();
        const QPushButton* open = run.view().button(u"Open Selected Project");
        const QWidget* introduction = page(run, 0)->widget()->layout()->itemAt(0)->widget();
        const QRect introductionBefore = introduction->geometry();
        const QRect cardBefore = cardOf(table)->geometry();
        const QRect tableBefore = table->geometry();
        const QRect openBefore = open->geometry();

        QVERIFY(resizeTo(run, {1220, 1600}));
        QTRY_COMPARE(table->geometry(), tableBefore.adjusted(0, 0, 0, 200));
        QCOMPARE(introduction->geometry(), introductionBefore);
        QCOMPARE(cardOf(table)->geometry(), cardBefore.adjusted(0, 0, 0, 200));
        QCOMPARE(open->geometry(), openBefore.translated(0, 200));
    }

    void onTheCreatePageExtraHeightGoesBelowTheForm()
    {
        Run run;
        run.start();
        run.view().tabs()->setCurrentIndex(1);
        QVERIFY(showAt(run, roomy));
        const QWidget* card = cardOf(run.view().description());
        const QLayout* column = card->layout();
        QLayoutItem* closing = column->itemAt(column->count() - 1);
        const QRect cardBefore = card->geometry();
        const int closingBefore = closing->geometry().height();
        QList<QRect> partsBefore;
        for (int index = 0; index < column->count() - 1; ++index) {
            partsBefore.append(column->itemAt(index)->geometry());
        }

        QVERIFY(resizeTo(run, {1220, 1600}));
        QTRY_COMPARE(card->geometry(), cardBefore.adjusted(0, 0, 0, 200));
        QCOMPARE(closing->geometry().height(), closingBefore + 200);
        for (int index = 0; index < column->count() - 1; ++index) {
            QCOMPARE(column->itemAt(index)->geometry(), partsBefore.at(index));
        }
    }

    void theTwoCardsShareTheWidthHalfAndHalf_data()
    {
        QTest::addColumn<int>("width");
        QTest::newRow("smallest") << 1060;
        QTest::newRow("at start") << 1220;
        QTest::newRow("odd") << 1333;
        QTest::newRow("wide") << 1920;
    }

    void theTwoCardsShareTheWidthHalfAndHalf()
    {
        QFETCH(int, width);
        Run run;
        QVERIFY(run.startSignedIn());
        QVERIFY(showAt(run, {width, 1400}));
        const int together = width - 2 * 20 - 18;
        QCOMPARE(linkCard(run)->width() + accountCard(run)->width(), together);
        QVERIFY(qAbs(linkCard(run)->width() - accountCard(run)->width()) <= 1);
        QCOMPARE(accountCard(run)->x() - linkCard(run)->geometry().right() - 1, 18);
        QCOMPARE(linkCard(run)->height(), accountCard(run)->height());
    }

    void theLogoKeepsItsSizeAndTheTitlesTakeTheRest()
    {
        Run run;
        run.start();
        QVERIFY(showAt(run, roomy));
        const QLabel* logo = run.view().label(u"LogoPanel"_s);
        const QLabel* title = run.view().label(u"HeroTitle"_s);
        // The margins start inside the card's border.
        const QRect inside = cardOf(title)->contentsRect().marginsRemoved(QMargins(22, 22, 22, 22));
        const QRect logoPlace(inside.topLeft(), QSize(190, 96));
        QCOMPARE(logo->geometry(), logoPlace);
        const QRect titleBefore = title->geometry();
        QCOMPARE(titleBefore.left(), logoPlace.right() + 1 + 18);
        QCOMPARE(titleBefore.right(), inside.right());

        QVERIFY(resizeTo(run, {1520, 1600}));
        QCOMPARE(logo->geometry(), logoPlace);
        QCOMPARE(title->geometry(), titleBefore.adjusted(0, 0, 300, 0));
    }

    void noFieldIsSqueezed_data() { addSizes(); }

    void noFieldIsSqueezed()
    {
        QFETCH(QSize, size);
        Run run;
        QVERIFY(run.startSignedIn());
        run.view().tabs()->setCurrentIndex(1);
        QVERIFY(showAt(run, size));
        const QWidget* inside = page(run, 1)->widget();
        int bottom = 0;
        const auto fields = run.view().creationForm();
        for (const QWidget* field : fields) {
            const int wanted = field == run.view().description() ? 84 : field->sizeHint().height();
            QVERIFY2(field->height() == wanted, field->metaObject()->className());
            bottom = qMax(bottom, field->mapTo(inside, QPoint(0, field->height())).y());
        }
        QVERIFY(bottom <= inside->height());
        // Everything that does not fit can be scrolled to.
        QCOMPARE(page(run, 1)->verticalScrollBar()->maximum(),
                 qMax(0, inside->height() - page(run, 1)->viewport()->height()));
        QCOMPARE(page(run, 1)->horizontalScrollBar()->maximum(), 0);
    }

    void aLongCoreLabelChangesNoWidth()
    {
        Run run;
        const QByteArray label(60, 'W');
        run.server.reply(callPath(Call::Session),
                         Reply::json(200, support::json("{'available_cores':[{'key':'a','label':'") + label +
                                              support::json("'}]}")));
        QVERIFY(run.startSignedIn());
        QVERIFY(showAt(run, {1060, 760}));
        QCOMPARE(run.view().combo(u"Core")->currentText().size(), 60);
        QCOMPARE(page(run, 1)->horizontalScrollBar()->maximum(), 0);
        QCOMPARE(run.view().combo(u"Core")->width(), run.view().combo(u"Preset")->width());
    }

    void theTableShowsItsHeaderAndThreeRows_data() { addSizes(); }

    void theTableShowsItsHeaderAndThreeRows()
    {
        QFETCH(QSize, size);
        Run run;
        run.server.reply(
            callPath(Call::Instances),
            Reply::json(200, R"({"instances":[{"slug":"a"},{"slug":"b"},{"slug":"c"},{"slug":"d"},{"slug":"e"}]})"));
        QVERIFY(run.startSignedIn());
        QVERIFY(showAt(run, size));
        const QTableWidget* table = run.view().table();
        QVERIFY(table->horizontalHeader()->isVisible());
        const int border = table->height() - table->horizontalHeader()->height() - table->viewport()->height();
        QVERIFY(table->minimumHeight() >= border + table->horizontalHeader()->height() + 3 * table->rowHeight(0));
        QVERIFY(table->viewport()->rect().contains(table->visualItemRect(table->item(0, 1))));
        QVERIFY(table->viewport()->rect().contains(table->visualItemRect(table->item(2, 1))));
        QCOMPARE(page(run, 0)->horizontalScrollBar()->maximum(), 0);
    }

private:
    using Run = support::ClientRun;
    /// High enough for everything, so that no page scrolls.
    static constexpr QSize roomy{1220, 1400};

    static bool showAt(Run& run, const QSize& size)
    {
        run.window().resize(size);
        run.window().show();
        return QTest::qWaitForWindowExposed(&run.window()) && resizeTo(run, size);
    }
    /// Resizes and waits until every page has its new layout.
    static bool resizeTo(Run& run, const QSize& size)
    {
        run.window().resize(size);
        return QTest::qWaitFor([&run, &size] {
            const QSize inner = qobject_cast<QMainWindow*>(&run.window())->centralWidget()->size();
            return run.window().size() == size && inner == size &&
                   run.view().tabs()->geometry().bottom() == size.height() - 20 - 1;
        });
    }
    static QWidget* cardOf(const QWidget* inside)
    {
        QWidget* card = inside->parentWidget();
        while (card != nullptr && card->objectName() != u"PanelCard"_s) {
            card = card->parentWidget();
        }
        return card;
    }
    static QWidget* linkCard(const Run& run) { return cardOf(run.view().line(u"Link code")); }
    static QWidget* accountCard(const Run& run) { return cardOf(run.view().button(u"Unlink")); }
    static QScrollArea* page(const Run& run, int index)
    {
        return qobject_cast<QScrollArea*>(run.view().tabs()->widget(index));
    }
    static void addSizes()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("smallest") << QSize(1060, 760);
        QTest::newRow("at start") << QSize(1220, 860);
        QTest::newRow("tall") << QSize(1220, 1400);
    }
};

TARNWICK_TEST(ResizingTest)
#include "resizing_test.moc"
