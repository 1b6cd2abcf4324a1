// The stand-ins for the user's home, desktop and log.
#include "support/message_catcher.h"
#include "support/opened_urls.h"
#include "support/temporary_home.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QTest>
#include <QThread>

#include <memory>

using Qt::StringLiterals::operator""_ba;
using Qt::StringLiterals::operator""_s;
using support::MessageCatcher;
using support::OpenedUrls;
using support::TemporaryHome;

class SupportHelpersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void homeIsATemporaryFolderAndComesBack();
    void anUnsetHomeIsUnsetAgain();
    void stateFileIsWrittenAndRead();
    void openedAddressesAreRecordedInOrder();
    void handlersEndWithTheObject();
    void messagesOfEveryKindAndThreadAreCaught();
    void catchersNestAndForward();
};

void SupportHelpersTest::homeIsATemporaryFolderAndComesBack()
{
    const QByteArray former = qgetenv("HOME");
    QString path;
    {
        const TemporaryHome home;
        path = home.path();
        QCOMPARE(qgetenv("HOME"), QFile::encodeName(path));
        QVERIFY(QDir(path).exists());
        QVERIFY(QDir(path).isEmpty());
        home.writeState("{}");
        QFile::setPermissions(home.stateFolder(), QFile::Permissions());
    }
    QCOMPARE(qgetenv("HOME"), former);
    QVERIFY(!QDir(path).exists());
}

void SupportHelpersTest::anUnsetHomeIsUnsetAgain()
{
    const TemporaryHome outer;
    qunsetenv("HOME");
    {
        const TemporaryHome inner;
        QVERIFY(qEnvironmentVariableIsSet("HOME"));
    }
    QVERIFY(!qEnvironmentVariableIsSet("HOME"));
}

void SupportHelpersTest::stateFileIsWrittenAndRead()
{
    const TemporaryHome home;
    QCOMPARE(home.stateFile(), home.path() + u"/Library/Application Support/Tarnwick/pc-client-state.json"_s);
    QCOMPARE(home.readState(), QByteArray());
    home.writeState("\xef\xbb\xbfnot \x00json"_ba);
    QCOMPARE(home.readState(), "\xef\xbb\xbfnot \x00json"_ba);
    QVERIFY(home.stateObject().isEmpty());
    home.writeState(R"({"origin":"x"})");
    QCOMPARE(home.stateObject().value(u"origin"_s).toString(), u"x"_s);
}

void SupportHelpersTest::openedAddressesAreRecordedInOrder()
{
    OpenedUrls opened({u"odd"_s, QString()});
    QVERIFY(opened.isEmpty());
    QVERIFY(QDesktopServices::openUrl(QUrl(u"https://a.example/?q=%41"_s)));
    QVERIFY(QDesktopServices::openUrl(QUrl(u"HTTP://b.example"_s)));
    QVERIFY(QDesktopServices::openUrl(QUrl(u"file:///c"_s)));
    QVERIFY(QDesktopServices::openUrl(QUrl(u"odd:d"_s)));
    QVERIFY(QDesktopServices::openUrl(QUrl(u"/relative"_s)));
    QCOMPARE(opened.urls(), (QList<QUrl>{QUrl(u"https://a.example/?q=%41"_s), QUrl(u"http://b.example"_s),
                                         QUrl(u"file:///c"_s), QUrl(u"odd:d"_s), QUrl(u"/relative"_s)}));
    QCOMPARE(opened.last(), QUrl(u"/relative"_s));
    opened.clear();
    QCOMPARE(opened.count(), 0);
}

void SupportHelpersTest::handlersEndWithTheObject()
{
    {
        const OpenedUrls opened({u"odd"_s});
        QVERIFY(QDesktopServices::openUrl(QUrl(u"odd:1"_s)));
    }
    const MessageCatcher catcher; // the desktop has something to say about an unknown scheme
    QVERIFY(!QDesktopServices::openUrl(QUrl(u"odd:2"_s)));
}

void SupportHelpersTest::messagesOfEveryKindAndThreadAreCaught()
{
    MessageCatcher catcher;
    QCOMPARE(catcher.messages(), QStringList());
    qDebug("one");
    qWarning("two");
    qCritical("three");
    const std::unique_ptr<QThread> thread(QThread::create([] { qInfo("four"); }));
    thread->start();
    QVERIFY(thread->wait(10000));
    const QStringList messages = catcher.messages();
    const QtMsgType second = catcher.entries().at(1).type;
    catcher.clear();
    QCOMPARE(messages, (QStringList{u"one"_s, u"two"_s, u"three"_s, u"four"_s}));
    QCOMPARE(second, QtWarningMsg);
    QCOMPARE(catcher.messages(), QStringList());
}

void SupportHelpersTest::catchersNestAndForward()
{
    const MessageCatcher outer;
    {
        const MessageCatcher forwarding(MessageCatcher::Forward::Yes);
        qWarning("both");
        const MessageCatcher inner;
        qWarning("inner only");
        QCOMPARE(inner.messages(), QStringList{u"inner only"_s});
        QCOMPARE(forwarding.messages(), QStringList{u"both"_s});
    }
    qWarning("outer again");
    QCOMPARE(outer.messages(), (QStringList{u"both"_s, u"outer again"_s}));
}

QTEST_MAIN(SupportHelpersTest)
#include "support_helpers_test.moc"
