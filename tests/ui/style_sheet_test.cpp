#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QApplication>
#include <QObject>
#include <QRegularExpression>
#include <QTest>

/// The text of the application's style sheet.
class StyleSheetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void theSheetHoldsItsRulesInOrder_data();
    void theSheetHoldsItsRulesInOrder();
    void theSheetHoldsNothingElse();
    void theSheetIsTheApplicationsFromTheConstructorOn();
    void theSheetIsNeverAppliedAgain();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
    struct Rule
    {
        QString selector;
        QString declarations;
    };

    /// The rules of the application's sheet, with every run of white space made one blank.
    static QList<Rule> rules()
    {
        QList<Rule> found;
        const QStringList blocks = qApp->styleSheet().split(u'}');
        for (const QString& block : blocks) {
            if (!block.trimmed().isEmpty()) {
                found.append({block.section(u'{', 0, 0).simplified(), block.section(u'{', 1).simplified()});
            }
        }
        return found;
    }
    static void startOnce()
    {
        Run run;
        run.start();
    }
    static constexpr int ruleCount = 24;
};

void StyleSheetTest::theSheetHoldsItsRulesInOrder_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("declarations");
    int place = 0;
    const auto add = [&place](const QString& selector, const QString& declarations) {
        QTest::addRow("%d %s", place + 1, qPrintable(selector)) << place << selector << declarations;
        ++place;
    };
    add(u"QMainWindow, QWidget"_s,
        u"background: #140704; color: #fff4de; font-family: 'Helvetica Neue'; font-size: 14px;"_s);
    add(u"QFrame#PanelCard, QFrame#StatusCard"_s,
        u"background: #2a1308; border: 1px solid #7d3d0c; border-radius: 18px;"_s);
    add(u"QLabel#HeroTitle"_s, u"font-size: 28px; font-weight: 700; color: #fff4de;"_s);
    add(u"QLabel#CardTitle"_s, u"font-size: 22px; font-weight: 700; color: #ffb25b;"_s);
    add(u"QLabel#MutedLabel, QLabel#MutedValue, QLabel#StatusText"_s, u"color: #f0c79e;"_s);
    add(u"QLabel#PrimaryValue"_s, u"font-size: 20px; font-weight: 700;"_s);
    add(u"QLabel#LogoPanel"_s, u"background: #1f0d06; border: 1px solid #7d3d0c; border-radius: 16px; "
                               "color: #ffb25b; font-size: 18px; font-weight: 700;"_s);
    add(u"QLineEdit, QPlainTextEdit, QComboBox, QTableWidget"_s,
        u"background: #3b1d0f; color: #fff4de; border: 1px solid #9b5416; border-radius: 12px; "
        "padding: 10px 12px; selection-background-color: #ff8f1f;"_s);
    add(u"QLineEdit:disabled, QPlainTextEdit:disabled, QComboBox:disabled"_s, u"color: #be9a7a;"_s);
    add(u"QPlainTextEdit"_s, u"padding-top: 10px;"_s);
    add(u"QPushButton"_s, u"background: #5d280f; color: #fff4de; border: 1px solid #c56b18; "
                          "border-radius: 14px; padding: 11px 16px; font-weight: 700;"_s);
    add(u"QPushButton:hover"_s, u"background: #733313;"_s);
    add(u"QPushButton:disabled"_s, u"color: #d0a784; border-color: #7f562f; background: #4a2511;"_s);
    add(u"QCheckBox"_s, u"spacing: 10px;"_s);
    add(u"QCheckBox::indicator"_s, u"width: 18px; height: 18px;"_s);
    add(u"QCheckBox::indicator:unchecked"_s, u"background: #3b1d0f; border: 1px solid #9b5416; border-radius: 5px;"_s);
    add(u"QCheckBox::indicator:checked"_s, u"background: #ff8f1f; border: 1px solid #ffb25b; border-radius: 5px;"_s);
    add(u"QTabWidget::pane"_s, u"border: none;"_s);
    add(u"QTabBar::tab"_s,
        u"background: #311106; color: #f0c79e; border: 1px solid #7d3d0c; border-bottom: none; "
        "border-top-left-radius: 12px; border-top-right-radius: 12px; padding: 12px 18px; margin-right: 8px;"_s);
    add(u"QTabBar::tab:selected"_s, u"background: #5d280f; color: #ffb25b;"_s);
    add(u"QHeaderView::section"_s, u"background: #311106; color: #ffb25b; border: none; "
                                   "border-bottom: 1px solid #7d3d0c; padding: 10px; font-weight: 700;"_s);
    add(u"QTableWidget"_s, u"gridline-color: #5d280f;"_s);
    add(u"QTableWidget::item"_s, u"padding: 8px;"_s);
    add(u"QTableWidget::item:selected"_s, u"background: #733313; color: #fff4de;"_s);
    QCOMPARE(place, ruleCount);
}

void StyleSheetTest::theSheetHoldsItsRulesInOrder()
{
    QFETCH(int, place);
    QFETCH(QString, selector);
    QFETCH(QString, declarations);
    startOnce();
    const QList<Rule> found = rules();
    QVERIFY(place < found.size());
    QCOMPARE(found.at(place).selector, selector);
    QCOMPARE(found.at(place).declarations, declarations);
}

void StyleSheetTest::theSheetHoldsNothingElse()
{
    startOnce();
    QCOMPARE(rules().size(), ruleCount);
    QCOMPARE(qApp->styleSheet().count(u'{'), ruleCount);
    QCOMPARE(qApp->styleSheet().count(u'}'), ruleCount);
    QVERIFY(!qApp->styleSheet().contains(u"/*"_s));
}

void StyleSheetTest::theSheetIsTheApplicationsFromTheConstructorOn()
{
    qApp->setStyleSheet({});
    Run run;
    run.start();
    QCOMPARE(rules().size(), ruleCount);
    QCOMPARE(run.window().styleSheet(), QString());
}

void StyleSheetTest::theSheetIsNeverAppliedAgain()
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

QTEST_MAIN(StyleSheetTest)
#include "style_sheet_test.moc"
