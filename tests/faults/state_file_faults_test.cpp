// Disks, folders and files that refuse: the client works on and starts again. The client runs in a process of its own
// here, for each case takes other rights, limits or disks than the test has.
#include "app/tarnwick_client_window.h"
#include "support/message_catcher.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"
#include "support/window_view.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <memory>

#if defined(Q_OS_UNIX)
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif
#if defined(Q_OS_LINUX)
#include <sched.h>
#include <sys/mount.h>
#endif

class StateFileFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { home.reset(); }
    void ofAKeyGivenTwiceTheLastCounts();
    void aHugeFileIsRead();
    void aFileWithoutRightsCountsAsAbsent();
    void aReadOnlyFolderStopsNothing();
    void aFullDiskStopsNothing();
    void aLimitOnTheSizeOfFilesStopsNothing();

private:
    /// What two starts of the client, the one after the other, make of the state file there.
    static QString twoStarts(const QString& circumstances);

    std::unique_ptr<support::TemporaryHome> home;
};

namespace {

const QString stateFaultWorks = u"not linked, not linked, nothing printed"_s;
const QString stateFaultWorksLinked = u"linked, not linked, nothing printed"_s;
const QString stateFaultNoRights = u"the circumstances cannot be brought about"_s;

#if defined(Q_OS_UNIX)
constexpr uid_t stateFaultSomebody = 65534;

bool stateFaultSetMode(const QString& path, mode_t mode)
{
    return ::chmod(QFile::encodeName(path).constData(), mode) == 0;
}

/// The home and all that is in it belong to whom the client is going to be.
bool stateFaultGiveAway(const support::TemporaryHome& home)
{
    const QStringList paths = {home.path(), home.path() + u"/Library"_s,
                               home.path() + u"/Library/Application Support"_s, home.stateFolder(), home.stateFile()};
    return ::geteuid() != 0 || std::all_of(paths.begin(), paths.end(), [](const QString& path) {
               return ::chown(QFile::encodeName(path).constData(), stateFaultSomebody, stateFaultSomebody) == 0;
           });
}
#endif

/// A user's program may not read and write the files of others, as the test might.
bool stateFaultWithoutPrivileges()
{
#if defined(Q_OS_UNIX)
    return ::geteuid() != 0 || (::setgid(stateFaultSomebody) == 0 && ::setuid(stateFaultSomebody) == 0);
#else
    return true;
#endif
}

bool stateFaultWithoutGrowth()
{
#if defined(Q_OS_UNIX)
    const rlimit nothing{.rlim_cur = 0, .rlim_max = 0};
    return ::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &nothing) == 0;
#else
    return false;
#endif
}

/// A new file there has a name, and not one byte more.
bool stateFaultIsFull(const QString& folder)
{
    QFile probe(folder + u"/probe"_s);
    const bool isFull = probe.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && probe.write("x") < 0;
    return probe.remove() && isFull;
}

/// A disk of two pages, which only this process sees, full but for the state file's name.
bool stateFaultOnAFullDisk()
{
#if defined(Q_OS_LINUX)
    const QString folder = qEnvironmentVariable("HOME") + u"/Library/Application Support/Tarnwick"_s;
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0, "size=8k") != 0) {
        return false;
    }
    QFile filler(folder + u"/filler"_s);
    if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        return false;
    }
    while (filler.write(QByteArray(512, 'x')) > 0) {
    }
    if (!stateFaultIsFull(folder)) {
        qFatal("The disk has room left."); // a mistake here, and nothing to skip for
    }
    return true;
#else
    return false;
#endif
}

QString stateFaultStart()
{
    TarnwickClientWindow window;
    const QString status = support::WindowView(window).status();
    window.close();
    return status == u"Checking linked Tarnwick session..."_s    ? u"linked, "_s
           : status == u"Ready to link your Tarnwick account."_s ? u"not linked, "_s
                                                                 : status;
}

bool stateFaultBringAbout(const QString& circumstances)
{
    return circumstances == u"without privileges"_s ? stateFaultWithoutPrivileges()
           : circumstances == u"without growth"_s   ? stateFaultWithoutGrowth()
           : circumstances == u"on a full disk"_s   ? stateFaultOnAFullDisk()
                                                    : circumstances == u"as usual"_s;
}

/// The client's process: starts twice and tells on its standard output how it went.
int stateFaultClient(int argc, char** argv)
{
    QString report = stateFaultNoRights;
    if (stateFaultBringAbout(QString::fromUtf8(argv[1]))) {
        const QApplication application(argc, argv);
        const support::MessageCatcher messages;
        report = stateFaultStart();
        report += stateFaultStart();
        const QString printed = messages.messages().join(u'\n');
        report += printed.isEmpty() ? u"nothing printed"_s : printed;
    }
    QFile output;
    return output.open(stdout, QIODevice::WriteOnly) && output.write(report.toUtf8()) > 0 ? 0 : 1;
}

} // namespace

void StateFileFaultsTest::init()
{
    home = std::make_unique<support::TemporaryHome>();
    home->writeState(support::storedState(u"http://127.0.0.1:1"_s, u"token-1"_s));
}

QString StateFileFaultsTest::twoStarts(const QString& circumstances)
{
    QProcess client;
    client.start(QCoreApplication::applicationFilePath(), {circumstances});
    if (!client.waitForFinished(60000) || client.exitStatus() != QProcess::NormalExit || client.exitCode() != 0) {
        return u"the client failed: "_s + QString::fromUtf8(client.readAllStandardError());
    }
    return QString::fromUtf8(client.readAllStandardOutput());
}

void StateFileFaultsTest::ofAKeyGivenTwiceTheLastCounts()
{
    home->writeState(R"({"device_id":"first","origin":"http://127.0.0.1:1","device_id":"second"})");
    QCOMPARE(twoStarts(u"as usual"_s), stateFaultWorks);
    QCOMPARE(home->stateObject().value(u"device_id"_s).toString(), u"second"_s);
}

void StateFileFaultsTest::aHugeFileIsRead()
{
    home->writeState(R"({"device_id":"d","filler":")" + QByteArray(qsizetype{10} * 1024 * 1024, 'x') + "\"}");
    QCOMPARE(twoStarts(u"as usual"_s), stateFaultWorks);
    QCOMPARE(home->stateObject().value(u"device_id"_s).toString(), u"d"_s);
    QVERIFY(home->readState().size() < 1024);
}

void StateFileFaultsTest::aFileWithoutRightsCountsAsAbsent()
{
#if defined(Q_OS_UNIX)
    const QByteArray before = home->readState();
    QVERIFY(stateFaultGiveAway(*home));
    QVERIFY(stateFaultSetMode(home->stateFile(), 0));
    QCOMPARE(twoStarts(u"without privileges"_s), stateFaultWorks);
    QVERIFY(stateFaultSetMode(home->stateFile(), 0600));
    QCOMPARE(home->readState(), before);
#else
    QSKIP("This system has no such rights.");
#endif
}

void StateFileFaultsTest::aReadOnlyFolderStopsNothing()
{
#if defined(Q_OS_UNIX)
    QVERIFY(stateFaultGiveAway(*home));
    QVERIFY(QFile::remove(home->stateFile()));
    QVERIFY(stateFaultSetMode(home->stateFolder(), 0500));
    QCOMPARE(twoStarts(u"without privileges"_s), stateFaultWorks);
    QVERIFY(!QFile::exists(home->stateFile()));
#else
    QSKIP("This system has no such rights.");
#endif
}

void StateFileFaultsTest::aFullDiskStopsNothing()
{
    const QByteArray before = home->readState();
    const QString report = twoStarts(u"on a full disk"_s);
    if (report == stateFaultNoRights) {
        QSKIP("Mounting a small disk takes rights that this test does not have.");
    }
    QCOMPARE(report, stateFaultWorks);
    // The file beneath the disk was out of reach.
    QCOMPARE(home->readState(), before);
}

/// The file is rewritten in place: what cannot be written is gone.
void StateFileFaultsTest::aLimitOnTheSizeOfFilesStopsNothing()
{
#if defined(Q_OS_UNIX)
    QCOMPARE(twoStarts(u"without growth"_s), stateFaultWorksLinked);
    QCOMPARE(home->readState(), QByteArray());
#else
    QSKIP("This system has no such limit.");
#endif
}

int main(int argc, char** argv)
{
    if (argc == 2 && argv[1][0] >= 'a' && QByteArray(argv[1]).contains(' ')) {
        return stateFaultClient(argc, argv);
    }
    QApplication application(argc, argv);
    StateFileFaultsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "state_file_faults_test.moc"
