// The state file contains the token, so only its owner may read it.
#include "support/client_test.h"

#include <QFile>
#include <QFileInfo>

#if defined(Q_OS_UNIX)
#include <sys/stat.h>
#endif

namespace {

#if defined(Q_OS_UNIX)
/// New files get the permissions that this mask leaves, for the lifetime of the object.
class BorrowedUmask
{
public:
    explicit BorrowedUmask(unsigned mask) : former(::umask(static_cast<mode_t>(mask))) {}
    ~BorrowedUmask() { ::umask(former); }
    Q_DISABLE_COPY_MOVE(BorrowedUmask)

private:
    mode_t former;
};

/// The permissions as for `chmod`, in octal.
QByteArray modeOf(const QString& path)
{
    struct stat entry = {};
    return ::stat(QFile::encodeName(path).constData(), &entry) == 0 ? QByteArray::number(entry.st_mode & 07777U, 8)
                                                                    : QByteArray("none");
}

bool setMode(const QString& path, unsigned mode)
{
    return ::chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(mode)) == 0;
}
#else
struct BorrowedUmask
{
    explicit BorrowedUmask(unsigned /*mask*/) {}
};
QByteArray modeOf(const QString& /*path*/)
{
    return {};
}
bool setMode(const QString& /*path*/, unsigned /*mode*/)
{
    return false;
}
#endif

} // namespace

class StatePermissionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
#if !defined(Q_OS_UNIX)
        QSKIP("This system has no such rights.");
#endif
    }

    void anExistingFileIsNarrowed_data()
    {
        QTest::addColumn<unsigned>("mode");
        QTest::newRow("readable for the group") << 0640U;
        QTest::newRow("readable for all") << 0604U;
        QTest::newRow("open to all") << 0777U;
    }

    void anExistingFileIsNarrowed()
    {
        QFETCH(unsigned, mode);
        const support::TemporaryHome home;
        home.writeState(support::storedState(u"http://a.example"_s));
        QVERIFY(setMode(home.stateFile(), mode));
        const auto window = support::newClientWindow();
        QCOMPARE(modeOf(home.stateFile()), QByteArray::number(mode, 8)); // a start changes nothing
        window->close();
        QCOMPARE(modeOf(home.stateFile()), "600");
        QCOMPARE(home.readState(), support::storedState(u"http://a.example"_s));
    }

    void aLinkIsFollowedAndItsTargetNarrowed_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::newRow("to a wider file") << true;
        QTest::newRow("to a file not yet there") << false;
    }

    void aLinkIsFollowedAndItsTargetNarrowed()
    {
        QFETCH(bool, exists);
        const BorrowedUmask nothing(0);
        const support::TemporaryHome home;
        const QString target = home.path() + u"/synced.json"_s;
        home.writeState(support::storedState(u"http://a.example"_s));
        QVERIFY(QFile::rename(home.stateFile(), target));
        QVERIFY(setMode(target, 0664));
        if (!exists) {
            QVERIFY(QFile::remove(target));
        }
        QVERIFY(QFile::link(target, home.stateFile()));

        support::newClientWindow()->close();
        QVERIFY(QFileInfo(home.stateFile()).isSymLink());
        QVERIFY(!QFileInfo(target).isSymLink());
        QCOMPARE(modeOf(target), "600");
        QCOMPARE(home.stateObject().value(u"device_id"_s).toString() == u"desk-1"_s, exists);
        QVERIFY(home.stateObject().contains(u"origin"_s));
    }
};

TARNWICK_TEST(StatePermissionsTest)
#include "state_permissions_test.moc"
