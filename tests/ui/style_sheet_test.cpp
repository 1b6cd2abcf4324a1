#include "support/client_test.h"

#include <QApplication>
#include <QObject>

/// The text of the application's style sheet.
class StyleSheetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { qApp->setStyleSheet({}); }

    void theSheetHoldsItsRulesInOrder()
    {
        const QStringList stated{
            u"QMainWindow, QWidget { background: #140704; color: #fff4de; font-family: 'Helvetica Neue'; font-size: 14px; }"_s,
            u"QFrame#PanelCard, QFrame#StatusCard { background: #2a1308; border: 1px solid #7d3d0c; border-radius: 18px; }"_s,
            u"QLabel#HeroTitle { font-size: 28px; font-weight: 700; color: #fff4de; }"_s,
            u"QLabel#CardTitle { font-size: 22px; font-weight: 700; color: #ffb25b; }"_s,
            u"QLabel#MutedLabel, QLabel#MutedValue, QLabel#StatusText { color: #f0c79e; }"_s,
            u"QLabel#PrimaryValue { font-size: 20px; font-weight: 700; }"_s,
            u"QLabel#LogoPanel { background: #1f0d06; border: 1px solid #7d3d0c; border-radius: 16px; color: #ffb25b; "
            "font-size: 18px; font-weight: 700; }"_s,
            u"QLineEdit, QPlainTextEdit, QComboBox, QTableWidget { background: #3b1d0f; color: #fff4de; "
            "border: 1px solid #9b5416; border-radius: 12px; padding: 10px 12px; selection-background-color: #ff8f1f; }"_s,
            u"QLineEdit:disabled, QPlainTextEdit:disabled, QComboBox:disabled { color: #be9a7a; }"_s,
            u"QPlainTextEdit { padding-top: 10px; }"_s,
            u"QPushButton { background: #5d280f; color: #fff4de; border: 1px solid #c56b18; border-radius: 14px; "
            "padding: 11px 16px; font-weight: 700; }"_s,
            u"QPushButton:hover { background: #733313; }"_s,
            u"QPushButton:disabled { color: #d0a784; border-color: #7f562f; background: #4a2511; }"_s,
            u"QCheckBox { spacing: 10px; }"_s,
            u"QCheckBox::indicator { width: 18px; height: 18px; }"_s,
            u"QCheckBox::indicator:unchecked { background: #3b1d0f; border: 1px solid #9b5416; border-radius: 5px; }"_s,
            u"QCheckBox::indicator:checked { background: #ff8f1f; border: 1px solid #ffb25b; border-radius: 5px; }"_s,
            u"QTabWidget::pane { border: none; }"_s,
            u"QTabBar::tab { background: #311106; color: #f0c79e; border: 1px solid #7d3d0c; border-bottom: none; "
            "border-top-left-radius: 12px; border-top-right-radius: 12px; padding: 12px 18px; margin-right: 8px; }"_s,
            u"QTabBar::tab:selected { background: #5d280f; color: #ffb25b; }"_s,
            u"QHeaderView::section { background: #311106; color: #ffb25b; border: none; "
            "border-bottom: 1px solid #7d3d0c; padding: 10px; font-weight: 700; }"_s,
            u"QTableWidget { gridline-color: #5d280f; }"_s,
            u"QTableWidget::item { padding: 8px; }"_s,
            u"QTableWidget::item:selected { background: #733313; color: #fff4de; }"_s};
        Run run;
        run.start();
        // White space is insignificant.
        QCOMPARE(qApp->styleSheet().simplified().replace(u"} "_s, u"}\n"_s).split(u'\n'), stated);
        QCOMPARE(run.window().styleSheet(), QString());
    }

    void theSheetIsNeverAppliedAgain()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        qApp->setStyleSheet({});
        run.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
        run.press(u"Refresh");
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        run.press(u"Unlink");
        QVERIFY(run.markerComesBack());
        run.window().close();
        QCOMPARE(qApp->styleSheet(), QString());
    }

private:
    using Run = support::ClientRun;
};

TARNWICK_TEST(StyleSheetTest)
#include "style_sheet_test.moc"
