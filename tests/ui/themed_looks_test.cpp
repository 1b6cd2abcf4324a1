#include "support/client_test.h"

#include <QApplication>
#include <QFrame>
#include <QImage>
#include <QObject>
#include <QRegularExpression>
#include <QTabBar>

using support::colourInside;
using support::hasColour;
using support::pictureOf;
using support::solidText;

/// How the style sheet makes the widgets look, in pixels.
class ThemedLooksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cardsHaveABackgroundABorderAndRoundCorners()
    {
        Run run;
        run.start();
        QVERIFY(showRoomy(run, 0));
        const auto cards = run.window().findChildren<QFrame*>(QRegularExpression(u"^(PanelCard|StatusCard)$"_s));
        QCOMPARE(cards.size(), 7);
        const QImage window = pictureOf(&run.window());
        for (QFrame* card : cards) {
            if (!card->isVisible()) { // on the other page
                continue;
            }
            const QImage picture = window.copy(QRect(card->mapTo(&run.window(), QPoint()), card->size()));
            QCOMPARE(colourInside(picture, 0), u"#7d3d0c"_s);
            QCOMPARE(colourInside(picture, 1), u"#2a1308"_s);
            QCOMPARE(colourInside(picture, 10), u"#2a1308"_s);
            QCOMPARE(picture.pixelColor(3, 3).name(), u"#140704"_s);
            QCOMPARE(picture.pixelColor(7, 7).name(), u"#2a1308"_s);
        }
    }

    void aFrameOfAnotherNameIsNoCard()
    {
        Run run;
        run.start();
        QFrame frame;
        frame.setFrameShape(QFrame::NoFrame);
        frame.resize(100, 60);
        for (const QString& name : {u"OtherCard"_s, QString(), u"panelcard"_s}) {
            frame.setObjectName(name);
            const QImage picture = pictureOf(&frame);
            QCOMPARE(colourInside(picture, 0), u"#140704"_s);
            QCOMPARE(colourInside(picture, 20), u"#140704"_s);
        }
    }

    void buttonsTellWhetherTheyCanBeUsed()
    {
        Run run;
        run.start();
        QVERIFY(showRoomy(run, 0));
        QPushButton* usable = run.view().button(u"Open Public Pairing Page");
        QPushButton* unusable = run.view().button(u"Unlink");
        QVERIFY(usable->isEnabled());
        QVERIFY(!unusable->isEnabled());
        usable->setText(solidText());
        unusable->setText(solidText());
        const QImage bright = pictureOf(usable);
        QCOMPARE(colourInside(bright, 0), u"#c56b18"_s);
        QCOMPARE(colourInside(bright, 3), u"#5d280f"_s);
        QVERIFY(hasColour(bright, u"#fff4de"_s));
        const QImage dim = pictureOf(unusable);
        QCOMPARE(colourInside(dim, 0), u"#7f562f"_s);
        QCOMPARE(colourInside(dim, 3), u"#4a2511"_s);
        QVERIFY(hasColour(dim, u"#d0a784"_s));
        QCOMPARE(int(usable->font().weight()), 700);
    }

    void disabledFieldsHaveDarkerText_data()
    {
        QTest::addColumn<bool>("linked");
        QTest::addColumn<QString>("colour");
        QTest::newRow("enabled") << true << u"#fff4de"_s;
        QTest::newRow("disabled") << false << u"#be9a7a"_s;
    }

    void disabledFieldsHaveDarkerText()
    {
        QFETCH(bool, linked);
        QFETCH(QString, colour);
        Run run;
        if (linked) {
            QVERIFY(run.startSignedIn());
        } else {
            run.start();
        }
        QVERIFY(showRoomy(run, 1));
        run.view().line(u"GDPS Name")->setText(solidText());
        run.view().description()->setPlainText(solidText());
        run.view().combo(u"Preset")->setItemText(0, solidText());
        for (QWidget* field :
             QList<QWidget*>{run.view().line(u"GDPS Name"), run.view().description(), run.view().combo(u"Preset")}) {
            QCOMPARE(field->isEnabled(), linked);
            const QImage picture = pictureOf(field);
            QVERIFY2(hasColour(picture, colour), field->metaObject()->className());
            QCOMPARE(colourInside(picture, 0), u"#9b5416"_s);
            QCOMPARE(colourInside(picture, 3), u"#3b1d0f"_s);
        }
    }

    void boxesKeepTheirIndicatorsWhenDisabled()
    {
        Run run;
        run.start();
        QVERIFY(showRoomy(run, 1));
        QCheckBox* checked = run.view().checkBox(u"Show this GDPS in the public recent list");
        QCheckBox* unchecked = run.view().checkBox(u"Start this GDPS in maintenance mode");
        for (const bool enabled : {false, true}) {
            checked->setEnabled(enabled);
            unchecked->setEnabled(enabled);
            const QImage on = pictureOf(checked);
            const QImage off = pictureOf(unchecked);
            QCOMPARE(colourInside(on, 0), u"#ffb25b"_s);
            QCOMPARE(colourInside(on, 9), u"#ff8f1f"_s);
            QCOMPARE(colourInside(off, 0), u"#9b5416"_s);
            QCOMPARE(colourInside(off, 9), u"#3b1d0f"_s);
        }
    }

    void theSelectedTabIsBrighterAndJoinsThePage()
    {
        Run run;
        run.start();
        QVERIFY(showRoomy(run, 0));
        QTabBar* bar = run.view().tabs()->tabBar();
        for (const int selected : {0, 1}) {
            bar->setCurrentIndex(selected);
            const QImage picture = pictureOf(bar);
            const auto colourOf = [bar, &picture](int index) {
                const QRect tab = bar->tabRect(index);
                return picture.pixelColor(tab.left() + 8, tab.center().y()).name();
            };
            QCOMPARE(colourOf(selected), u"#5d280f"_s);
            QCOMPARE(colourOf(1 - selected), u"#311106"_s);
            // Only the tab's upper edge is tested: it has a border, and the lower edge has none.
            const QRect tab = bar->tabRect(selected);
            QCOMPARE(picture.pixelColor(tab.center().x(), tab.top()).name(), u"#7d3d0c"_s);
            QCOMPARE(picture.pixelColor(tab.center().x(), tab.bottom()).name(), u"#5d280f"_s);
        }
        bar->setTabText(0, solidText());
        bar->setTabText(1, solidText());
        const QImage picture = pictureOf(bar);
        QVERIFY(hasColour(picture.copy(bar->tabRect(1)), u"#ffb25b"_s));
        QVERIFY(hasColour(picture.copy(bar->tabRect(0)), u"#f0c79e"_s));
    }

private:
    using Run = support::ClientRun;

    /// Shows the window high enough for both pages.
    static bool showRoomy(Run& run, int page)
    {
        run.view().tabs()->setCurrentIndex(page);
        run.window().resize(1220, 1400);
        run.window().show();
        return QTest::qWaitForWindowExposed(&run.window());
    }
};

TARNWICK_TEST(ThemedLooksTest)
#include "themed_looks_test.moc"
