// No other user can read the token, not even between writing it and restricting the file.
#include "support/client_test.h"

#if defined(Q_OS_LINUX)
#include <QFile>

#include <array>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <functional>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// How often this process has set a file's permissions: by path, which another file may have by then, and by a handle
/// of the file itself.
struct RightsCalls
{
    int byPath = 0;
    int byHandle = 0;
    bool operator==(const RightsCalls&) const = default;
};

RightsCalls rightsCalls;
// The permissions of a file before they were last set by a handle.
mode_t rightsBefore = 0;
/// Called when a handle sets permissions, which every save does.
std::function<void()> whileSaving;
constexpr RightsCalls rightsOfASave{.byPath = 0, .byHandle = 1};

/// The system's own function of this name.
template <typename Function>
Function* rightsFunction(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// What happens to a file or to the files in a folder, in order.
class FileWatch
{
public:
    FileWatch(const QString& path, quint32 events)
        : handle(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
          isUsable(::inotify_add_watch(handle, QFile::encodeName(path).constData(), events) >= 0)
    {
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

private:
    int handle;

public:
    const bool isUsable;
};

} // namespace

// With the names of the system's functions: all libraries of the process find these functions first.
extern "C" {

int countedChmod(const char* path, mode_t mode) noexcept __asm__("chmod");
int countedFchmodat(int folder, const char* path, mode_t mode, int flags) noexcept __asm__("fchmodat");
int countedFchmod(int file, mode_t mode) noexcept __asm__("fchmod");

int countedChmod(const char* path, mode_t mode) noexcept
{
    ++rightsCalls.byPath;
    return rightsFunction<int(const char*, mode_t)>("chmod")(path, mode);
}

int countedFchmodat(int folder, const char* path, mode_t mode, int flags) noexcept
{
    ++rightsCalls.byPath;
    return rightsFunction<int(int, const char*, mode_t, int)>("fchmodat")(folder, path, mode, flags);
}

int countedFchmod(int file, mode_t mode) noexcept
{
    ++rightsCalls.byHandle;
    struct stat entry = {};
    rightsBefore = ::fstat(file, &entry) == 0 ? entry.st_mode & 0777 : 0;
    if (whileSaving) {
        whileSaving();
    }
    return rightsFunction<int(int, mode_t)>("fchmod")(file, mode);
}

} // extern "C"

class StateFileOrderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Otherwise the other tests would always count zero.
    void everySettingOfRightsIsCounted()
    {
        const support::TemporaryHome home;
        home.writeState("{}");
        rightsCalls = {};
        QVERIFY(QFile::setPermissions(home.stateFile(), QFile::ReadOwner));
        QCOMPARE(rightsCalls, (RightsCalls{.byPath = 1, .byHandle = 0}));
        std::filesystem::permissions(home.stateFile().toStdString(), std::filesystem::perms::owner_all);
        QCOMPARE(rightsCalls, (RightsCalls{.byPath = 2, .byHandle = 0}));
        QFile file(home.stateFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.setPermissions(QFile::ReadOwner));
        QCOMPARE(rightsCalls, (RightsCalls{.byPath = 2, .byHandle = 1}));
        QCOMPARE(rightsBefore, 0700);
    }

    void theRightsAreNarrowedBeforeTheTokenIsWritten()
    {
        const support::TemporaryHome home;
        home.writeState(support::storedState(u"http://127.0.0.1:1"_s, u"token-1"_s));
        QVERIFY(::chmod(QFile::encodeName(home.stateFile()).constData(), 0666) == 0);
        const auto window = support::newClientWindow();
        const FileWatch watch(home.stateFile(), IN_MODIFY | IN_ATTRIB);
        QVERIFY(watch.isUsable);
        rightsCalls = {};
        window->close();
        QCOMPARE(rightsCalls, rightsOfASave);
        QCOMPARE(rightsBefore, 0666);
        // Truncated, restricted, written.
        QCOMPARE(watch.events(), QList<quint32>({IN_MODIFY, IN_ATTRIB, IN_MODIFY}));
    }

    void aNewFileIsNarrowBeforeTheTokenIsWritten()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        const FileWatch watch(home.stateFolder(), IN_CREATE | IN_MODIFY | IN_ATTRIB);
        QVERIFY(watch.isUsable);
        const mode_t former = ::umask(0);
        rightsCalls = {};
        window->close();
        ::umask(former);
        QCOMPARE(rightsCalls, rightsOfASave);
        // A process that opened it before it was restricted could read it later, so it must be created restricted.
        QCOMPARE(rightsBefore, 0600);
        // Created, restricted, written.
        QCOMPARE(watch.events(), QList<quint32>({IN_CREATE, IN_ATTRIB, IN_MODIFY}));
    }

    void unlinkingIsSavedBeforeItIsAnnounced()
    {
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        QString text;
        whileSaving = [&] {
            text = run.view().status();
        };
        run.press(u"Unlink");
        whileSaving = nullptr;
        QCOMPARE(text, u"Loaded 1 Tarnwick project(s)."_s);
    }
};
#else
/// This system does not report what happens to a file.
class StateFileOrderTest : public QObject
{
    Q_OBJECT
};
#endif

TARNWICK_TEST(StateFileOrderTest)
#include "state_file_order_test.moc"
