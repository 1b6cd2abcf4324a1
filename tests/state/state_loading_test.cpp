// What a start takes from the state file. What was taken shows in the URL field and in the next save.
#include "app/tarnwick_client_window.h"

#include "api/service_host.h"
#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <memory>

using support::Call;

class StateLoadingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void everyKeyIsTakenByItself_data();
    void everyKeyIsTakenByItself();
    void aValueThatIsNoTextCountsAsNone_data();
    void aValueThatIsNoTextCountsAsNone();
    void whatIsNoObjectCountsAsNoFile_data();
    void whatIsNoObjectCountsAsNoFile();
    void aFileCutAnywhereCountsAsNoFile();
    void whatCannotBeReadCountsAsNoFile_data();
    void whatCannotBeReadCountsAsNoFile();
    void theFileIsOnlyReadAtTheStart();
    void theFileIsNotReadAgain();

private:
    std::unique_ptr<support::MessageCatcher> messages;
};

namespace {

/// The three texts as the next save has them; a null text stands for a key that is not there.
struct LoadedState
{
    QString origin;
    QString deviceId;
    QString token;
};

QString loadedText(const QJsonObject& object, const QString& key)
{
    return object.contains(key) ? object.value(key).toString() : QString();
}

/// Starts and closes a client. An event loop does not run in between, so a session check gets no answer.
LoadedState loadedFrom(const support::TemporaryHome& home)
{
    TarnwickClientWindow window;
    window.close();
    const QJsonObject object = home.stateObject();
    return {loadedText(object, u"origin"_s), loadedText(object, u"device_id"_s), loadedText(object, u"access_token"_s)};
}

/// True when nothing has been taken from the file.
bool loadedNothing(const LoadedState& loaded)
{
    return loaded.origin == defaultBaseUrl() && loaded.deviceId.startsWith("twqt-"_L1) && loaded.token.isNull();
}

// Refuses connections at once, should a linked client get as far as trying.
const QString loadingOrigin = u"http://127.0.0.1:1"_s;

} // namespace

void StateLoadingTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void StateLoadingTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void StateLoadingTest::everyKeyIsTakenByItself_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("origin");
    QTest::addColumn<QString>("deviceId");
    QTest::addColumn<QString>("token");
    const QString origin = loadingOrigin;
    const QString usual = defaultBaseUrl();
    QTest::newRow("all") << QByteArray(R"({"origin":"http://127.0.0.1:1","device_id":"d","access_token":"t"})")
                         << origin << u"d"_s << u"t"_s;
    QTest::newRow("origin only") << QByteArray(R"({"origin":"http://127.0.0.1:1"})") << origin << u"twqt-"_s
                                 << QString();
    QTest::newRow("identifier only") << QByteArray(R"({"device_id":"d"})") << usual << u"d"_s << QString();
    QTest::newRow("unlinked") << QByteArray(R"({"origin":"http://127.0.0.1:1","device_id":"d"})") << origin << u"d"_s
                              << QString();
    QTest::newRow("blanks around every text")
        << QByteArray(R"({"origin":"  http://127.0.0.1:1 ","device_id":"  abc  ","access_token":"\t abc \n"})")
        << origin << u"abc"_s << u"abc"_s;
    QTest::newRow("blanks only") << QByteArray(R"({"origin":"  ","device_id":"\t","access_token":"\n"})") << usual
                                 << u"twqt-"_s << QString();
    QTest::newRow("unknown members")
        << QByteArray(R"({"version":3,"origin":"http://127.0.0.1:1","device_id":"d","more":{"device_id":"x"}})")
        << origin << u"d"_s << QString();
    QTest::newRow("keys in another letter case")
        << QByteArray(R"({"Origin":"http://127.0.0.1:1","DEVICE_ID":"d","accessToken":"t"})") << usual << u"twqt-"_s
        << QString();
    QTest::newRow("escapes and every script")
        << QByteArray(R"({"device_id":"\u0061\"\\ größe 🔥"})") << usual << u"a\"\\ größe 🔥"_s << QString();
}

void StateLoadingTest::everyKeyIsTakenByItself()
{
    QFETCH(QByteArray, stored);
    QFETCH(QString, origin);
    QFETCH(QString, deviceId);
    QFETCH(QString, token);
    const support::TemporaryHome home;
    home.writeState(stored);
    const LoadedState loaded = loadedFrom(home);
    QCOMPARE(loaded.origin, origin);
    QCOMPARE(loaded.token, token);
    if (deviceId == u"twqt-"_s) {
        QVERIFY(loaded.deviceId.startsWith(deviceId));
    } else {
        QCOMPARE(loaded.deviceId, deviceId);
    }
}

void StateLoadingTest::aValueThatIsNoTextCountsAsNone_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("value");
    const QList<QByteArray> values{"null", "42", "true", R"(["abc"])", R"({"text":"abc"})"};
    for (const QString& key : {u"origin"_s, u"device_id"_s, u"access_token"_s}) {
        for (const QByteArray& value : values) {
            QTest::addRow("%s is %s", qPrintable(key), value.constData()) << key << value;
        }
    }
}

void StateLoadingTest::aValueThatIsNoTextCountsAsNone()
{
    QFETCH(QString, key);
    QFETCH(QByteArray, value);
    const support::TemporaryHome home;
    QMap<QString, QByteArray> members{
        {u"origin"_s, R"("http://127.0.0.1:1")"}, {u"device_id"_s, R"("d")"}, {u"access_token"_s, R"("t")"}};
    members.insert(key, value);
    home.writeState(R"({"origin":)" + members.value(u"origin"_s) + R"(,"device_id":)" + members.value(u"device_id"_s) +
                    R"(,"access_token":)" + members.value(u"access_token"_s) + '}');

    // The other two are taken all the same.
    const LoadedState loaded = loadedFrom(home);
    QCOMPARE(loaded.origin, key == u"origin"_s ? defaultBaseUrl() : loadingOrigin);
    QCOMPARE(loaded.token, key == u"access_token"_s ? QString() : u"t"_s);
    QCOMPARE(loaded.deviceId == u"d"_s, key != u"device_id"_s);
    QCOMPARE(loaded.deviceId.startsWith("twqt-"_L1), key == u"device_id"_s);
}

void StateLoadingTest::whatIsNoObjectCountsAsNoFile_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("blank") << QByteArray(" \n");
    QTest::newRow("array") << QByteArray(R"([{"origin":"http://127.0.0.1:1","access_token":"t"}])");
    QTest::newRow("number") << QByteArray("42");
    QTest::newRow("text") << QByteArray(R"("origin")");
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("broken") << QByteArray(R"({"origin":"http://127.0.0.1:1",)");
    QTest::newRow("object and more") << QByteArray(R"({"device_id":"d"} {"device_id":"d"})");
    QTest::newRow("single quotes") << QByteArray("{'device_id':'d'}");
    QTest::newRow("bad UTF-8") << QByteArray("{\"device_id\":\"\xff\"}");
    QTest::newRow("binary") << QByteArray("\0\1\2\3", 4);
}

void StateLoadingTest::whatIsNoObjectCountsAsNoFile()
{
    QFETCH(QByteArray, stored);
    const support::TemporaryHome home;
    home.writeState(stored);
    QVERIFY(loadedNothing(loadedFrom(home)));
}

void StateLoadingTest::aFileCutAnywhereCountsAsNoFile()
{
    const support::TemporaryHome home;
    home.writeState(support::storedState(loadingOrigin, u"t"_s, u"d"_s));
    QCOMPARE(loadedFrom(home).token, u"t"_s);
    const QByteArray saved = home.readState();
    QVERIFY(saved.endsWith("}\n"));
    const qsizetype objectSize = saved.size() - 1;
    for (qsizetype size = 0; size < objectSize; ++size) {
        home.writeState(saved.first(size));
        const LoadedState loaded = loadedFrom(home);
        QVERIFY2(loadedNothing(loaded), saved.first(size).constData());
    }
    // Of the last line, only the end may be missing.
    home.writeState(saved.first(objectSize));
    QCOMPARE(loadedFrom(home).token, u"t"_s);
}

void StateLoadingTest::whatCannotBeReadCountsAsNoFile_data()
{
    QTest::addColumn<QString>("obstacle");
    QTest::addColumn<bool>("canBeWritten");
    QTest::newRow("absent") << u"absent"_s << true;
    QTest::newRow("folder") << u"folder"_s << false;
    QTest::newRow("link to nothing") << u"nothing"_s << true;
    QTest::newRow("link to itself") << u"pc-client-state.json"_s << false;
}

void StateLoadingTest::whatCannotBeReadCountsAsNoFile()
{
    QFETCH(QString, obstacle);
    QFETCH(bool, canBeWritten);
    const support::TemporaryHome home;
    QVERIFY(QDir().mkpath(home.stateFolder()));
    if (obstacle == u"folder"_s) {
        QVERIFY(QDir().mkpath(home.stateFile()));
    } else if (obstacle != u"absent"_s) {
        QVERIFY(QFile::link(obstacle, home.stateFile()));
    }
    // The first start saves at its end, or fails to. The next one works all the same.
    QStringList deviceIds;
    for (int start = 0; start < 2; ++start) {
        TarnwickClientWindow window;
        const support::WindowView view(window);
        QCOMPARE(view.line(u"Tarnwick URL")->text(), defaultBaseUrl());
        QCOMPARE(view.status(), u"Ready to link your Tarnwick account."_s);
        QVERIFY(!view.button(u"Refresh")->isEnabled());
        QVERIFY(window.close());
        deviceIds.append(home.stateObject().value(u"device_id"_s).toString());
    }
    QCOMPARE(deviceIds.first().isEmpty(), !canBeWritten);
    QCOMPARE(deviceIds.first(), deviceIds.last());
    QCOMPARE(QFileInfo(home.stateFile()).isSymLink(), obstacle != u"absent"_s && obstacle != u"folder"_s);
}

void StateLoadingTest::theFileIsOnlyReadAtTheStart()
{
    const support::TemporaryHome home;
    const QByteArray stored = R"({ "device_id" : "  d ", "origin" : "a.example/", "more" : 1 })";
    home.writeState(stored);
    const TarnwickClientWindow window;
    QCOMPARE(home.readState(), stored);
}

void StateLoadingTest::theFileIsNotReadAgain()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(bench.settleLinked());
    bench.home().writeState(R"({"origin":"http://127.0.0.1:1","device_id":"other","access_token":"other"})");
    bench.view().button(u"Refresh")->click();
    QTRY_COMPARE(server.count(callPath(Call::Instances)), 2);
    QCOMPARE(server.requests().constLast().header("Authorization"), "Bearer token-1");

    // The other program's change is lost with the next save.
    bench.window().close();
    QCOMPARE(bench.home().readState(), support::storedState(server.origin(), u"token-1"_s));
}

QTEST_MAIN(StateLoadingTest)
#include "state_loading_test.moc"
