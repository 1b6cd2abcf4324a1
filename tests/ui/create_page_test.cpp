#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/layout_contents.h"

#include <QGridLayout>
#include <QObject>
#include <QRegularExpression>
#include <QScrollArea>
#include <QTest>
#include <QTextDocument>
#include <QVBoxLayout>

using support::contentsOf;
using support::nestedLayout;

/// The page "Create GDPS": its layout, and how the fields of a new form start out.
class CreatePageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void thePageHoldsOneCard();
    void theCardHoldsItsParts();
    void theGridHoldsItsCells();
    void theBoxesShareAColumn();
    void theFieldsStartOut_data();
    void theFieldsStartOut();
    void theDescriptionIsPlainTextOfFixedHeight();
    void theComboBoxesStartOut();
    void theBoxesStartOut();
    void lineFieldsKeepTheirMaximumLength_data();
    void lineFieldsKeepTheirMaximumLength();
    void theEmojiLimitCountsUtf16Units();
    void aSeventhParagraphDropsTheOldest();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static QBoxLayout* pageOf(const Run& run)
    {
        const auto* area = qobject_cast<QScrollArea*>(run.view().tabs()->widget(1));
        return qobject_cast<QBoxLayout*>(area->widget()->layout());
    }
    static QVBoxLayout* columnOf(const Run& run)
    {
        return qobject_cast<QVBoxLayout*>(pageOf(run)->itemAt(0)->widget()->layout());
    }
    /// The grid's cells as "row,column rows×columns: item"; fields by the label that is their buddy.
    static QStringList cellsOf(const QGridLayout* grid, const support::WindowView& view);
};

QStringList CreatePageTest::cellsOf(const QGridLayout* grid, const support::WindowView& view)
{
    const QHash<QWidget*, QString> fields{
        {view.line(u"GDPS Name"), u"name field"_s}, {view.description(), u"description field"_s},
        {view.line(u"Emoji"), u"emoji field"_s},    {view.line(u"Accent"), u"accent field"_s},
        {view.line(u"Tags"), u"tags field"_s},      {view.combo(u"Core"), u"core field"_s},
        {view.combo(u"Preset"), u"preset field"_s}};
    QStringList cells;
    for (int index = 0; index < grid->count(); ++index) {
        int row = 0;
        int column = 0;
        int rowSpan = 0;
        int columnSpan = 0;
        grid->getItemPosition(index, &row, &column, &rowSpan, &columnSpan);
        QLayoutItem* item = grid->itemAt(index);
        cells.append(u"%1,%2 %3x%4: "_s.arg(row).arg(column).arg(rowSpan).arg(columnSpan) +
                     fields.value(item->widget(), support::inWords(item)));
    }
    cells.sort();
    return cells;
}

void CreatePageTest::thePageHoldsOneCard()
{
    Run run;
    run.start();
    QCOMPARE(contentsOf(pageOf(run)), QStringList{u"QFrame#PanelCard, stretch 1"_s});
}

void CreatePageTest::theCardHoldsItsParts()
{
    Run run;
    run.start();
    const QVBoxLayout* column = columnOf(run);
    QVERIFY(column != nullptr);
    QCOMPARE(column->contentsMargins(), QMargins(22, 20, 22, 22));
    QCOMPARE(column->spacing(), 12);
#if defined(Q_OS_MACOS)
    const QString platform = u"macOS"_s;
#elif defined(Q_OS_WIN)
    const QString platform = u"Windows"_s;
#else
    const QString platform = u"Linux"_s;
#endif
    QCOMPARE(contentsOf(column),
             (QStringList{u"QLabel#CardTitle \"Create a New GDPS\""_s,
                          u"QLabel#MutedLabel \"This Qt layout replaces the old fixed-position client, so "
                          "everything reflows correctly when the window moves or resizes.\""_s,
                          u"QGridLayout"_s, u"QVBoxLayout"_s, u"QPushButton \"Create GDPS\", left"_s,
                          u"QLabel#MutedLabel \"Current desktop build: "_s + platform + u'"', u"space, stretch 1"_s}));
    QVERIFY(qobject_cast<QLabel*>(column->itemAt(1)->widget())->wordWrap());
    QVERIFY(!qobject_cast<QLabel*>(column->itemAt(5)->widget())->wordWrap());
}

void CreatePageTest::theGridHoldsItsCells()
{
    Run run;
    run.start();
    const auto* grid = nestedLayout<QGridLayout>(columnOf(run), 2);
    QVERIFY(grid != nullptr);
    QCOMPARE(grid->horizontalSpacing(), 12);
    QCOMPARE(grid->verticalSpacing(), 10);
    QCOMPARE(
        cellsOf(grid, run.view()),
        (QStringList{u"0,0 1x1: QLabel \"GDPS Name\""_s, u"1,0 1x2: name field"_s, u"2,0 1x1: QLabel \"Description\""_s,
                     u"3,0 1x2: description field"_s, u"4,0 1x1: QLabel \"Emoji\""_s, u"4,1 1x1: QLabel \"Accent\""_s,
                     u"5,0 1x1: emoji field"_s, u"5,1 1x1: accent field"_s, u"6,0 1x2: QLabel \"Tags\""_s,
                     u"7,0 1x2: tags field"_s, u"8,0 1x1: QLabel \"Core\""_s, u"8,1 1x1: QLabel \"Preset\""_s,
                     u"9,0 1x1: core field"_s, u"9,1 1x1: preset field"_s}));
}

void CreatePageTest::theBoxesShareAColumn()
{
    Run run;
    run.start();
    const auto* boxes = nestedLayout<QVBoxLayout>(columnOf(run), 3);
    QVERIFY(boxes != nullptr);
    QCOMPARE(boxes->spacing(), 8);
    QCOMPARE(contentsOf(boxes), (QStringList{u"QCheckBox \"Show this GDPS in the public recent list\""_s,
                                             u"QCheckBox \"Start this GDPS in maintenance mode\""_s}));
}

void CreatePageTest::theFieldsStartOut_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("placeholder");
    QTest::newRow("name") << u"GDPS Name"_s << QString() << u"Example: Neon Burst GDPS"_s;
    QTest::newRow("emoji") << u"Emoji"_s << QString::fromUtf8("\xf0\x9f\x94\xa5") << QString();
    QTest::newRow("accent") << u"Accent"_s << u"#ff8f1f"_s << QString();
    QTest::newRow("tags") << u"Tags"_s << QString() << u"hardcore, stars, cube"_s;
}

void CreatePageTest::theFieldsStartOut()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, placeholder);
    Run run;
    run.start();
    const QLineEdit* line = run.view().line(field);
    QVERIFY(line != nullptr);
    QCOMPARE(line->text(), text);
    QCOMPARE(line->placeholderText(), placeholder);
    QVERIFY(!line->isReadOnly());
    QCOMPARE(line->echoMode(), QLineEdit::Normal);
}

void CreatePageTest::theDescriptionIsPlainTextOfFixedHeight()
{
    Run run;
    run.start();
    const QPlainTextEdit* description = run.view().description();
    QCOMPARE(description->toPlainText(), QString());
    QCOMPARE(description->placeholderText(), u"Short description"_s);
    QCOMPARE(description->minimumHeight(), 84);
    QCOMPARE(description->maximumHeight(), 84);
    QCOMPARE(description->document()->maximumBlockCount(), 6);
    QVERIFY(!description->isReadOnly());
}

void CreatePageTest::theComboBoxesStartOut()
{
    Run run;
    run.start();
    const QComboBox* core = run.view().combo(u"Core");
    QCOMPARE(core->count(), 1);
    QCOMPARE(core->currentText(), u"No cores available"_s);
    const QComboBox* preset = run.view().combo(u"Preset");
    QCOMPARE(preset->count(), 3);
    QCOMPARE(preset->itemText(0), u"balanced"_s);
    QCOMPARE(preset->itemText(1), u"casual"_s);
    QCOMPARE(preset->itemText(2), u"hardcore"_s);
    QCOMPARE(preset->currentIndex(), 0);
    QVERIFY(!core->isEditable());
    QVERIFY(!preset->isEditable());
}

void CreatePageTest::theBoxesStartOut()
{
    Run run;
    run.start();
    QVERIFY(run.view().checkBox(u"Show this GDPS in the public recent list")->isChecked());
    QVERIFY(!run.view().checkBox(u"Start this GDPS in maintenance mode")->isChecked());
}

void CreatePageTest::lineFieldsKeepTheirMaximumLength_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<int>("length");
    QTest::newRow("name") << u"GDPS Name"_s << 80;
    QTest::newRow("emoji") << u"Emoji"_s << 6;
    QTest::newRow("accent") << u"Accent"_s << 16;
    QTest::newRow("tags") << u"Tags"_s << 140;
}

void CreatePageTest::lineFieldsKeepTheirMaximumLength()
{
    QFETCH(QString, field);
    QFETCH(int, length);
    Run run;
    QVERIFY(run.startSignedIn());
    QLineEdit* line = run.view().line(field);
    QCOMPARE(line->maxLength(), length);
    line->clear();
    QTest::keyClicks(line, QString(length + 3, u'x'));
    QCOMPARE(line->text(), QString(length, u'x'));
}

void CreatePageTest::theEmojiLimitCountsUtf16Units()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QLineEdit* emoji = run.view().line(u"Emoji");
    const QString fire = emoji->text();
    QCOMPARE(fire.size(), 2);
    emoji->insert(u"abcde"_s);
    QCOMPARE(emoji->text(), fire + u"abcd"_s);
    emoji->clear();
    emoji->insert(fire.repeated(4));
    QCOMPARE(emoji->text(), fire.repeated(3));
}

void CreatePageTest::aSeventhParagraphDropsTheOldest()
{
    Run run;
    QVERIFY(run.startSignedIn());
    QPlainTextEdit* description = run.view().description();
    const QString digits = u"123456"_s;
    for (const QChar digit : digits) {
        QTest::keyClicks(description, QString(digit));
        QTest::keyClick(description, Qt::Key_Return);
    }
    QCOMPARE(description->toPlainText(), u"2\n3\n4\n5\n6\n"_s);
    QTest::keyClicks(description, u"7"_s);
    QCOMPARE(description->toPlainText(), u"2\n3\n4\n5\n6\n7"_s);
    QCOMPARE(description->blockCount(), 6);
}

QTEST_MAIN(CreatePageTest)
#include "create_page_test.moc"
