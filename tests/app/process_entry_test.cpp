// The process entry point, from the application's names to the exit code: entry_probe.cpp runs the client's own main().
#include "support/client_test.h"

#include <QProcess>

using support::Call;

namespace {

class EntryProcess : public QProcess
{
public:
    /// Starts with the test's HOME.
    explicit EntryProcess(const QByteArray& wish, const QStringList& arguments = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TARNWICK_ENTRY_WISH"_s, QString::fromLatin1(wish));
        setProcessEnvironment(environment);
        start(QCoreApplication::applicationDirPath() + u"/entry_probe"_s, arguments);
    }

    QStringList lines() { return QString::fromUtf8(readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts); }
};

} // namespace

class ProcessEntryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWholeRunHappensInItsOrder()
    {
        const support::TemporaryHome home;
        EntryProcess process("close");
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.lines(), (QStringList{u"names Tarnwick Tarnwick"_s, u"windows 1, shown"_s, u"arguments "_s,
                                               u"window destroyed before the application"_s, u"application ends"_s}));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(home.stateObject().value(u"device_id"_s).toString().startsWith(u"twqt-"_s));
    }

    void theExitCodeIsTheEventLoopsResult()
    {
        const support::TemporaryHome home;
        EntryProcess process("exit 7");
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 7);
        // Nothing is saved when the process ends without a close.
        QCOMPARE(home.readState(), QByteArray());
    }

    void argumentsGoToTheApplicationOnly()
    {
        const support::TemporaryHome home;
        EntryProcess process("close", {u"--version"_s, u"--help"_s, u"some file"_s});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(process.lines().contains(u"arguments --version --help some file"_s));
    }

    void aKilledProcessWritesNothing_data()
    {
        QTest::addColumn<bool>("politely");
        QTest::newRow("asked to end") << true;
        QTest::newRow("killed") << false;
    }

    void aKilledProcessWritesNothing()
    {
        QFETCH(bool, politely);
        support::ScriptedServer server;
        server.hold(callPath(Call::Session));
        const support::TemporaryHome home;
        const QByteArray before = support::storedState(server.origin(), u"token-1"_s);
        home.writeState(before);
        EntryProcess process("stay");
        // Its session check has arrived, so the child is fully started.
        QTRY_COMPARE_WITH_TIMEOUT(server.heldCount(callPath(Call::Session)), 1, 30000);
        if (politely) {
            process.terminate();
        } else {
            process.kill();
        }
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        QCOMPARE(home.readState(), before);
    }
};

TARNWICK_TEST(ProcessEntryTest)
#include "process_entry_test.moc"
