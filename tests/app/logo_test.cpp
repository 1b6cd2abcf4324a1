// The program looks for its logo around its own executable, so this one copies itself into folders of its own
// making and runs the copy, which constructs the window and reports what it sees.
#include "app/tarnwick_client_window.h"

#include "app/logo_places.h"
#include "support/window_view.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace {

/// The copy deletes its own file before anything else.
constexpr const char* logoProbeWithoutFile = "without file";
/// The copy deletes its working directory before anything else.
constexpr const char* logoProbeWithoutFolder = "without folder";

int reportLogo(int argc, char** argv)
{
    const QByteArray wish = qgetenv(LogoPlaces::wishVariable);
    std::error_code ignored;
    if (wish == logoProbeWithoutFile) {
        std::filesystem::remove(std::filesystem::read_symlink("/proc/self/exe", ignored), ignored);
    } else if (wish == logoProbeWithoutFolder) {
        std::filesystem::remove(std::filesystem::current_path(ignored), ignored);
    }
    const QApplication application(argc, argv);
    const TarnwickClientWindow window;
    const QLabel* label = support::WindowView(window).label(u"LogoPanel"_s);
    const QImage logo = label->pixmap().toImage();
    const QSize icon = window.windowIcon().pixmap(QSize(1000, 1000)).size();
    const QJsonObject report{
        {u"executable"_s, QCoreApplication::applicationFilePath()},
        {u"text"_s, label->text()},
        {u"centred"_s, label->alignment() == Qt::AlignCenter},
        {u"labelSize"_s, u"%1x%2"_s.arg(label->width()).arg(label->height())},
        {u"size"_s, u"%1x%2"_s.arg(logo.width()).arg(logo.height())},
        {u"colour"_s, logo.isNull() ? QString() : logo.pixelColor(logo.rect().center()).name()},
        {u"icon"_s, window.windowIcon().isNull() ? u"none"_s : u"%1x%2"_s.arg(icon.width()).arg(icon.height())},
    };
    std::puts(QJsonDocument(report).toJson(QJsonDocument::Compact).constData());
    return 0;
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
    void theFirstPlaceThatHasAnEntryIsUsed_data();
    void theFirstPlaceThatHasAnEntryIsUsed();
    void withoutALogoTheHeaderKeepsItsText();
    void aFolderWithTheLogosNameCountsAsTheLogo_data();
    void aFolderWithTheLogosNameCountsAsTheLogo();
    void aFileThatIsNoImageEndsTheSearch();
    void symbolicLinksAreFollowed();
    void linksThatLeadNowhereAreNoEntries();
    void theLogoIsFittedIntoTheLabel_data();
    void theLogoIsFittedIntoTheLabel();
    void theFormatIsDetectedFromTheContent();
    void thePathMayHoldAnyCharacter();
    void anotherWorkingDirectoryChangesOnlyTheLastTwoPlaces();
    void withoutAnExecutablePathTheWorkingDirectoryStandsInForIt();
    void withoutAWorkingDirectoryThePlacesAroundTheProgramStillCount();
};

void LogoTest::theFirstPlaceThatHasAnEntryIsUsed_data()
{
    QTest::addColumn<QList<int>>("present");
    QTest::addColumn<int>("used");
    QTest::newRow("in the bundle") << QList{1} << 1;
    QTest::newRow("beside the program") << QList{2} << 2;
    QTest::newRow("in the project tree") << QList{3} << 3;
    QTest::newRow("in the build tree") << QList{4} << 4;
    QTest::newRow("everywhere") << QList{1, 2, 3, 4} << 1;
    QTest::newRow("everywhere but in the bundle") << QList{2, 3, 4} << 2;
    QTest::newRow("in both trees") << QList{3, 4} << 3;
    QTest::newRow("in the bundle and the build tree") << QList{1, 4} << 1;
}

void LogoTest::theFirstPlaceThatHasAnEntryIsUsed()
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
}

void LogoTest::withoutALogoTheHeaderKeepsItsText()
{
    const LogoPlaces places;
    const QJsonObject report = places.run();
    QCOMPARE(report.value(u"text"_s).toString(), u"Tarnwick"_s);
    QCOMPARE(report.value(u"centred"_s).toBool(), true);
    QCOMPARE(report.value(u"labelSize"_s).toString(), u"190x96"_s);
    QCOMPARE(report.value(u"size"_s).toString(), u"0x0"_s);
    QCOMPARE(report.value(u"icon"_s).toString(), u"none"_s);
}

void LogoTest::aFolderWithTheLogosNameCountsAsTheLogo_data()
{
    QTest::addColumn<int>("place");
    QTest::newRow("in the bundle") << 1;
    QTest::newRow("beside the program") << 2;
    QTest::newRow("in the project tree") << 3;
}

void LogoTest::aFolderWithTheLogosNameCountsAsTheLogo()
{
    QFETCH(int, place);
    const LogoPlaces places;
    QVERIFY(QDir().mkpath(places.candidate(place)));
    QVERIFY(LogoPlaces::paint(places.candidate(place + 1), Qt::red));
    const QJsonObject report = places.run();
    QCOMPARE(report.value(u"text"_s).toString(), u"Tarnwick"_s);
    QCOMPARE(report.value(u"icon"_s).toString(), u"none"_s);
}

void LogoTest::aFileThatIsNoImageEndsTheSearch()
{
    const LogoPlaces places;
    QVERIFY(QDir().mkpath(QFileInfo(places.candidate(1)).path()));
    QFile file(places.candidate(1));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("\x89PNG\r\n\x1a\n, but nothing comes of it");
    file.close();
    QVERIFY(LogoPlaces::paint(places.candidate(2), Qt::red));
    const QJsonObject report = places.run();
    QCOMPARE(report.value(u"text"_s).toString(), u"Tarnwick"_s);
    QCOMPARE(report.value(u"icon"_s).toString(), u"none"_s);
}

void LogoTest::symbolicLinksAreFollowed()
{
    const LogoPlaces places;
    const QString image = places.path(u"elsewhere.png"_s);
    QVERIFY(LogoPlaces::paint(image, Qt::red));
    QVERIFY(LogoPlaces::paint(places.candidate(2), Qt::blue));
    QVERIFY(QDir().mkpath(QFileInfo(places.candidate(1)).path()));
    QVERIFY(QFile::link(image, places.candidate(1)));
    QCOMPARE(places.run().value(u"colour"_s).toString(), u"#ff0000"_s);
}

void LogoTest::linksThatLeadNowhereAreNoEntries()
{
    const LogoPlaces places;
    QVERIFY(QDir().mkpath(QFileInfo(places.candidate(1)).path()));
    QVERIFY(QFile::link(places.path(u"missing"_s), places.candidate(1)));
    QVERIFY(QFile::link(places.candidate(2), places.candidate(2)));
    QVERIFY(LogoPlaces::paint(places.candidate(3), Qt::red));
    QCOMPARE(places.run().value(u"colour"_s).toString(), u"#ff0000"_s);
}

void LogoTest::theLogoIsFittedIntoTheLabel_data()
{
    QTest::addColumn<QSize>("image");
    QTest::addColumn<QSize>("shown");
    QTest::newRow("square") << QSize(100, 100) << QSize(96, 96);
    QTest::newRow("wide") << QSize(400, 100) << QSize(190, 47);
    QTest::newRow("small, enlarged") << QSize(50, 25) << QSize(190, 95);
    QTest::newRow("high") << QSize(100, 400) << QSize(24, 96);
    QTest::newRow("exact") << QSize(190, 96) << QSize(190, 96);
}

void LogoTest::theLogoIsFittedIntoTheLabel()
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

void LogoTest::theFormatIsDetectedFromTheContent()
{
    const LogoPlaces places;
    QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::red, {100, 100}, "BMP"));
    QCOMPARE(places.run().value(u"colour"_s).toString(), u"#ff0000"_s);
}

void LogoTest::thePathMayHoldAnyCharacter()
{
    const LogoPlaces places(u"Büro 🔥 100% #1.app"_s);
    QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::red));
    const QJsonObject report = places.run();
    QCOMPARE(report.value(u"colour"_s).toString(), u"#ff0000"_s);
    QCOMPARE(report.value(u"icon"_s).toString(), u"100x100"_s);
}

void LogoTest::anotherWorkingDirectoryChangesOnlyTheLastTwoPlaces()
{
    const LogoPlaces places;
    const QString elsewhere = places.path(u"elsewhere"_s);
    QVERIFY(QDir().mkpath(elsewhere));
    QVERIFY(LogoPlaces::paint(places.candidate(3), Qt::red));
    QVERIFY(LogoPlaces::paint(places.candidate(4), Qt::red));
    QCOMPARE(places.run(elsewhere).value(u"text"_s).toString(), u"Tarnwick"_s);

    QVERIFY(LogoPlaces::paint(elsewhere + u"/client/build/Tarnwick.app/Contents/Resources/tarnwick-logo.png"_s,
                              Qt::yellow));
    QCOMPARE(places.run(elsewhere).value(u"colour"_s).toString(), u"#ffff00"_s);
    QVERIFY(LogoPlaces::paint(elsewhere + u"/tarnwick/static/tarnwick-logo.png"_s, Qt::blue));
    QCOMPARE(places.run(elsewhere).value(u"colour"_s).toString(), u"#0000ff"_s);

    QVERIFY(LogoPlaces::paint(places.candidate(2), Qt::green));
    QCOMPARE(places.run(elsewhere).value(u"colour"_s).toString(), u"#00ff00"_s);
    QVERIFY(LogoPlaces::paint(places.candidate(1), Qt::white));
    QCOMPARE(places.run(elsewhere).value(u"colour"_s).toString(), u"#ffffff"_s);
}

void LogoTest::withoutAnExecutablePathTheWorkingDirectoryStandsInForIt()
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

void LogoTest::withoutAWorkingDirectoryThePlacesAroundTheProgramStillCount()
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

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsSet(LogoPlaces::wishVariable)) {
        return reportLogo(argc, argv);
    }
    const QApplication application(argc, argv);
    LogoTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "logo_test.moc"
