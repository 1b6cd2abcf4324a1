#include "app/tarnwick_client_window.h"
#include "support/temporary_home.h"
#include "ui/wrapped_label.h"

#include <QFont>
#include <QLabel>
#include <QList>
#include <QObject>
#include <QString>
#include <QTest>
#include <QWidget>

#include <memory>
#include <utility>

/// The heights that the explanatory labels remember are always those that a plain label in their place would measure.
class WrappedLabelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void asTheWindowIsMade();
    void anotherText();
    void anotherFont();
    void anotherSheet();
    void anotherSheetOfTheWindow();

private:
    static QList<int> heightsOf(const QLabel& label);
    /// What a plain label says that has only just come into the same place.
    static QList<int> plainHeights(const WrappedLabel& label);
    void checkHeightsAfter(const QList<int>& before) const;

    std::unique_ptr<support::TemporaryHome> home;
    std::unique_ptr<QWidget> window;
    QList<WrappedLabel*> labels;
};

QList<int> WrappedLabelTest::heightsOf(const QLabel& label)
{
    return {label.heightForWidth(60), label.heightForWidth(300), label.heightForWidth(3000)};
}

QList<int> WrappedLabelTest::plainHeights(const WrappedLabel& label)
{
    QLabel plain(label.text(), label.parentWidget());
    plain.setObjectName(label.objectName());
    plain.setWordWrap(true);
    plain.setStyleSheet(label.styleSheet());
    plain.ensurePolished();
    plain.setFont(label.font());
    return heightsOf(plain);
}

void WrappedLabelTest::checkHeightsAfter(const QList<int>& before) const
{
    QCOMPARE(heightsOf(*labels.constFirst()), plainHeights(*labels.constFirst()));
    QVERIFY(heightsOf(*labels.constFirst()) != before);
}

void WrappedLabelTest::init()
{
    labels.clear();
    window.reset();
    home.reset(); // before there is another one
    home = std::make_unique<support::TemporaryHome>();
    window = std::make_unique<TarnwickClientWindow>();
    const auto all = window->findChildren<QLabel*>();
    for (QLabel* label : all) {
        if (auto* wrapped = dynamic_cast<WrappedLabel*>(label)) {
            wrapped->ensurePolished();
            labels.append(wrapped);
        }
    }
    QVERIFY(!labels.isEmpty());
}

void WrappedLabelTest::asTheWindowIsMade()
{
    for (const WrappedLabel* label : std::as_const(labels)) {
        QCOMPARE(heightsOf(*label), plainHeights(*label));
        QVERIFY(label->heightForWidth(60) > label->heightForWidth(3000));
    }
}

void WrappedLabelTest::anotherText()
{
    const QList<int> before = heightsOf(*labels.constFirst());
    labels.constFirst()->setText(u"Short"_s);
    checkHeightsAfter(before);
}

void WrappedLabelTest::anotherFont()
{
    window->setStyleSheet({}); // which would have the last word
    labels.constFirst()->ensurePolished();
    const QList<int> before = heightsOf(*labels.constFirst());
    QFont font = labels.constFirst()->font();
    font.setPixelSize(40);
    labels.constFirst()->setFont(font);
    checkHeightsAfter(before);
}

void WrappedLabelTest::anotherSheet()
{
    const QList<int> before = heightsOf(*labels.constFirst());
    labels.constFirst()->setStyleSheet(u"padding: 7px"_s);
    labels.constFirst()->ensurePolished();
    checkHeightsAfter(before);
}

void WrappedLabelTest::anotherSheetOfTheWindow()
{
    const QList<int> before = heightsOf(*labels.constFirst());
    window->setStyleSheet(u"QLabel { font-size: 31px; }"_s);
    labels.constFirst()->ensurePolished();
    checkHeightsAfter(before);
}

QTEST_MAIN(WrappedLabelTest)
#include "wrapped_label_test.moc"
