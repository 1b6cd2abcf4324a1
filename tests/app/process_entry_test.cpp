// The process entry itself, from the application's names to the exit code. Linked with the client's own
// main(): a start-up hook inside of it either runs the tests in that process or, in a child process, reports
// and obeys.
#include "app/tarnwick_client_window.h"

#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"

#include <QApplication>
#include <QProcess>
#include <QTest>
#include <QTextStream>
#include <QTimer>

#include <cstdlib>

using support::Call;

class ProcessEntryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWholeRunHappensInItsOrder();
    void theExitCodeIsTheEventLoopsResult();
    void argumentsGoToTheApplicationOnly();
    void closingTheOnlyWindowEndsTheRunAndSaves();
    void aKilledProcessWritesNothing_data();
    void aKilledProcessWritesNothing();
};

namespace {

constexpr const char* entryWishVariable = "TARNWICK_ENTRY_WISH";

void reportEntry(const QString& line)
{
    QTextStream(stdout) << line << Qt::endl;
}

QList<QWidget*> entryWindows()
{
    QList<QWidget*> windows;
    const auto widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (qobject_cast<QMainWindow*>(widget) != nullptr) {
            windows.append(widget);
        }
    }
    return windows;
}

/// In the child process, as soon as the event loop runs.
void obeyEntryWish(const QByteArray& wish)
{
    const QList<QWidget*> windows = entryWindows();
    QWidget* window = windows.constFirst();
    reportEntry(u"windows %1, %2"_s.arg(windows.size()).arg(window->isVisible() ? u"shown"_s : u"hidden"_s));
    reportEntry(u"arguments "_s + QCoreApplication::arguments().sliced(1).join(QLatin1Char(' ')));
    QObject::connect(window, &QObject::destroyed, window, [] {
        reportEntry(qApp != nullptr ? u"window destroyed before the application"_s : u"window outlived it"_s);
    });
    if (wish == "close") {
        window->close();
    } else if (wish.startsWith("exit ")) {
        QCoreApplication::exit(wish.mid(5).toInt());
    }
}

/// Called by the application object while main() constructs it.
void beginEntry()
{
    const QByteArray wish = qgetenv(entryWishVariable);
    if (!wish.isEmpty()) {
        qputenv("HOME", qgetenv("TARNWICK_ENTRY_HOME"));
        reportEntry(u"names "_s + QCoreApplication::organizationName() + u' ' + QCoreApplication::applicationName());
        qAddPostRoutine([] { reportEntry(u"application ends"_s); });
        QTimer::singleShot(0, qApp, [wish] { obeyEntryWish(wish); });
        return;
    }
    // The window that main() makes for this process is not to touch the home of whoever runs the tests.
    static const support::TemporaryHome homeOfThisProcess;
    const auto runTests = [] {
        ProcessEntryTest test;
        const int failures = QTest::qExec(&test, QCoreApplication::arguments());
        // What main() makes of an exit code is under test, so a failure does not rely on it.
        if (failures != 0) {
            std::exit(failures);
        }
        QCoreApplication::exit(0);
    };
    QTimer::singleShot(0, qApp, runTests);
}
Q_COREAPP_STARTUP_FUNCTION(beginEntry)

/// The same program again, in a home that the test can look into.
class EntryProcess : public QProcess
{
public:
    EntryProcess(const support::TemporaryHome& home, const QByteArray& wish, const QStringList& arguments = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(entryWishVariable), QString::fromLatin1(wish));
        environment.insert(u"TARNWICK_ENTRY_HOME"_s, home.path());
        setProcessEnvironment(environment);
        start(QCoreApplication::applicationFilePath(), arguments);
    }

    QStringList lines() { return QString::fromUtf8(readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts); }
};

} // namespace

void ProcessEntryTest::theWholeRunHappensInItsOrder()
{
    const support::TemporaryHome home;
    EntryProcess process(home, "close");
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.lines(), (QStringList{u"names Tarnwick Tarnwick"_s, u"windows 1, shown"_s, u"arguments "_s,
                                           u"window destroyed before the application"_s, u"application ends"_s}));
}

void ProcessEntryTest::theExitCodeIsTheEventLoopsResult()
{
    const support::TemporaryHome home;
    EntryProcess process(home, "exit 7");
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 7);
    // An end without a close saves nothing.
    QCOMPARE(home.readState(), QByteArray());
}

void ProcessEntryTest::argumentsGoToTheApplicationOnly()
{
    const support::TemporaryHome home;
    EntryProcess process(home, "close", {u"--version"_s, u"--help"_s, u"some file"_s});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(process.lines().contains(u"arguments --version --help some file"_s));
}

void ProcessEntryTest::closingTheOnlyWindowEndsTheRunAndSaves()
{
    const support::TemporaryHome home;
    EntryProcess process(home, "close");
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(home.stateObject().value(u"device_id"_s).toString().startsWith(u"twqt-"_s));
}

void ProcessEntryTest::aKilledProcessWritesNothing_data()
{
    QTest::addColumn<bool>("politely");
    QTest::newRow("asked to end") << true;
    QTest::newRow("killed") << false;
}

void ProcessEntryTest::aKilledProcessWritesNothing()
{
    QFETCH(bool, politely);
    support::ScriptedServer server;
    server.hold(callPath(Call::Session));
    const support::TemporaryHome home;
    const QByteArray before = R"({"access_token":"t","origin":")" + server.origin().toUtf8() + R"("})";
    home.writeState(before);
    EntryProcess process(home, "stay");
    // Its session check has come in: the child is fully up.
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

#include "process_entry_test.moc"
