// What a start reads from the state file. The next save shows it.
#include "support/client_test.h"

#include <QDir>
#include <QFileInfo>

using support::Call;
using support::ClientRun;
using support::json;

namespace {

/// The three texts as the next save writes them; a null text means that the key is missing.
struct LoadedState
{
    QString origin;
    QString deviceId;
    QString token;

    bool isNothing() const
    {
        return origin == support::defaultBaseUrl() && deviceId.startsWith(u"twqt-"_s) && token.isNull();
    }
};

/// Starts and closes a client. No event loop runs in between, so a session check gets no reply.
LoadedState loadedFrom(const support::TemporaryHome& home)
{
    support::newClientWindow()->close();
    const QJsonObject object = home.stateObject();
    const auto text = [&object](const QString& key) {
        return object.value(key).toString(QString());
    };
    return {text(u"origin"_s), text(u"device_id"_s), text(u"access_token"_s)};
}

// Refuses connections at once, in case a linked client tries to connect.
const QString loadingOrigin = u"http://127.0.0.1:1"_s;

} // namespace

class StateLoadingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyKeyIsTakenByItself_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QString>("origin");
        QTest::addColumn<QString>("deviceId"); // null for a new one
        QTest::addColumn<QString>("token");
        const QString usual = support::defaultBaseUrl();
        QTest::newRow("all") << json("{'origin':'http://127.0.0.1:1','device_id':'Pc-0A','access_token':'t'}")
                             << loadingOrigin << u"Pc-0A"_s << u"t"_s;
        QTest::newRow("origin only") << json("{'origin':'http://127.0.0.1:1'}") << loadingOrigin << QString()
                                     << QString();
        QTest::newRow("identifier only") << json("{'device_id':'d'}") << usual << u"d"_s << QString();
        QTest::newRow("white space around every text")
            << json("{'origin':'  http://127.0.0.1:1 ','device_id':'  abc  ','access_token':'\\t abc \\n'}")
            << loadingOrigin << u"abc"_s << u"abc"_s;
        QTest::newRow("white space only")
            << json("{'origin':'  ','device_id':'\\t','access_token':'\\n'}") << usual << QString() << QString();
        QTest::newRow("the origin is a number")
            << json("{'origin':42,'device_id':'d','access_token':'t'}") << usual << u"d"_s << u"t"_s;
        QTest::newRow("the identifier is a number")
            << json("{'origin':'http://127.0.0.1:1','device_id':42,'access_token':'t'}") << loadingOrigin << QString()
            << u"t"_s;
        QTest::newRow("the token is a number")
            << json("{'origin':'http://127.0.0.1:1','device_id':'d','access_token':42}") << loadingOrigin << u"d"_s
            << QString();
        QTest::newRow("unknown members")
            << json("{'version':3,'origin':'http://127.0.0.1:1','device_id':'d','more':{'device_id':'x'}}")
            << loadingOrigin << u"d"_s << QString();
        QTest::newRow("keys in another letter case")
            << json("{'Origin':'http://127.0.0.1:1','DEVICE_ID':'d','accessToken':'t'}") << usual << QString()
            << QString();
        QTest::newRow("escapes and every script")
            << json("{'device_id':'\\u0061\\'\\\\ größe 🔥'}") << usual << u"a\"\\ größe 🔥"_s << QString();
        QTest::newRow("a line end within a text")
            << json("{'device_id':'a\r\nb'}") << usual << u"a\r\nb"_s << QString();
        QTest::newRow("a key given twice")
            << json("{'device_id':'first','origin':'http://127.0.0.1:1','device_id':'second'}") << loadingOrigin
            << u"second"_s << QString();
    }

    void everyKeyIsTakenByItself()
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
        if (deviceId.isNull()) {
            QVERIFY(loaded.deviceId.startsWith(u"twqt-"_s));
        } else {
            QCOMPARE(loaded.deviceId, deviceId);
        }
    }

    void whatIsNoObjectCountsAsNoFile_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("array") << json("[{'origin':'http://127.0.0.1:1','access_token':'t'}]");
        QTest::newRow("number") << QByteArray("42");
        QTest::newRow("broken") << json("{'origin':'http://127.0.0.1:1',");
        QTest::newRow("object and more") << json("{'device_id':'d'} {'device_id':'d'}");
        QTest::newRow("bad UTF-8") << QByteArray("{\"device_id\":\"\xff\"}");
    }

    void whatIsNoObjectCountsAsNoFile()
    {
        QFETCH(QByteArray, stored);
        const support::TemporaryHome home;
        home.writeState(stored);
        QVERIFY(loadedFrom(home).isNothing());
    }

    void aHugeFileIsRead()
    {
        const support::TemporaryHome home;
        home.writeState(json("{'device_id':'d','filler':'") + QByteArray(qsizetype{10} * 1024 * 1024, 'x') +
                        json("'}"));
        QCOMPARE(loadedFrom(home).deviceId, u"d"_s);
        QVERIFY(home.readState().size() < 1024);
    }

    void whatCannotBeReadCountsAsNoFile_data()
    {
        QTest::addColumn<QString>("obstacle");
        QTest::addColumn<bool>("canBeWritten");
        QTest::newRow("folder") << u"folder"_s << false;
        QTest::newRow("link to nothing") << u"nothing"_s << true;
        QTest::newRow("link to itself") << u"pc-client-state.json"_s << false;
    }

    void whatCannotBeReadCountsAsNoFile()
    {
        QFETCH(QString, obstacle);
        QFETCH(bool, canBeWritten);
        const support::TemporaryHome home;
        QVERIFY(QDir().mkpath(home.stateFolder()));
        if (obstacle == u"folder"_s) {
            QVERIFY(QDir().mkpath(home.stateFile()));
        } else {
            QVERIFY(QFile::link(obstacle, home.stateFile()));
        }
        // The first start saves at its end or fails to. Either way the next one works.
        QStringList deviceIds;
        for (int start = 0; start < 2; ++start) {
            const auto window = support::newClientWindow();
            const support::WindowView view(*window);
            QCOMPARE(view.line(u"Tarnwick URL")->text(), support::defaultBaseUrl());
            QCOMPARE(view.status(), u"Ready to link your Tarnwick account."_s);
            QVERIFY(window->close());
            deviceIds.append(home.stateObject().value(u"device_id"_s).toString());
        }
        QCOMPARE(deviceIds.first().isEmpty(), !canBeWritten);
        QCOMPARE(deviceIds.first(), deviceIds.last());
        QCOMPARE(QFileInfo(home.stateFile()).isSymLink(), obstacle != u"folder"_s);
    }

    void theFileIsNotReadAgain()
    {
        ClientRun run;
        QVERIFY(run.startSignedIn());
        run.home().writeState(json("{'origin':'http://127.0.0.1:1','device_id':'other','access_token':'other'}"));
        run.press(u"Refresh");
        QTRY_COMPARE(run.server.count(callPath(Call::Instances)), 2);
        QCOMPARE(run.server.requests().constLast().header("Authorization"), "Bearer token-1");

        // The next save overwrites the other program's change.
        run.window().close();
        QCOMPARE(run.home().readState(), support::storedState(run.server.origin(), u"token-1"_s));
    }
};

TARNWICK_TEST(StateLoadingTest)
#include "state_loading_test.moc"
