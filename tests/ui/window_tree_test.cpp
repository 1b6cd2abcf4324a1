#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/layout_contents.h"

#include <QDir>
#include <QFrame>
#include <QHBoxLayout>
#include <QObject>
#include <QRegularExpression>
#include <QScrollArea>
#include <QTest>
#include <QVBoxLayout>

using support::contentsOf;
using support::nestedLayout;

/// The window's frame: header, status card, and how the rest hangs together.
class WindowTreeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(QDir::setCurrent(QDir::tempPath())); } // no logo is found from here
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void theOuterColumnHoldsFourParts();
    void theHeaderHoldsLogoAndTitles();
    void theLogoPanelHasAFixedSize();
    void theTitleColumnHoldsTitleAndText();
    void theStatusCardHoldsTheStatusLine();
    void theTabsAreInDocumentModeWithTheListFirst();
    void everyPageScrollsWithoutAFrame();
    void everyCardIsAFramelessFrame();
    void theControlsCarryNoName();
    void nothingButTheSheetStyles();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static QWidget* centralOf(Run& run) { return qobject_cast<QMainWindow*>(&run.window())->centralWidget(); }
    static QBoxLayout* outerOf(Run& run) { return qobject_cast<QBoxLayout*>(centralOf(run)->layout()); }
    static QWidget* partOf(Run& run, int index) { return outerOf(run)->itemAt(index)->widget(); }
};

void WindowTreeTest::theOuterColumnHoldsFourParts()
{
    Run run;
    run.start();
    QCOMPARE(support::inWords(centralOf(run)), u"QWidget"_s);
    QCOMPARE(centralOf(run)->parentWidget(), &run.window());
    const auto* outer = qobject_cast<QVBoxLayout*>(centralOf(run)->layout());
    QVERIFY(outer != nullptr);
    QCOMPARE(outer->contentsMargins(), QMargins(20, 20, 20, 20));
    QCOMPARE(outer->spacing(), 18);
    QCOMPARE(contentsOf(outer), (QStringList{u"QFrame#PanelCard"_s, u"QFrame#StatusCard"_s, u"QHBoxLayout"_s,
                                             u"QTabWidget, stretch 1"_s}));
}

void WindowTreeTest::theHeaderHoldsLogoAndTitles()
{
    Run run;
    run.start();
    const auto* row = qobject_cast<QHBoxLayout*>(partOf(run, 0)->layout());
    QVERIFY(row != nullptr);
    QCOMPARE(row->contentsMargins(), QMargins(22, 22, 22, 22));
    QCOMPARE(row->spacing(), 18);
    QCOMPARE(contentsOf(row), (QStringList{u"QLabel#LogoPanel \"Tarnwick\", top"_s, u"QVBoxLayout, stretch 1"_s}));
}

void WindowTreeTest::theLogoPanelHasAFixedSize()
{
    Run run;
    run.start();
    const QLabel* logo = run.view().label(u"LogoPanel"_s);
    QCOMPARE(logo->minimumSize(), QSize(190, 96));
    QCOMPARE(logo->maximumSize(), QSize(190, 96));
    QCOMPARE(logo->alignment(), Qt::AlignHCenter | Qt::AlignVCenter);
    QVERIFY(!logo->wordWrap());
}

void WindowTreeTest::theTitleColumnHoldsTitleAndText()
{
    Run run;
    run.start();
    const auto* titles = nestedLayout<QVBoxLayout>(partOf(run, 0)->layout(), 1);
    QVERIFY(titles != nullptr);
    QCOMPARE(titles->spacing(), 6);
    QCOMPARE(titles->contentsMargins(), QMargins());
    QCOMPARE(contentsOf(titles),
             (QStringList{u"QLabel#HeroTitle \"Tarnwick Desktop Client\""_s,
                          u"QLabel#MutedLabel \"A layout-based Qt build for linking your Tarnwick account, "
                          "browsing projects, and creating new GDPS servers without the old raylib UI drift.\""_s,
                          u"space, stretch 1"_s}));
    QVERIFY(!qobject_cast<QLabel*>(titles->itemAt(0)->widget())->wordWrap());
    QVERIFY(qobject_cast<QLabel*>(titles->itemAt(1)->widget())->wordWrap());
}

void WindowTreeTest::theStatusCardHoldsTheStatusLine()
{
    Run run;
    run.start();
    const auto* column = qobject_cast<QVBoxLayout*>(partOf(run, 1)->layout());
    QVERIFY(column != nullptr);
    QCOMPARE(column->contentsMargins(), QMargins(18, 14, 18, 14));
    QCOMPARE(contentsOf(column), (QStringList{u"QLabel#StatusText \"Ready to link your Tarnwick account.\""_s}));
    QVERIFY(run.view().label(u"StatusText"_s)->wordWrap());
    // Its spacing is left to the layout's default.
    QWidget other;
    const QVBoxLayout reference(&other);
    QCOMPARE(column->spacing(), reference.spacing());
}

void WindowTreeTest::theTabsAreInDocumentModeWithTheListFirst()
{
    Run run;
    run.start();
    const QTabWidget* tabs = run.view().tabs();
    QVERIFY(tabs->documentMode());
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->tabText(0), u"Your GDPS List"_s);
    QCOMPARE(tabs->tabText(1), u"Create GDPS"_s);
    QCOMPARE(tabs->currentIndex(), 0);
    QVERIFY(tabs->widget(0)->isAncestorOf(run.view().table()));
    QVERIFY(tabs->widget(1)->isAncestorOf(run.view().description()));
}

void WindowTreeTest::everyPageScrollsWithoutAFrame()
{
    Run run;
    run.start();
    for (int index = 0; index < 2; ++index) {
        const auto* area = qobject_cast<QScrollArea*>(run.view().tabs()->widget(index));
        QVERIFY(area != nullptr);
        QCOMPARE(area->frameShape(), QFrame::NoFrame);
        QVERIFY(area->widgetResizable());
        QCOMPARE(support::inWords(area->widget()), u"QWidget"_s);
        const auto* column = qobject_cast<QVBoxLayout*>(area->widget()->layout());
        QVERIFY(column != nullptr);
        QCOMPARE(column->contentsMargins(), QMargins(0, 8, 0, 0));
        QCOMPARE(column->spacing(), 14);
    }
}

void WindowTreeTest::everyCardIsAFramelessFrame()
{
    Run run;
    run.start();
    const auto panelCards = run.window().findChildren<QFrame*>(u"PanelCard"_s);
    const auto statusCards = run.window().findChildren<QFrame*>(u"StatusCard"_s);
    QCOMPARE(panelCards.size(), 6); // header, link, account, introduction, table, creation
    QCOMPARE(statusCards.size(), 1);
    for (const QFrame* card : panelCards + statusCards) {
        QCOMPARE(support::inWords(card).section(u'#', 0, 0), u"QFrame"_s);
        QCOMPARE(card->frameShape(), QFrame::NoFrame);
    }
}

void WindowTreeTest::theControlsCarryNoName()
{
    Run run;
    run.start();
    const support::WindowView view = run.view();
    const QList<QWidget*> controls{view.line(u"Tarnwick URL"),
                                   view.line(u"Link code"),
                                   view.button(u"Generate Link Code"),
                                   view.button(u"Open Public Pairing Page"),
                                   view.button(u"Refresh"),
                                   view.button(u"Unlink"),
                                   view.table(),
                                   view.button(u"Open Selected Project")};
    for (const QWidget* control : controls + view.creationForm()) {
        QVERIFY(control != nullptr);
        QCOMPARE(control->objectName(), QString());
    }
}

void WindowTreeTest::nothingButTheSheetStyles()
{
    Run run;
    run.start();
    QCOMPARE(run.window().styleSheet(), QString());
    const auto widgets = run.window().findChildren<QWidget*>();
    QVERIFY(widgets.size() > 40);
    for (const QWidget* widget : widgets) {
        QCOMPARE(widget->styleSheet(), QString());
    }
}

QTEST_MAIN(WindowTreeTest)
#include "window_tree_test.moc"
