// Where the state file is.
#include "support/client_test.h"

#include <QApplication>
#include <QDir>
#include <QProcess>

#include <cstdio>
#include <filesystem>
#include <set>

namespace {

int locationStart(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const auto window = support::newClientWindow();
    std::puts("started");
    return 0;
}

QString locationUnder(const QString& folder)
{
    return folder + u"/Library/Application Support/Tarnwick"_s;
}

QStringList locationEntries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class StateLocationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<support::TemporaryHome>(); // restores HOME at the end of the test
        m_formerFolder = QDir::currentPath();
        m_formerTemporaryFolder = QDir::tempPath();
        // Relative paths stay inside the test's own folder.
        QVERIFY(QDir(m_home->path()).mkdir(u"work"_s));
        QVERIFY(QDir::setCurrent(path(u"work"_s)));
    }

    void cleanup()
    {
        qputenv("TMPDIR", m_formerTemporaryFolder.toUtf8());
        QVERIFY(QDir::setCurrent(m_formerFolder));
        m_home.reset();
    }

    void theFileLiesUnderHome_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("ending");
        QTest::newRow("plain") << u"home"_s << QString();
        QTest::newRow("trailing slash") << u"home"_s << u"/"_s;
        QTest::newRow("not there yet") << u"not/there/yet"_s << QString();
        QTest::newRow("blanks and umlauts") << u"Über mir 🔥"_s << QString();
    }

    void theFileLiesUnderHome()
    {
        QFETCH(QString, name);
        QFETCH(QString, ending);
        qputenv("HOME", (path(name) + ending).toUtf8());
        const auto window = support::newClientWindow();
        // A start creates the folder, but no file.
        QVERIFY(QDir(locationUnder(path(name))).exists());
        QCOMPARE(locationEntries(locationUnder(path(name))), QStringList());
        window->close();
        QCOMPARE(locationEntries(locationUnder(path(name))), QStringList{u"pc-client-state.json"_s});
        QCOMPARE(locationEntries(path(u"work"_s)), QStringList());
    }

    void aHomeThatIsNoFullPathStartsAtTheWorkingDirectory_data()
    {
        QTest::addColumn<QByteArray>("home");
        QTest::addColumn<QString>("place");
        QTest::newRow("empty") << QByteArray("") << u"work"_s;
        QTest::newRow("relative") << QByteArray("some/place") << u"work/some/place"_s;
    }

    void aHomeThatIsNoFullPathStartsAtTheWorkingDirectory()
    {
        QFETCH(QByteArray, home);
        QFETCH(QString, place);
        qputenv("HOME", home);
        qputenv("TMPDIR", path(u"unused"_s).toUtf8());
        support::newClientWindow()->close();
        QCOMPARE(locationEntries(locationUnder(path(place))), QStringList{u"pc-client-state.json"_s});
    }

    void withoutHomeTheFileLiesInTheTemporaryFolder()
    {
        QVERIFY(QDir().mkpath(path(u"temporary"_s)));
        qunsetenv("HOME");
        qputenv("TMPDIR", path(u"temporary"_s).toUtf8());
        support::newClientWindow()->close();
        QCOMPARE(locationEntries(locationUnder(path(u"temporary"_s))), QStringList{u"pc-client-state.json"_s});
        QCOMPARE(locationEntries(path(u"work"_s)), QStringList());
    }

    void withoutHomeAndTemporaryFolderTheProgramEnds()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"HOME"_s);
        environment.insert(u"TMPDIR"_s, path(u"missing"_s));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {u"start-only"_s});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        QCOMPARE(process.readAllStandardOutput(), QByteArray());

        // With the folder, the same child starts.
        QVERIFY(QDir().mkpath(path(u"missing"_s)));
        process.start(QCoreApplication::applicationFilePath(), {u"start-only"_s});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.readAllStandardOutput(), QByteArray("started\n"));
    }

    void aHomeWhichIsNoTextStopsNothing()
    {
#if defined(Q_OS_LINUX)
        const std::filesystem::path root = path(u"work"_s).toStdString();
        const std::filesystem::path home = root / "\xff\xfe";
        qputenv("HOME", QByteArray::fromStdString(home.string()));
        for (int start = 0; start < 2; ++start) {
            const auto window = support::newClientWindow();
            QCOMPARE(support::WindowView(*window).status(), u"Ready to link your Tarnwick account."_s);
            QVERIFY(window->close());
        }
        // Qt cannot represent the folder's name, so nothing was saved, neither there nor anywhere else.
        const std::set<std::filesystem::path> expected = {home, home / "Library", home / "Library/Application Support",
                                                          home / "Library/Application Support/Tarnwick"};
        const std::filesystem::recursive_directory_iterator found(root);
        const bool isAsExpected = std::set<std::filesystem::path>(begin(found), end(found)) == expected;
        // For the same reason, the temporary folder could not be removed while it contains this one.
        QVERIFY(std::filesystem::remove_all(home) > 0);
        QVERIFY(isAsExpected);
#else
        QSKIP("Other systems do not create such a folder.");
#endif
    }

    void homeIsReadAtEverySave()
    {
        qputenv("HOME", path(u"first"_s).toUtf8());
        const auto window = support::newClientWindow();
        qputenv("HOME", path(u"second"_s).toUtf8());
        window->close();
        QCOMPARE(locationEntries(locationUnder(path(u"first"_s))), QStringList());
        QCOMPARE(locationEntries(locationUnder(path(u"second"_s))), QStringList{u"pc-client-state.json"_s});
    }

private:
    QString path(const QString& name) const
    {
        return m_home->path() + u'/' + name;
    }

    std::unique_ptr<support::TemporaryHome> m_home;
    QString m_formerFolder;
    QString m_formerTemporaryFolder;
};

TARNWICK_CHILD("start-only", locationStart)
TARNWICK_TEST(StateLocationTest)
#include "state_location_test.moc"
