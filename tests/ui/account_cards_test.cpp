#include "api/service_host.h"
#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/layout_contents.h"

#include <QApplication>
#include <QClipboard>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QObject>
#include <QProxyStyle>
#include <QRegularExpression>
#include <QTest>
#include <QVBoxLayout>

using support::contentsOf;
using support::nestedLayout;

/// The two cards side by side: linking the account, and the linked account.
class AccountCardsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void theRowHoldsTwoCardsOfEqualStretch();
    void theLinkCardHoldsItsParts();
    void theLinkFormHoldsUrlAndCode();
    void theLinkFormIsAlignedLeftAndTopOnEveryDesktop();
    void theLinkButtonsShareARow();
    void theAccountCardHoldsItsParts();
    void theAccountButtonsShareARow();
    void theUrlFieldStartsWithTheStoredText_data();
    void theUrlFieldStartsWithTheStoredText();
    void theUrlFieldOfAFirstStartShowsTheDefault();
    void theUrlFieldCanAlwaysBeEdited();
    void theLinkCodeCanBeCopiedButNotTyped();

private:
    /// A desktop that aligns forms to the right and in the middle unless a form says otherwise.
    class OtherDesktop : public QProxyStyle
    {
    public:
        int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                      QStyleHintReturn* data) const override
        {
            switch (hint) {
            case SH_FormLayoutLabelAlignment:
                return int(Qt::AlignRight);
            case SH_FormLayoutFormAlignment:
                return int(Qt::AlignCenter);
            default:
                return QProxyStyle::styleHint(hint, option, widget, data);
            }
        }
    };
    OtherDesktop* otherDesktop = nullptr; // the application's, once it is its style

    using Run = support::ClientRun<TarnwickClientWindow>;

    static QBoxLayout* rowOf(Run& run)
    {
        const QWidget* central = qobject_cast<QMainWindow*>(&run.window())->centralWidget();
        return nestedLayout<QHBoxLayout>(central->layout(), 2);
    }
    static QVBoxLayout* columnOf(Run& run, int card)
    {
        return qobject_cast<QVBoxLayout*>(rowOf(run)->itemAt(card)->widget()->layout());
    }
};

void AccountCardsTest::theRowHoldsTwoCardsOfEqualStretch()
{
    Run run;
    run.start();
    const QBoxLayout* row = rowOf(run);
    QVERIFY(row != nullptr);
    QCOMPARE(row->spacing(), 18);
    QCOMPARE(row->contentsMargins(), QMargins());
    QCOMPARE(contentsOf(row), (QStringList{u"QFrame#PanelCard, stretch 1"_s, u"QFrame#PanelCard, stretch 1"_s}));
}

void AccountCardsTest::theLinkCardHoldsItsParts()
{
    Run run;
    run.start();
    const QVBoxLayout* column = columnOf(run, 0);
    QVERIFY(column != nullptr);
    QCOMPARE(column->contentsMargins(), QMargins(22, 20, 22, 22));
    QCOMPARE(column->spacing(), 12);
    QCOMPARE(contentsOf(column),
             (QStringList{u"QLabel#CardTitle \"Link Tarnwick Account\""_s,
                          u"QLabel#MutedLabel \"Generate a one-time link code, then approve it at "_s + publicHost() +
                              u"/link/pc.\""_s,
                          u"QFormLayout"_s, u"QHBoxLayout"_s, u"space, stretch 1"_s}));
    QVERIFY(qobject_cast<QLabel*>(column->itemAt(1)->widget())->wordWrap());
}

void AccountCardsTest::theLinkFormHoldsUrlAndCode()
{
    Run run;
    run.start();
    const auto* form = nestedLayout<QFormLayout>(columnOf(run, 0), 2);
    QVERIFY(form != nullptr);
    QCOMPARE(form->horizontalSpacing(), 10);
    QCOMPARE(form->verticalSpacing(), 10);
    QCOMPARE(form->rowCount(), 2);
    QCOMPARE(support::inWords(form->itemAt(0, QFormLayout::LabelRole)), u"QLabel \"Tarnwick URL\""_s);
    QCOMPARE(support::inWords(form->itemAt(1, QFormLayout::LabelRole)), u"QLabel \"Link code\""_s);

    const auto* url = qobject_cast<QLineEdit*>(form->itemAt(0, QFormLayout::FieldRole)->widget());
    const auto* code = qobject_cast<QLineEdit*>(form->itemAt(1, QFormLayout::FieldRole)->widget());
    QVERIFY(url != nullptr);
    QVERIFY(code != nullptr);
    QCOMPARE(url->placeholderText(), u"https://"_s + publicHost());
    QVERIFY(!url->isReadOnly());
    QCOMPARE(code->text(), QString());
    QCOMPARE(code->placeholderText(), u"TWPC-ABC123"_s);
    QVERIFY(code->isReadOnly());
}

void AccountCardsTest::theLinkFormIsAlignedLeftAndTopOnEveryDesktop()
{
    const QString formerStyle = QApplication::style()->name();
    otherDesktop = new OtherDesktop;
    QApplication::setStyle(otherDesktop);
    Run run;
    run.start();
    const auto* form = nestedLayout<QFormLayout>(columnOf(run, 0), 2);
    QCOMPARE(QFormLayout().labelAlignment(), Qt::AlignRight);
    QCOMPARE(form->labelAlignment(), Qt::AlignLeft);
    QCOMPARE(form->formAlignment(), Qt::AlignTop);
    QApplication::setStyle(formerStyle);
}

void AccountCardsTest::theLinkButtonsShareARow()
{
    Run run;
    run.start();
    const auto* buttons = nestedLayout<QHBoxLayout>(columnOf(run, 0), 3);
    QVERIFY(buttons != nullptr);
    QCOMPARE(buttons->spacing(), 10);
    QCOMPARE(contentsOf(buttons),
             (QStringList{u"QPushButton \"Generate Link Code\""_s, u"QPushButton \"Open Public Pairing Page\""_s}));
}

void AccountCardsTest::theAccountCardHoldsItsParts()
{
    Run run;
    run.start();
    const QVBoxLayout* column = columnOf(run, 1);
    QVERIFY(column != nullptr);
    QCOMPARE(column->contentsMargins(), QMargins(22, 20, 22, 22));
    QCOMPARE(column->spacing(), 12);
    QCOMPARE(contentsOf(column),
             (QStringList{u"QLabel#CardTitle \"Linked Account\""_s,
                          u"QLabel#MutedLabel \"Once linked, the desktop client can load your account plan, "
                          "available cores, and current GDPS list.\""_s,
                          u"QLabel#PrimaryValue \"Not linked yet\""_s, u"QLabel#MutedValue \"Plan: -\""_s,
                          u"QLabel#MutedValue \"Limit: -\""_s, u"space, stretch 1"_s, u"QHBoxLayout"_s}));
    QVERIFY(qobject_cast<QLabel*>(column->itemAt(1)->widget())->wordWrap());
    for (int index = 2; index <= 4; ++index) {
        QVERIFY(!qobject_cast<QLabel*>(column->itemAt(index)->widget())->wordWrap());
    }
}

void AccountCardsTest::theAccountButtonsShareARow()
{
    Run run;
    run.start();
    const auto* buttons = nestedLayout<QHBoxLayout>(columnOf(run, 1), 6);
    QVERIFY(buttons != nullptr);
    QCOMPARE(buttons->spacing(), 10);
    QCOMPARE(contentsOf(buttons), (QStringList{u"QPushButton \"Refresh\""_s, u"QPushButton \"Unlink\""_s}));
}

void AccountCardsTest::theUrlFieldStartsWithTheStoredText_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("as it is") << QByteArray("http://127.0.0.1:9") << u"http://127.0.0.1:9"_s;
    QTest::newRow("not normalised") << QByteArray("hosting.example//") << u"hosting.example//"_s;
    QTest::newRow("trimmed") << QByteArray("  hosting.example ") << u"hosting.example"_s;
    QTest::newRow("blank") << QByteArray("  ") << u"https://"_s + publicHost();
}

void AccountCardsTest::theUrlFieldStartsWithTheStoredText()
{
    QFETCH(QByteArray, stored);
    QFETCH(QString, shown);
    const support::TemporaryHome home;
    home.writeState(R"({"origin":")" + stored + R"("})");
    const TarnwickClientWindow window;
    QCOMPARE(support::WindowView(window).line(u"Tarnwick URL")->text(), shown);
}

void AccountCardsTest::theUrlFieldOfAFirstStartShowsTheDefault()
{
    const support::TemporaryHome home;
    const TarnwickClientWindow window;
    QCOMPARE(support::WindowView(window).line(u"Tarnwick URL")->text(), u"https://"_s + publicHost());
}

void AccountCardsTest::theUrlFieldCanAlwaysBeEdited()
{
    Run run;
    run.start();
    QLineEdit* url = run.view().line(u"Tarnwick URL");
    QVERIFY(url->isEnabled());
    url->clear();
    QTest::keyClicks(url, u"a.example/b"_s);
    QCOMPARE(url->text(), u"a.example/b"_s);
}

void AccountCardsTest::theLinkCodeCanBeCopiedButNotTyped()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    QLineEdit* code = run.view().line(u"Link code");
    QVERIFY(code->isEnabled());
    QTest::keyClicks(code, u"abc"_s);
    QTest::keyClick(code, Qt::Key_Backspace);
    QCOMPARE(code->text(), u"TWPC-1"_s);

    QApplication::clipboard()->setText(u"something else"_s);
    QTest::keySequence(code, QKeySequence::SelectAll);
    QTest::keySequence(code, QKeySequence::Copy);
    QCOMPARE(QApplication::clipboard()->text(), u"TWPC-1"_s);
    QTest::keySequence(code, QKeySequence::Cut);
    QCOMPARE(code->text(), u"TWPC-1"_s);
}

QTEST_MAIN(AccountCardsTest)
#include "account_cards_test.moc"
