// What a save writes, byte for byte, and that nothing stops it or is stopped by it.
#include "app/tarnwick_client_window.h"

#include "api/service_host.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <memory>

using support::Call;

class StateSavingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void anUnlinkedClientWritesNoToken();
    void aLinkedClientWritesThreeMembersInKeyOrder();
    void textsAreEscapedAsJson();
    void theUrlFieldIsWhatIsSaved_data();
    void theUrlFieldIsWhatIsSaved();
    void aFirstSaveHoldsTheMadeIdentifier();
    void unknownMembersAreDropped();
    void aLongerFileIsCutToTheNewContent();
    void aRemovedFolderIsMadeAgain();
    void aFolderThatCannotBeMadeIsIgnored();
    void aFileThatCannotBeOpenedIsIgnored();
    void theLastOfTwoClientsWins();
    void theFileIsRewrittenInPlace();

private:
    std::unique_ptr<support::MessageCatcher> messages;
};

void StateSavingTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void StateSavingTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void StateSavingTest::anUnlinkedClientWritesNoToken()
{
    const support::TemporaryHome home;
    home.writeState(R"({"origin":"http://a.example","device_id":"d-1","access_token":""})");
    TarnwickClientWindow window;
    window.close();
    QCOMPARE(home.readState(), "{\n    \"device_id\": \"d-1\",\n    \"origin\": \"http://a.example\"\n}\n");
}

void StateSavingTest::aLinkedClientWritesThreeMembersInKeyOrder()
{
    const support::TemporaryHome home;
    home.writeState(R"({"origin":"http://127.0.0.1:1","device_id":"d-1","access_token":"t-1"})");
    TarnwickClientWindow window;
    window.close();
    QCOMPARE(home.readState(), "{\n    \"access_token\": \"t-1\",\n    \"device_id\": \"d-1\",\n"
                               "    \"origin\": \"http://127.0.0.1:1\"\n}\n");
}

void StateSavingTest::textsAreEscapedAsJson()
{
    const support::TemporaryHome home;
    home.writeState(R"({"origin":"http://a.example","device_id":"a\"b\\c\n\u0001 ä🔥 </x>"})");
    TarnwickClientWindow window;
    window.close();
    QCOMPARE(home.readState(), "{\n    \"device_id\": \"a\\\"b\\\\c\\n\\u0001 ä🔥 </x>\",\n"
                               "    \"origin\": \"http://a.example\"\n}\n");
}

void StateSavingTest::theUrlFieldIsWhatIsSaved_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("saved");
    QTest::newRow("without a scheme") << u"example.test/"_s << u"https://example.test"_s;
    QTest::newRow("emptied") << QString() << defaultBaseUrl();
    QTest::newRow("plain HTTP") << u" http://example.test:8080// "_s << u"http://example.test:8080"_s;
}

void StateSavingTest::theUrlFieldIsWhatIsSaved()
{
    QFETCH(QString, typed);
    QFETCH(QString, saved);
    const support::TemporaryHome home;
    home.writeState(R"({"origin":"http://stored.example","device_id":"d"})");
    TarnwickClientWindow window;
    const support::WindowView view(window);
    view.line(u"Tarnwick URL")->setText(typed);
    window.close();
    QCOMPARE(home.stateObject().value(u"origin"_s).toString(), saved);
    // Normalising is for the file; the field shows what was typed.
    QCOMPARE(view.line(u"Tarnwick URL")->text(), typed);
}

void StateSavingTest::aFirstSaveHoldsTheMadeIdentifier()
{
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    window.close();
    const QString identifier = home.stateObject().value(u"device_id"_s).toString();
    QVERIFY(identifier.startsWith("twqt-"_L1));
    QCOMPARE(home.readState(), "{\n    \"device_id\": \"" + identifier.toUtf8() + "\",\n    \"origin\": \"" +
                                   defaultBaseUrl().toUtf8() + "\"\n}\n");
}

void StateSavingTest::unknownMembersAreDropped()
{
    const support::TemporaryHome home;
    home.writeState(R"({"origin":"http://a.example","device_id":"d","theme":"dark","version":2})");
    TarnwickClientWindow window;
    window.close();
    QCOMPARE(home.stateObject().keys(), (QStringList{u"device_id"_s, u"origin"_s}));
}

void StateSavingTest::aLongerFileIsCutToTheNewContent()
{
    const support::TemporaryHome home;
    home.writeState(R"({"origin":"http://a.example","device_id":"d"})" + QByteArray(10000, ' '));
    TarnwickClientWindow window;
    window.close();
    QCOMPARE(home.readState(), "{\n    \"device_id\": \"d\",\n    \"origin\": \"http://a.example\"\n}\n");
}

void StateSavingTest::aRemovedFolderIsMadeAgain()
{
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    QVERIFY(QDir(home.path() + u"/Library"_s).removeRecursively());
    window.close();
    QVERIFY(QFile::exists(home.stateFile()));
}

void StateSavingTest::aFolderThatCannotBeMadeIsIgnored()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    bench.startUnlinked();
    QDir library(bench.home().path() + u"/Library"_s);
    QVERIFY(library.removeRecursively());
    QFile obstacle(library.path());
    QVERIFY(obstacle.open(QIODevice::WriteOnly));

    // Saves on the way, cannot, and goes on with what it has in memory.
    bench.bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    QCOMPARE(server.requests().constFirst().body, "device_id=desk-1");
    QVERIFY(bench.view().status().startsWith(u"Code TWPC-TEST01 is ready."_s));
    QVERIFY(bench.window().close());
    QVERIFY(QFileInfo(library.path()).isFile());
}

void StateSavingTest::aFileThatCannotBeOpenedIsIgnored()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    bench.startUnlinked();
    QVERIFY(QFile::remove(bench.home().stateFile()));
    QVERIFY(QDir().mkpath(bench.home().stateFile()));
    bench.bringAbout(Call::LinkStart);
    QTRY_COMPARE(bench.view().line(u"Link code")->text(), u"TWPC-TEST01"_s);
    QVERIFY(bench.window().close());
    QVERIFY(QDir(bench.home().stateFile()).isEmpty());
}

void StateSavingTest::theLastOfTwoClientsWins()
{
    const support::TemporaryHome home;
    TarnwickClientWindow first;
    TarnwickClientWindow second;
    support::WindowView(first).line(u"Tarnwick URL")->setText(u"first.example"_s);
    support::WindowView(second).line(u"Tarnwick URL")->setText(u"second.example"_s);
    second.close();
    QCOMPARE(home.stateObject().value(u"origin"_s).toString(), u"https://second.example"_s);
    first.close();
    QCOMPARE(home.stateObject().value(u"origin"_s).toString(), u"https://first.example"_s);
}

void StateSavingTest::theFileIsRewrittenInPlace()
{
    const support::TemporaryHome home;
    home.writeState(R"({"device_id":"d"})");
    // A file kept open sees the new content only if no other file takes its place.
    QFile kept(home.stateFile());
    QVERIFY(kept.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    TarnwickClientWindow window;
    window.close();
    const QByteArray seen = kept.readAll();
    QVERIFY(seen.contains("origin"));
    QCOMPARE(seen, home.readState());
    QCOMPARE(QDir(home.stateFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{u"pc-client-state.json"_s});
}

QTEST_MAIN(StateSavingTest)
#include "state_saving_test.moc"
