// Where the state file lies.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/window_view.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>

namespace {

constexpr const char* locationChildVariable = "TARNWICK_LOCATION_CHILD";

QString locationUnder(const QString& folder)
{
    return folder + u"/Library/Application Support/Tarnwick"_s;
}

/// Gives an environment variable another value, or none, for a while.
class BorrowedVariable
{
public:
    BorrowedVariable(const char* variable, const std::optional<QByteArray>& value) : name(variable)
    {
        if (qEnvironmentVariableIsSet(name)) {
            former = qgetenv(name);
        }
        set(value);
    }
    ~BorrowedVariable() { set(former); }
    Q_DISABLE_COPY_MOVE(BorrowedVariable)

private:
    void set(const std::optional<QByteArray>& value)
    {
        if (value) {
            qputenv(name, *value);
        } else {
            qunsetenv(name);
        }
    }

    const char* name;
    std::optional<QByteArray> former;
};

/// A client's whole life: started, and closed, which saves.
void startAndClose()
{
    TarnwickClientWindow window;
    window.close();
}

} // namespace

class StateLocationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theFileLiesUnderHome_data();
    void theFileLiesUnderHome();
    void anEmptyHomeMeansTheWorkingDirectory();
    void aRelativeHomeStartsAtTheWorkingDirectory();
    void withoutHomeTheFileLiesInTheTemporaryFolder();
    void withoutHomeAndTemporaryFolderTheProgramEnds();
    void startingMakesTheFolderButNoFile();
    void aHomeWhichIsNoTextStopsNothing();
    void homeIsReadAtEverySave();

private:
    std::unique_ptr<QTemporaryDir> folder;
    QString formerWorkingFolder;
    std::unique_ptr<support::MessageCatcher> messages;
};

void StateLocationTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
    // Whatever a relative path leads to stays inside of the test's own folder.
    formerWorkingFolder = QDir::currentPath();
    QVERIFY(QDir(folder->path()).mkdir(u"work"_s));
    QVERIFY(QDir::setCurrent(folder->filePath(u"work"_s)));
}

void StateLocationTest::cleanup()
{
    QVERIFY(QDir::setCurrent(formerWorkingFolder));
    folder.reset();
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void StateLocationTest::theFileLiesUnderHome_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("ending");
    QTest::newRow("plain") << u"home"_s << QString();
    QTest::newRow("trailing slash") << u"home"_s << u"/"_s;
    QTest::newRow("not there yet") << u"not/there/yet"_s << QString();
    QTest::newRow("blanks and umlauts") << u"Über mir 🔥"_s << QString();
}

void StateLocationTest::theFileLiesUnderHome()
{
    QFETCH(QString, name);
    QFETCH(QString, ending);
    const QString home = folder->filePath(name);
    const BorrowedVariable variable("HOME", (home + ending).toUtf8());
    startAndClose();
    QVERIFY(QFile::exists(locationUnder(home) + u"/pc-client-state.json"_s));
    QCOMPARE(QDir(locationUnder(home)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{u"pc-client-state.json"_s});
    QVERIFY(QDir(folder->filePath(u"work"_s)).isEmpty());
}

void StateLocationTest::anEmptyHomeMeansTheWorkingDirectory()
{
    const BorrowedVariable home("HOME", QByteArray(""));
    const BorrowedVariable temporary("TMPDIR", folder->filePath(u"unused"_s).toUtf8());
    {
        const TarnwickClientWindow window;
        QVERIFY(QDir(locationUnder(folder->filePath(u"work"_s))).exists());
    }
    startAndClose();
    QVERIFY(QFile::exists(locationUnder(folder->filePath(u"work"_s)) + u"/pc-client-state.json"_s));
}

void StateLocationTest::aRelativeHomeStartsAtTheWorkingDirectory()
{
    const BorrowedVariable home("HOME", QByteArray("some/place"));
    startAndClose();
    QVERIFY(QFile::exists(locationUnder(folder->filePath(u"work/some/place"_s)) + u"/pc-client-state.json"_s));
}

void StateLocationTest::withoutHomeTheFileLiesInTheTemporaryFolder()
{
    const QString temporaryFolder = folder->filePath(u"temporary"_s);
    QVERIFY(QDir().mkpath(temporaryFolder));
    const BorrowedVariable home("HOME", std::nullopt);
    const BorrowedVariable temporary("TMPDIR", temporaryFolder.toUtf8());
    {
        const TarnwickClientWindow window;
        QVERIFY(QDir(locationUnder(temporaryFolder)).exists());
    }
    startAndClose();
    QVERIFY(QFile::exists(locationUnder(temporaryFolder) + u"/pc-client-state.json"_s));
    QVERIFY(QDir(folder->filePath(u"work"_s)).isEmpty());
}

void StateLocationTest::withoutHomeAndTemporaryFolderTheProgramEnds()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"HOME"_s);
    environment.insert(u"TMPDIR"_s, folder->filePath(u"missing"_s));
    environment.insert(QString::fromLatin1(locationChildVariable), u"1"_s);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(), QStringList());
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QVERIFY(!process.readAllStandardOutput().contains("started"));

    // With the folder there, the same child starts.
    QVERIFY(QDir().mkpath(folder->filePath(u"missing"_s)));
    process.start(QCoreApplication::applicationFilePath(), QStringList());
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QVERIFY(process.readAllStandardOutput().contains("started"));
}

void StateLocationTest::startingMakesTheFolderButNoFile()
{
    const BorrowedVariable home("HOME", folder->filePath(u"home"_s).toUtf8());
    const TarnwickClientWindow window;
    const QDir made(locationUnder(folder->filePath(u"home"_s)));
    QVERIFY(made.exists());
    QVERIFY(made.isEmpty());
}

void StateLocationTest::aHomeWhichIsNoTextStopsNothing()
{
#if defined(Q_OS_LINUX)
    const std::filesystem::path root = folder->path().toStdString();
    const std::filesystem::path path = root / "\xff\xfe";
    const BorrowedVariable home("HOME", QByteArray::fromStdString(path.string()));
    for (int start = 0; start < 2; ++start) {
        TarnwickClientWindow window;
        QCOMPARE(support::WindowView(window).status(), u"Ready to link your Tarnwick account."_s);
        QVERIFY(window.close());
    }
    // Qt cannot name the folder, so nothing has been saved in it, and nothing in another place either.
    const std::set<std::filesystem::path> expected = {root / "work", path, path / "Library",
                                                      path / "Library/Application Support",
                                                      path / "Library/Application Support/Tarnwick"};
    const std::filesystem::recursive_directory_iterator found(root);
    QVERIFY(std::set<std::filesystem::path>(begin(found), end(found)) == expected);
    // For the same reason the temporary folder could not be removed with it inside.
    QVERIFY(std::filesystem::remove_all(path) > 0);
#else
    QSKIP("Other systems do not make such a folder.");
#endif
}

void StateLocationTest::homeIsReadAtEverySave()
{
    const BorrowedVariable first("HOME", folder->filePath(u"first"_s).toUtf8());
    TarnwickClientWindow window;
    const BorrowedVariable second("HOME", folder->filePath(u"second"_s).toUtf8());
    window.close();
    QVERIFY(QDir(locationUnder(folder->filePath(u"first"_s))).isEmpty());
    QVERIFY(QFile::exists(locationUnder(folder->filePath(u"second"_s)) + u"/pc-client-state.json"_s));
}

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    if (qEnvironmentVariableIsSet(locationChildVariable)) {
        const TarnwickClientWindow window;
        std::puts("started");
        return 0;
    }
    StateLocationTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "state_location_test.moc"
