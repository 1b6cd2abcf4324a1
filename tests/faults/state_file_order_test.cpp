// Nobody else may read the token, not even for the moment between its writing and the narrowing of the file.
#include "app/tarnwick_client_window.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"

#include <QFile>
#include <QTest>

#include <array>

#if defined(Q_OS_LINUX)
#include <cstring>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

class StateFileOrderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRightsAreNarrowedBeforeTheTokenIsWritten();
    void aNewFileIsNarrowBeforeTheTokenIsWritten();
};

namespace {

#if defined(Q_OS_LINUX)

/// What happens to a file or to the files in a folder, in the order in which it happens.
class FileWatch
{
public:
    FileWatch(const QString& path, quint32 events) : handle(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        isUsable = ::inotify_add_watch(handle, QFile::encodeName(path).constData(), events) >= 0;
    }
    ~FileWatch() { ::close(handle); }
    Q_DISABLE_COPY_MOVE(FileWatch)

    QList<quint32> events() const
    {
        QList<quint32> kinds;
        alignas(inotify_event) std::array<char, 65536> buffer{};
        const ssize_t size = ::read(handle, buffer.data(), buffer.size());
        for (ssize_t offset = 0; offset < size;) {
            inotify_event event = {};
            std::memcpy(&event, buffer.data() + offset, sizeof event);
            kinds.append(event.mask);
            offset += static_cast<ssize_t>(sizeof event + event.len);
        }
        return kinds;
    }

    bool isUsable = false;

private:
    int handle;
};

#endif

} // namespace

void StateFileOrderTest::theRightsAreNarrowedBeforeTheTokenIsWritten()
{
#if defined(Q_OS_LINUX)
    const support::TemporaryHome home;
    home.writeState(support::storedState(u"http://127.0.0.1:1"_s, u"token-1"_s));
    QVERIFY(::chmod(QFile::encodeName(home.stateFile()).constData(), 0666) == 0);
    TarnwickClientWindow window;
    const FileWatch watch(home.stateFile(), IN_MODIFY | IN_ATTRIB);
    QVERIFY(watch.isUsable);
    window.close();
    // Emptied, narrowed, written.
    QCOMPARE(watch.events(), QList<quint32>({IN_MODIFY, IN_ATTRIB, IN_MODIFY}));
#else
    QSKIP("This system does not tell what happens to a file.");
#endif
}

void StateFileOrderTest::aNewFileIsNarrowBeforeTheTokenIsWritten()
{
#if defined(Q_OS_LINUX)
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    const FileWatch watch(home.stateFolder(), IN_CREATE | IN_MODIFY | IN_ATTRIB);
    QVERIFY(watch.isUsable);
    const mode_t former = ::umask(0);
    window.close();
    ::umask(former);
    // Made, narrowed, written.
    QCOMPARE(watch.events(), QList<quint32>({IN_CREATE, IN_ATTRIB, IN_MODIFY}));
#else
    QSKIP("This system does not tell what happens to a file.");
#endif
}

QTEST_MAIN(StateFileOrderTest)
#include "state_file_order_test.moc"
