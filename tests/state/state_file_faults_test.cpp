// Disks, folders and files that cannot be used: the client keeps working and starts again. The client runs in its own
// process here, because each case needs other rights, limits or disks than the test.
#include "support/client_test.h"

#include <QApplication>
#include <QFile>
#include <QProcess>

#include <cstdio>

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

namespace {

const QString stateFaultNoRights = u"the circumstances cannot be brought about"_s;

#if defined(Q_OS_UNIX)
constexpr uid_t stateFaultSomebody = 65534;

bool stateFaultSetMode(const QString& path, mode_t mode)
{
    return ::chmod(QFile::encodeName(path).constData(), mode) == 0;
}

/// Gives the home and everything in it to the user that the client will run as.
bool stateFaultGiveAway(const support::TemporaryHome& home)
{
    const QStringList paths = {home.path(), home.path() + u"/Library"_s,
                               home.path() + u"/Library/Application Support"_s, home.stateFolder(), home.stateFile()};
    return ::geteuid() != 0 || std::all_of(paths.begin(), paths.end(), [](const QString& path) {
               return ::chown(QFile::encodeName(path).constData(), stateFaultSomebody, stateFaultSomebody) == 0;
           });
}

/// Unlike the test, which may be root, a user's program cannot read and write other users' files.
bool stateFaultWithoutPrivileges()
{
    return ::geteuid() != 0 || (::setgid(stateFaultSomebody) == 0 && ::setuid(stateFaultSomebody) == 0);
}

bool stateFaultWithoutGrowth()
{
    const rlimit nothing{.rlim_cur = 0, .rlim_max = 0};
    return ::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &nothing) == 0;
}
#endif

/// A disk of two pages, visible to this process only, with room for a file's name but not for its contents.
bool stateFaultOnAFullDisk()
{
#if defined(Q_OS_LINUX)
    const QString folder = qEnvironmentVariable("HOME") + u"/Library/Application Support/Tarnwick"_s;
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0, "size=8k") != 0) {
        return false;
    }
    QFile filler(folder + u"/filler"_s);
    QFile probe(folder + u"/probe"_s);
    const auto mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    while (filler.isOpen() || filler.open(mode)) {
        if (filler.write(QByteArray(512, 'x')) <= 0) {
            break;
        }
    }
    if (!probe.open(mode) || probe.write("x") > 0 || !probe.remove()) {
        qFatal("The disk is not full."); // a mistake in this test, no reason to skip it
    }
    return true;
#else
    return false;
#endif
}

bool stateFaultBringAbout(const QByteArray& circumstances)
{
#if defined(Q_OS_UNIX)
    return circumstances == "full disk"   ? stateFaultOnAFullDisk()
           : circumstances == "no growth" ? stateFaultWithoutGrowth()
                                          : stateFaultWithoutPrivileges();
#else
    return false;
#endif
}

/// The client's process: starts twice and prints on standard output what each start showed and printed.
int stateFaultClient(int argc, char** argv)
{
    QString report = stateFaultNoRights;
    if (stateFaultBringAbout(argv[1])) {
        const QApplication application(argc, argv);
        const support::MessageCatcher messages;
        QStringList lines;
        for (int start = 0; start < 2; ++start) {
            const auto window = support::newClientWindow();
            lines.append(support::WindowView(*window).status());
            window->close();
        }
        report = (lines + messages.messages()).join(u'\n');
    }
    return std::puts(qPrintable(report)) >= 0 ? 0 : 1;
}

} // namespace

class StateFileFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
#if !defined(Q_OS_UNIX)
        QSKIP("This system has no such rights and limits.");
#endif
    }

    void init()
    {
        m_home = std::make_unique<support::TemporaryHome>();
        m_home->writeState(support::storedState(u"http://127.0.0.1:1"_s, u"token-1"_s));
        m_before = m_home->readState();
    }

    void cleanup()
    {
        m_home.reset();
    }

#if defined(Q_OS_UNIX)
    void aFileWithoutRightsCountsAsAbsent()
    {
        QVERIFY(stateFaultGiveAway(*m_home));
        QVERIFY(stateFaultSetMode(m_home->stateFile(), 0));
        QCOMPARE(twoStarts(u"no privileges"_s), unlinked + unlinked);
        QVERIFY(stateFaultSetMode(m_home->stateFile(), 0600));
        QCOMPARE(m_home->readState(), m_before);
    }

    void aReadOnlyFolderStopsNothing()
    {
        QVERIFY(stateFaultGiveAway(*m_home));
        QVERIFY(QFile::remove(m_home->stateFile()));
        QVERIFY(stateFaultSetMode(m_home->stateFolder(), 0500));
        QCOMPARE(twoStarts(u"no privileges"_s), unlinked + unlinked);
        QVERIFY(!QFile::exists(m_home->stateFile()));
    }

    void aFullDiskStopsNothing()
    {
        const QString report = twoStarts(u"full disk"_s);
        if (report == stateFaultNoRights + u'\n') {
            QSKIP("Mounting a small disk needs rights that this test does not have.");
        }
        QCOMPARE(report, unlinked + unlinked);
        // The mounted disk hid the original file.
        QCOMPARE(m_home->readState(), m_before);
    }

    /// The file is rewritten in place, so its old contents are lost when the new ones cannot be written.
    void aLimitOnTheSizeOfFilesStopsNothing()
    {
        QCOMPARE(twoStarts(u"no growth"_s), linked + unlinked);
        QCOMPARE(m_home->readState(), QByteArray());
    }
#endif

private:
    /// What two starts of the client, one after the other, show and print under these circumstances.
    static QString twoStarts(const QString& circumstances)
    {
        QProcess client;
        client.start(QCoreApplication::applicationFilePath(), {u"two-starts"_s, circumstances});
        if (!client.waitForFinished(60000) || client.exitStatus() != QProcess::NormalExit || client.exitCode() != 0) {
            return u"the client failed: "_s + QString::fromUtf8(client.readAllStandardError());
        }
        return QString::fromUtf8(client.readAllStandardOutput());
    }

    const QString linked = u"Checking linked Tarnwick session...\n"_s;
    const QString unlinked = u"Ready to link your Tarnwick account.\n"_s;
    std::unique_ptr<support::TemporaryHome> m_home;
    QByteArray m_before;
};

TARNWICK_CHILD("two-starts", stateFaultClient)
TARNWICK_TEST(StateFileFaultsTest)
#include "state_file_faults_test.moc"
