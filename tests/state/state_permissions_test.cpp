// The state file holds the token, so nobody but its owner may read it.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/temporary_home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <memory>

#if defined(Q_OS_UNIX)
#include <sys/stat.h>
#endif

namespace {

#if defined(Q_OS_UNIX)
/// New files get the rights that this mask leaves, as long as it lives.
class BorrowedUmask
{
public:
    explicit BorrowedUmask(unsigned mask) : former(::umask(static_cast<mode_t>(mask))) {}
    ~BorrowedUmask() { ::umask(former); }
    Q_DISABLE_COPY_MOVE(BorrowedUmask)

private:
    mode_t former;
};

/// The rights as in `chmod`, in octal.
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
#endif

} // namespace

class StatePermissionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aNewFileIsItsOwnersAlone_data();
    void aNewFileIsItsOwnersAlone();
    void anExistingFileIsNarrowed_data();
    void anExistingFileIsNarrowed();
    void aLinkIsFollowedAndItsTargetNarrowed_data();
    void aLinkIsFollowedAndItsTargetNarrowed();
    void startingChangesNoRights();

private:
    std::unique_ptr<support::MessageCatcher> messages;
};

void StatePermissionsTest::initTestCase()
{
#if !defined(Q_OS_UNIX)
    QSKIP("This system has no such rights.");
#endif
}

void StatePermissionsTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void StatePermissionsTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

#if defined(Q_OS_UNIX)

void StatePermissionsTest::aNewFileIsItsOwnersAlone_data()
{
    QTest::addColumn<unsigned>("mask");
    QTest::newRow("no mask") << 0U;
    QTest::newRow("usual mask") << 022U;
    QTest::newRow("strict mask") << 077U;
}

void StatePermissionsTest::aNewFileIsItsOwnersAlone()
{
    QFETCH(unsigned, mask);
    const BorrowedUmask borrowed(mask);
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    window.close();
    QCOMPARE(modeOf(home.stateFile()), "600");
    QVERIFY(home.stateObject().contains(u"device_id"_s));
}

void StatePermissionsTest::anExistingFileIsNarrowed_data()
{
    QTest::addColumn<unsigned>("mask");
    QTest::addColumn<unsigned>("mode");
    for (const unsigned mask : {0U, 022U}) {
        for (const unsigned mode : {0644U, 0666U, 0777U, 0640U, 0600U}) {
            QTest::addRow("mode %o, mask %o", mode, mask) << mask << mode;
        }
    }
}

void StatePermissionsTest::anExistingFileIsNarrowed()
{
    QFETCH(unsigned, mask);
    QFETCH(unsigned, mode);
    const BorrowedUmask borrowed(mask);
    const support::TemporaryHome home;
    home.writeState(R"({"device_id":"d"})");
    QVERIFY(setMode(home.stateFile(), mode));
    TarnwickClientWindow window;
    window.close();
    QCOMPARE(modeOf(home.stateFile()), "600");
    QCOMPARE(home.stateObject().value(u"device_id"_s).toString(), u"d"_s);
}

void StatePermissionsTest::aLinkIsFollowedAndItsTargetNarrowed_data()
{
    QTest::addColumn<unsigned>("mask");
    QTest::addColumn<bool>("exists");
    QTest::newRow("to a wider file, no mask") << 0U << true;
    QTest::newRow("to a wider file, usual mask") << 022U << true;
    QTest::newRow("to a file not yet there, no mask") << 0U << false;
    QTest::newRow("to a file not yet there, usual mask") << 022U << false;
}

void StatePermissionsTest::aLinkIsFollowedAndItsTargetNarrowed()
{
    QFETCH(unsigned, mask);
    QFETCH(bool, exists);
    const BorrowedUmask borrowed(mask);
    const support::TemporaryHome home;
    const QString target = home.path() + u"/synced.json"_s;
    home.writeState(R"({"device_id":"d"})");
    QVERIFY(QFile::rename(home.stateFile(), target));
    QVERIFY(setMode(target, 0664));
    if (!exists) {
        QVERIFY(QFile::remove(target));
    }
    QVERIFY(QFile::link(target, home.stateFile()));

    TarnwickClientWindow window;
    window.close();
    QVERIFY(QFileInfo(home.stateFile()).isSymLink());
    QVERIFY(!QFileInfo(target).isSymLink());
    QCOMPARE(modeOf(target), "600");
    QCOMPARE(home.stateObject().value(u"device_id"_s).toString() == u"d"_s, exists);
    QVERIFY(home.stateObject().contains(u"origin"_s));
}

void StatePermissionsTest::startingChangesNoRights()
{
    const support::TemporaryHome home;
    home.writeState(R"({"device_id":"d"})");
    QVERIFY(setMode(home.stateFile(), 0644));
    const TarnwickClientWindow window;
    QCOMPARE(modeOf(home.stateFile()), "644");
}

#else

void StatePermissionsTest::aNewFileIsItsOwnersAlone_data() {}
void StatePermissionsTest::aNewFileIsItsOwnersAlone() {}
void StatePermissionsTest::anExistingFileIsNarrowed_data() {}
void StatePermissionsTest::anExistingFileIsNarrowed() {}
void StatePermissionsTest::aLinkIsFollowedAndItsTargetNarrowed_data() {}
void StatePermissionsTest::aLinkIsFollowedAndItsTargetNarrowed() {}
void StatePermissionsTest::startingChangesNoRights() {}

#endif

QTEST_MAIN(StatePermissionsTest)
#include "state_permissions_test.moc"
