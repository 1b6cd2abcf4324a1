#include "support/client_test.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QMetaEnum>
#include <QObject>
#include <QPalette>

#include <cmath>

/// The application's palette: what the style sheet does not style has matching colours, on every desktop.
class PaletteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QApplication::setPalette(lightPalette()); }
    void cleanup()
    {
        qApp->setStyleSheet({});
        QApplication::setPalette({});
    }

    void everyRoleHasAColourOfTheSheet()
    {
        Run run;
        run.start();
        const QList<std::pair<QString, QList<QPalette::ColorRole>>> stated{
            {u"#140704"_s, {QPalette::Window, QPalette::HighlightedText}},
            {u"#2a1308"_s, {QPalette::AlternateBase, QPalette::ToolTipBase}},
            {u"#3b1d0f"_s, {QPalette::Base}},
            {u"#5d280f"_s, {QPalette::Button, QPalette::Midlight}},
            {u"#7d3d0c"_s, {QPalette::Light, QPalette::Mid, QPalette::Dark, QPalette::Shadow}},
            {u"#ff8f1f"_s, {QPalette::Highlight}},
            {u"#ffb25b"_s, {QPalette::Link, QPalette::LinkVisited}},
            {u"#fff4de"_s, {QPalette::BrightText, QPalette::ToolTipText}}};
        int count = 3;
        for (const auto& [colour, roles] : stated) {
            QVERIFY(qApp->styleSheet().contains(colour));
            for (const QPalette::ColorRole role : roles) {
                ++count;
                QCOMPARE(colours(role), QStringList(3, colour));
            }
        }
        for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText}) {
            QCOMPARE(colours(role), (QStringList{u"#fff4de"_s, u"#fff4de"_s, u"#be9a7a"_s}));
        }
        QCOMPARE(colours(QPalette::ButtonText), (QStringList{u"#fff4de"_s, u"#fff4de"_s, u"#d0a784"_s}));
#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
        QCOMPARE(colours(QPalette::Accent), QStringList(3, u"#ff8f1f"_s));
        ++count;
#endif
        // All but NoRole and the placeholder's, which Qt derives from the field's text colour.
        QCOMPARE(count, QPalette::NColorRoles - 2);
    }

    void textsAreReadable()
    {
        Run run;
        run.start();
        const QPalette palette = QApplication::palette();
        const QMetaEnum roles = QMetaEnum::fromType<QPalette::ColorRole>();
        const QList<std::pair<QPalette::ColorRole, QPalette::ColorRole>> pairs{
            {QPalette::Text, QPalette::Base},
            {QPalette::Text, QPalette::AlternateBase},
            {QPalette::HighlightedText, QPalette::Highlight},
            {QPalette::WindowText, QPalette::Window},
            {QPalette::ButtonText, QPalette::Button},
            {QPalette::ToolTipText, QPalette::ToolTipBase},
            {QPalette::Link, QPalette::Window},
            {QPalette::LinkVisited, QPalette::Window},
        };
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            for (const auto& [text, background] : pairs) {
                const double found = contrast(palette.color(group, text), palette.color(group, background));
                QVERIFY2(found >= readable,
                         qPrintable(u"%1 on %2 in group %3: %4"_s.arg(QLatin1String(roles.valueToKey(text)),
                                                                      QLatin1String(roles.valueToKey(background)),
                                                                      QString::number(group), QString::number(found))));
            }
        }
        for (const QColor status : {QColor(0x76, 0xff, 0xa6), QColor(0xf0, 0xc7, 0x9e)}) {
            QVERIFY(contrast(status, palette.color(QPalette::Base)) >= readable);
            QVERIFY(contrast(status, palette.color(QPalette::AlternateBase)) >= readable);
            QVERIFY(contrast(status, QColor(0x73, 0x33, 0x13)) >= readable); // a selected row, from the style sheet
        }
    }

    void popUpListsAreDrawnDark()
    {
        Run run;
        QVERIFY(run.startSignedIn());
        run.window().resize(1220, 1400);
        run.view().tabs()->setCurrentIndex(1);
        run.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
        QComboBox* preset = run.view().combo(u"Preset");
        {
            // The offscreen platform prints a message about pop-ups.
            const support::MessageCatcher platform;
            preset->showPopup();
            QTRY_VERIFY(preset->view()->isVisible());
        }
        QCOMPARE(preset->view()->palette().color(QPalette::Text), QColor(0xff, 0xf4, 0xde));
        const QImage image = preset->view()->viewport()->grab().toImage();
        int bright = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                bright += luminance(image.pixelColor(x, y)) > 0.5 ? 1 : 0;
            }
        }
        preset->hidePopup();
        // Only the texts are bright.
        QVERIFY(bright < image.width() * image.height() / 10);
    }

private:
    using Run = support::ClientRun;

    /// Of active, inactive and disabled widgets.
    static QStringList colours(QPalette::ColorRole role)
    {
        const QPalette palette = QApplication::palette();
        return {palette.color(QPalette::Active, role).name(), palette.color(QPalette::Inactive, role).name(),
                palette.color(QPalette::Disabled, role).name()};
    }
    static QPalette lightPalette()
    {
        QPalette palette(QColor(0xef, 0xef, 0xef));
        palette.setColor(QPalette::Base, Qt::white);
        palette.setColor(QPalette::AlternateBase, QColor(0xf7, 0xf7, 0xf7));
        palette.setColor(QPalette::Text, Qt::black);
        palette.setColor(QPalette::WindowText, Qt::black);
        return palette;
    }
    static double luminance(const QColor& colour)
    {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(double(colour.redF())) + 0.7152 * linear(double(colour.greenF())) +
               0.0722 * linear(double(colour.blueF()));
    }
    /// From 1 (equal colours) to 21 (black on white). Small text is readable from 4.5.
    static double contrast(const QColor& one, const QColor& other)
    {
        const double brighter = std::max(luminance(one), luminance(other));
        const double darker = std::min(luminance(one), luminance(other));
        return (brighter + 0.05) / (darker + 0.05);
    }
    static constexpr double readable = 4.5;
};

TARNWICK_TEST(PaletteTest)
#include "palette_test.moc"
