// The program looks for its logo next to its own executable. So this test copies its own executable into temporary
// folders and runs the copy, which constructs the window and prints what it shows.
#include "support/client_test.h"

#include "app/logo_places.h"

#include <QApplication>
#include <QLocalServer>
#include <QScopeGuard>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace {

/// The copy first deletes its own file.
constexpr const char* logoProbeWithoutFile = "without file";
/// The copy first deletes its working directory.
constexpr const char* logoProbeWithoutFolder = "without folder";

int reportLogo(int argc, char** argv)
{
    const QByteArray wish = argv[1];
    std::error_code ignored;
    if (wish == logoProbeWithoutFile) {
        std::filesystem::remove(std::filesystem::read_symlink("/proc/self/exe", ignored), ignored);
    } else if (wish == logoProbeWithoutFolder) {
        std::filesystem::remove(std::filesystem::current_path(ignored), ignored);
    }
    const QApplication application(argc, argv);
    const support::MessageCatcher printed;
    const auto window = support::newClientWindow();
    QLabel* label = support::WindowView(*window).label(u"LogoPanel"_s);
    const QImage logo = label->pixmap().toImage();
    const QSize icon = window->windowIcon().actualSize(QSize(1000, 1000));
    // Left of a logo that is narrower than its label.
    const QColor beside = support::pictureOf(label).pixelColor(10, 48);
    const QJsonObject report{
        {u"executable"_s, QCoreApplication::applicationFilePath()},
        {u"text"_s, label->text()},
        {u"centred"_s, label->alignment() == Qt::AlignCenter},
        {u"labelSize"_s, u"%1x%2"_s.arg(label->width()).arg(label->height())},
        {u"size"_s, u"%1x%2"_s.arg(logo.width()).arg(logo.height())},
        {u"density"_s, logo.devicePixelRatio()},
        {u"colour"_s, logo.isNull() ? QString() : logo.pixelColor(logo.rect().center()).name()},
        {u"colourBeside"_s, beside.name()},
        {u"icon"_s, window->windowIcon().isNull() ? u"none"_s : u"%1x%2"_s.arg(icon.width()).arg(icon.height())},
        {u"iconOfTheApplication"_s, !QApplication::windowIcon().isNull()},
    };
    std::puts(QJsonDocument(report).toJson(QJsonDocument::Compact).constData());
    return printed.messages().isEmpty() ? 0 : 1;
}

const QStringList& logoColours()
{
    static const QStringList names{u"#aa0000"_s, u"#00aa00"_s, u"#0000aa"_s, u"#aaaa00"_s};
    return names;
}

} // namespace

class LogoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstPlaceThatHasAnEntryIsUsed_data()
    {
        QTest::addColumn<QList<int>>("present");
        QTest::addColumn<int>("used");
        QTest::newRow("everywhere") << QList{1, 2, 3, 4} << 1;
        QTest::newRow("everywhere but in the bundle") << QList{2, 3, 4} << 2;
        QTest::newRow("in both trees") << QList{3, 4} << 3;
        QTest::newRow("in the build tree") << QList{4} << 4;
    }

    void theFirstPlaceThatHasAnEntryIsUsed()
    {
        QFETCH(QList<int>, present);
        QFETCH(int, used);
        const LogoPlaces places;
        for (const int number : std::as_const(present)) {
            QVERIFY(LogoPlaces::paint(places.candidate(number), QColor(logoColours().at(number - 1))));
        }
        const QJsonObject report = places.run();
        QCOMPARE(report.value(u"colour"_s).toString(), logoColours().at(used - 1));
        QCOMPARE(report.value(u"text"_s).toString(), QString());
        QCOMPARE(report.value(u"icon"_s).toString(), u"100x100"_s);
        QCOMPARE(report.value(u"iconOfTheApplication"_s).toBool(), false);
    }

    void withoutALogoTheHeaderKeepsItsText()
    {
        const LogoPlaces places;
        const QJsonObject report = places.run();
        QCOMPARE(report.value(u"text"_s).toString(), u"Tarnwick"_s);
        QCOMPARE(report.value(u"centred"_s).toBool(), true);
        QCOMPARE(report.value(u"labelSize"_s).toString(), u"190x96"_s);
        QCOMPARE(report.value(u"size"_s).toString(), u"0x0"_s);
        QCOMPARE(report.value(u"icon"_s).toString(), u"none"_s);
    }

    void whateverHasTheLogosNameEndsTheSearch_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("folder") << u"folder"_s;
        QTest::newRow("file that is no image") << u"file"_s;
        QTest::newRow("empty file") << u"empty"_s;
        QTest::newRow("neither, a socket") << u"socket"_s;
    }

    void whateverHasTheLogosNameEndsTheSearch()
    {
        QFETCH(QString, kind);
        const LogoPlaces places;
        const QString first = places.candidate(1);
        QVERIFY(QDir().mkpath(QFileInfo(first).path()));
        QLocalServer socket;
        if (kind == u"folder"_s) {
            QVERIFY(QDir().mkdir(first));
        } else if (kind != u"socket"_s) {
            QFile file(first);
            const QByteArray content = kind == u"file"_s ? "\x89PNG\r\n\x1a\n and nothing more" : "";
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        } else {
            QVERIFY(socket.listen(first));
        }
        QVERIFY(LogoPlaces::paint(places.candidate(2), Qt::red));
        const QJsonObject report = places.run();
        QCOMPARE(report.value(u"text"_s).toString(), u"Tarnwick"_s);
        QCOMPARE(report.value(u"icon"_s).toString(), u"none"_s);
    }

    void symbolicLinksAreFollowed()
    {
        const LogoPlaces places;
        const QString image = places.path(u"elsewhere.png"_s);
        QVERIFY(LogoPlaces::paint(image, Qt::red));
        QVERIFY(LogoPlaces::paint(places.candidate(2), Qt::blue));
        QVERIFY(QDir().mkpath(QFileInfo(places.candidate(1)).path()));
        QVERIFY(QFile::link(image, places.candidate(1)));
        QCOMPARE(places.run().value(u"colour"_s).toString(), u"#ff0000"_s);
    }

    void linksThatLeadNowhereAreNoEntries()
    {
        const LogoPlaces places;
        QVERIFY(QDir().mkpath(QFileInfo(places.candidate(1)).path()));
        QVERIFY(QFile::link(places.path(u"missing"_s), places.candidate(1)));
        QVERIFY(QFile::link(places.candidate(2), places.candidate(2)));
        QVERIFY(LogoPlaces::paint(places.candidate(3), Qt::red));
        QCOMPARE(places.run().value(u"colour"_s).toString(), u"#ff0000"_s);
    }

    void theLogoIsFittedIntoTheLabel_data()
    {
        QTest::addColumn<QSize>("image");
        QTest::addColumn<QSize>("shown");
        QTest::newRow("square") << QSize(100, 100) << QSize(96, 96);
        QTest::newRow("wide") << QSize(400, 100) << QSize(190, 47);
        QTest::newRow("small, enlarged") << QSize(50, 25) << QSize(190, 95);
        QTest::newRow("high") << QSize(100, 400) << QSize(24, 96);
    }

    void theLogoIsFittedIntoTheLabel()
    {
        QFETCH(QSize, image);
        QFETCH(QSize, shown);
        const LogoPlaces places;
        QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::red, image));
        const QJsonObject report = places.run();
        QCOMPARE(report.value(u"size"_s).toString(), u"%1x%2"_s.arg(shown.width()).arg(shown.height()));
        QCOMPARE(report.value(u"labelSize"_s).toString(), u"190x96"_s);
        QCOMPARE(report.value(u"centred"_s).toBool(), true);
        // The icon is the file itself, not the fitted picture.
        QCOMPARE(report.value(u"icon"_s).toString(), u"%1x%2"_s.arg(image.width()).arg(image.height()));
    }

    void theLogoDoesNotFillItsLabel()
    {
        const LogoPlaces places;
        QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::red));
        const QJsonObject report = places.run();
        QCOMPARE(report.value(u"size"_s).toString(), u"96x96"_s);
        QVERIFY(report.value(u"colourBeside"_s).toString() != u"#ff0000"_s);
    }

    void theLogoIsScaledSmoothly()
    {
        QImage checkerboard(380, 192, QImage::Format_RGB32);
        for (int y = 0; y < checkerboard.height(); ++y) {
            for (int x = 0; x < checkerboard.width(); ++x) {
                checkerboard.setPixelColor(x, y, (x + y) % 2 == 0 ? Qt::black : Qt::white);
            }
        }
        const LogoPlaces places;
        QVERIFY(QDir().mkpath(QFileInfo(places.candidate(1)).path()) && checkerboard.save(places.candidate(1)));
        // Each pixel is the average of two black and two white ones.
        const int lightness = QColor(places.run().value(u"colour"_s).toString()).lightness();
        QVERIFY2(lightness > 100 && lightness < 155, qPrintable(QString::number(lightness)));
    }

    void theLogoIsScaledInTheScreensOwnPixels_data()
    {
        QTest::addColumn<QByteArray>("density");
        QTest::addColumn<QSize>("image");
        QTest::addColumn<QString>("size");
        QTest::newRow("square at 2") << QByteArray("2") << QSize(100, 100) << u"192x192"_s;
        // In device pixels, the label is 237.5 wide (at 1.25) or 249.6 high (at 2.6).
        QTest::newRow("wide at 1.25") << QByteArray("1.25") << QSize(400, 100) << u"237x59"_s;
        QTest::newRow("square at 2.6") << QByteArray("2.6") << QSize(100, 100) << u"249x249"_s;
    }

    void theLogoIsScaledInTheScreensOwnPixels()
    {
        QFETCH(QByteArray, density);
        QFETCH(QSize, image);
        QFETCH(QString, size);
        const LogoPlaces places;
        QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::red, image));
        qputenv("QT_SCALE_FACTOR", density);
        const auto plainScreen = qScopeGuard([] { qunsetenv("QT_SCALE_FACTOR"); });
        const QJsonObject report = places.run();
        QCOMPARE(report.value(u"size"_s).toString(), size);
        QVERIFY(qAbs(report.value(u"density"_s).toDouble() - density.toDouble()) < 0.001);
        QCOMPARE(report.value(u"labelSize"_s).toString(), u"190x96"_s);
    }

    void theFormatIsDetectedFromTheContent()
    {
        const LogoPlaces places;
        QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::red, {100, 100}, "BMP"));
        QCOMPARE(places.run().value(u"colour"_s).toString(), u"#ff0000"_s);
    }

    void thePathMayHoldAnyCharacter()
    {
        const LogoPlaces places(u"Büro 🔥 100% #1.app"_s);
        QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::red));
        const QJsonObject report = places.run();
        QCOMPARE(report.value(u"colour"_s).toString(), u"#ff0000"_s);
        QCOMPARE(report.value(u"icon"_s).toString(), u"100x100"_s);
    }

    void anotherWorkingDirectoryChangesOnlyTheLastTwoPlaces()
    {
        const LogoPlaces places;
        const QString elsewhere = places.path(u"elsewhere"_s);
        QVERIFY(QDir().mkpath(elsewhere));
        QVERIFY(LogoPlaces::paint(places.candidate(3), Qt::red));
        QVERIFY(LogoPlaces::paint(places.candidate(4), Qt::red));
        QCOMPARE(places.run(elsewhere).value(u"text"_s).toString(), u"Tarnwick"_s);
        QVERIFY(LogoPlaces::paint(elsewhere + u"/tarnwick/static/tarnwick-logo.png"_s, Qt::blue));
        QCOMPARE(places.run(elsewhere).value(u"colour"_s).toString(), u"#0000ff"_s);
        QVERIFY(LogoPlaces::paint(places.candidate(2), Qt::green));
        QCOMPARE(places.run(elsewhere).value(u"colour"_s).toString(), u"#00ff00"_s);
    }

    void withoutAnExecutablePathTheWorkingDirectoryStandsInForIt()
    {
#if !defined(Q_OS_LINUX)
        QSKIP("Only here does a deleted program have no path.");
#endif
        const QString bundle = u"start/Resources/tarnwick-logo.png"_s;
        const QString beside = u"start/here/tarnwick-logo.png"_s;
        {
            const LogoPlaces places;
            QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::white));
            QVERIFY(LogoPlaces::paint(places.candidate(2), Qt::white));
            const QJsonObject report = places.run({}, logoProbeWithoutFile);
            QCOMPARE(report.value(u"executable"_s).toString(), QString());
            QCOMPARE(report.value(u"text"_s).toString(), u"Tarnwick"_s);
        }
        {
            const LogoPlaces places;
            QVERIFY(LogoPlaces::paint(places.path(beside), Qt::green));
            QVERIFY(LogoPlaces::paint(places.candidate(3), Qt::white));
            const QJsonObject report = places.run({}, logoProbeWithoutFile);
            QCOMPARE(report.value(u"executable"_s).toString(), QString());
            QCOMPARE(report.value(u"colour"_s).toString(), u"#00ff00"_s);
        }
        const LogoPlaces places;
        QVERIFY(LogoPlaces::paint(places.path(bundle), Qt::red));
        QVERIFY(LogoPlaces::paint(places.path(beside), Qt::green));
        QCOMPARE(places.run({}, logoProbeWithoutFile).value(u"colour"_s).toString(), u"#ff0000"_s);
    }

    void withoutAWorkingDirectoryThePlacesAroundTheProgramStillCount()
    {
        const LogoPlaces places;
        const QString doomed = places.path(u"doomed"_s);
        QVERIFY(QDir().mkpath(doomed));
        QCOMPARE(places.run(doomed, logoProbeWithoutFolder).value(u"text"_s).toString(), u"Tarnwick"_s);
        QVERIFY(!QDir(doomed).exists());

        QVERIFY(QDir().mkpath(doomed));
        QVERIFY(LogoPlaces::paint(places.candidate(2), Qt::red));
        QCOMPARE(places.run(doomed, logoProbeWithoutFolder).value(u"colour"_s).toString(), u"#ff0000"_s);
    }
};

TARNWICK_CHILD("logo-report", reportLogo)
TARNWICK_TEST(LogoTest)
#include "logo_test.moc"
