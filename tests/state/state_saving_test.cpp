// What a save writes, byte for byte. A failed save stops nothing, and nothing prevents a save.
#include "support/client_test.h"

#include <QDir>
#include <QFileInfo>

using support::Call;
using support::ClientRun;
using support::json;

class StateSavingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWholeFileIsRewritten_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QByteArray>("saved");
        const QByteArray unlinked = "{\n    \"device_id\": \"d-1\",\n    \"origin\": \"http://127.0.0.1:1\"\n}\n";
        const QByteArray known = json("'origin':'http://127.0.0.1:1','device_id':'d-1'");
        QTest::newRow("unlinked, without a token") << '{' + known + '}' << unlinked;
        QTest::newRow("unlinked by an empty token") << '{' + known + json(",'access_token':''}") << unlinked;
        QTest::newRow("linked, in the order of the keys")
            << '{' + known + json(",'access_token':'t-1'}")
            << json("{\n    'access_token': 't-1',\n    'device_id': 'd-1',\n    'origin': 'http://127.0.0.1:1'\n}\n");
        QTest::newRow("texts are escaped")
            << json("{'origin':'http://127.0.0.1:1','device_id':'a\\'b\\\\c\\n\\u0001 ä🔥 </x>'}")
            << json("{\n    'device_id': 'a\\'b\\\\c\\n\\u0001 ä🔥 </x>',\n    'origin': 'http://127.0.0.1:1'\n}\n");
        QTest::newRow("unknown members are dropped") << '{' + known + json(",'theme':'dark','version':2}") << unlinked;
        QTest::newRow("a longer file is cut") << '{' + known + '}' + QByteArray(10000, ' ') << unlinked;
    }

    void theWholeFileIsRewritten()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QByteArray, saved);
        const support::TemporaryHome home;
        home.writeState(stored);
        support::newClientWindow()->close();
        QCOMPARE(home.readState(), saved);
    }

    void whatCannotBeSavedIsIgnored_data()
    {
        QTest::addColumn<bool>("isFolderMissing");
        QTest::newRow("the folder cannot be made") << true;
        QTest::newRow("the file cannot be opened") << false;
    }

    /// The client keeps working with its state in memory.
    void whatCannotBeSavedIsIgnored()
    {
        QFETCH(bool, isFolderMissing);
        ClientRun run;
        run.start();
        const QString library = run.home().path() + u"/Library"_s;
        QVERIFY(QDir(library).removeRecursively());
        if (isFolderMissing) {
            QVERIFY(QFile(library).open(QIODevice::WriteOnly));
        } else {
            QVERIFY(QDir().mkpath(run.home().stateFile()));
        }
        run.press(u"Generate Link Code");
        QTRY_COMPARE(
            run.view().status(),
            u"Code TWPC-TEST01 is ready. Approve it at %1/link/pc before it expires."_s.arg(support::publicHost()));
        QCOMPARE(run.server.requests().constFirst().body, "device_id=desk-1");
        QVERIFY(run.window().close());
        QCOMPARE(QFileInfo(library).isFile(), isFolderMissing);
        QCOMPARE(QFileInfo(run.home().stateFile()).isDir(), !isFolderMissing);
    }
};

TARNWICK_TEST(StateSavingTest)
#include "state_saving_test.moc"
