// The replacements for the user's home, desktop and log.
#include "support/client_test.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QThread>

using support::MessageCatcher;
using support::OpenedUrls;
using support::TemporaryHome;

class SupportHelpersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void homeIsATemporaryFolderAndComesBack()
    {
        const TemporaryHome outer;
        qunsetenv("HOME");
        QString path;
        {
            const TemporaryHome home;
            path = home.path();
            QCOMPARE(qgetenv("HOME"), QFile::encodeName(path));
            QVERIFY(QDir(path).isEmpty());
            home.writeState("{}");
            QFile::setPermissions(home.stateFolder(), QFile::Permissions());
            const TemporaryHome inner;
            QVERIFY(inner.path() != path);
        }
        QVERIFY(!qEnvironmentVariableIsSet("HOME"));
        QVERIFY(!QDir(path).exists());
    }

    void openedAddressesAreRecordedWhileTheObjectLives()
    {
        {
            OpenedUrls opened({u"odd"_s, QString()});
            QVERIFY(opened.isEmpty());
            const QList<QUrl> urls{QUrl(u"https://a.example/?q=%41"_s), QUrl(u"HTTP://b.example"_s),
                                   QUrl(u"file:///c"_s), QUrl(u"odd:d"_s), QUrl(u"/relative"_s)};
            for (const QUrl& url : urls) {
                QVERIFY(QDesktopServices::openUrl(url));
            }
            QCOMPARE(opened.urls(), urls);
            QCOMPARE(opened.last(), QUrl(u"/relative"_s));
        }
        const MessageCatcher catcher; // QDesktopServices prints a message about an unknown scheme
        QVERIFY(!QDesktopServices::openUrl(QUrl(u"odd:2"_s)));
    }

    void messagesOfEveryKindAndThreadAreCaught()
    {
        const MessageCatcher outer;
        {
            const MessageCatcher inner;
            qDebug("one");
            qWarning("two");
            qCritical("three");
            const std::unique_ptr<QThread> thread(QThread::create([] { qInfo("four"); }));
            thread->start();
            QVERIFY(thread->wait(10000));
            QCOMPARE(inner.messages(), (QStringList{u"one"_s, u"two"_s, u"three"_s, u"four"_s}));
            QCOMPARE(inner.entries().constFirst().category, u"default"_s);
        }
        qWarning("outer");
        QCOMPARE(outer.messages(), QStringList{u"outer"_s});
    }
};

TARNWICK_TEST(SupportHelpersTest)
#include "support_helpers_test.moc"
