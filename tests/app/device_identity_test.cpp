// The identifier by which the service knows this installation.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"
#include "support/temporary_home.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include <chrono>
#include <memory>

using support::Call;
using support::Reply;

namespace {

/// What a window of this home knows itself by: the identifier that it saves when it is closed.
QString identityOfNextStart()
{
    TarnwickClientWindow window;
    window.close();
    const QString path = qEnvironmentVariable("HOME") + u"/Library/Application Support/Tarnwick/pc-client-state.json"_s;
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return QJsonDocument::fromJson(file.readAll()).object().value(u"device_id"_s).toString();
}

qint64 identityClock()
{
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

} // namespace

class DeviceIdentityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aNewIdentifierIsTheMonotonicClockInHexadecimal();
    void whatCountsAsNoIdentifier_data();
    void whatCountsAsNoIdentifier();
    void anyOtherStoredTextIsKept_data();
    void anyOtherStoredTextIsKept();
    void startsWithoutASaveMakeDifferentIdentifiers();
    void aSavedIdentifierStays();
    void theIdentifierIsNotRemadeWhileTheClientRuns();
    void unlinkingAndLinkingAgainSendsTheSameIdentifier();

private:
    std::unique_ptr<support::MessageCatcher> messages;
};

void DeviceIdentityTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void DeviceIdentityTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void DeviceIdentityTest::aNewIdentifierIsTheMonotonicClockInHexadecimal()
{
    const support::TemporaryHome home;
    const qint64 before = identityClock();
    const QString identifier = identityOfNextStart();
    const qint64 after = identityClock();

    static const QRegularExpression form(u"^twqt-[1-9a-f][0-9a-f]*$"_s);
    QVERIFY2(form.match(identifier).hasMatch(), qPrintable(identifier));
    bool isNumber = false;
    const qint64 ticks = identifier.mid(5).toLongLong(&isNumber, 16);
    QVERIFY(isNumber);
    QVERIFY(ticks >= before);
    QVERIFY(ticks <= after);
}

void DeviceIdentityTest::whatCountsAsNoIdentifier_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("no key") << QByteArray(R"({"origin":"https://a.example"})");
    QTest::newRow("empty object") << QByteArray("{}");
    QTest::newRow("empty file") << QByteArray("");
    QTest::newRow("empty text") << QByteArray(R"({"device_id":""})");
    QTest::newRow("blanks") << QByteArray(R"({"device_id":"   "})");
    QTest::newRow("number") << QByteArray(R"({"device_id":42})");
    QTest::newRow("null") << QByteArray(R"({"device_id":null})");
    QTest::newRow("boolean") << QByteArray(R"({"device_id":true})");
    QTest::newRow("array") << QByteArray(R"({"device_id":["abc"]})");
    QTest::newRow("object") << QByteArray(R"({"device_id":{"a":"abc"}})");
}

void DeviceIdentityTest::whatCountsAsNoIdentifier()
{
    QFETCH(QByteArray, stored);
    const support::TemporaryHome home;
    home.writeState(stored);
    static const QRegularExpression form(u"^twqt-[1-9a-f][0-9a-f]*$"_s);
    const QString identifier = identityOfNextStart();
    QVERIFY2(form.match(identifier).hasMatch(), qPrintable(identifier));
}

void DeviceIdentityTest::anyOtherStoredTextIsKept_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("kept");
    QTest::newRow("short") << QByteArray("abc") << u"abc"_s;
    QTest::newRow("another client's") << QByteArray("other-00FF") << u"other-00FF"_s;
    QTest::newRow("upper-case digits") << QByteArray("twqt-ABC") << u"twqt-ABC"_s;
    QTest::newRow("blanks around it") << QByteArray("  abc  ") << u"abc"_s;
    QTest::newRow("blanks inside") << QByteArray("a b") << u"a b"_s;
    QTest::newRow("any script") << QByteArray("größe 🔥") << u"größe 🔥"_s;
}

void DeviceIdentityTest::anyOtherStoredTextIsKept()
{
    QFETCH(QByteArray, stored);
    QFETCH(QString, kept);
    const support::TemporaryHome home;
    home.writeState(R"({"device_id":")" + stored + "\"}");
    QCOMPARE(identityOfNextStart(), kept);
}

void DeviceIdentityTest::startsWithoutASaveMakeDifferentIdentifiers()
{
    support::ScriptedServer server;
    server.reply(callPath(Call::LinkStart), Reply::empty(500));
    const support::TemporaryHome home;
    QList<QByteArray> sent;
    for (int start = 0; start < 2; ++start) {
        // Empty on purpose: the identifier made for it lasts for this start only.
        home.writeState(support::storedState(server.origin(), {}, {}));
        const TarnwickClientWindow window;
        const support::WindowView view(window);
        view.button(u"Generate Link Code")->click();
        QTRY_COMPARE(view.status(), u"Tarnwick returned HTTP 500."_s);
        sent.append(server.requests().constLast().body);
    }
    QVERIFY(sent.constFirst().startsWith("device_id=twqt-"));
    QVERIFY(sent.constLast().startsWith("device_id=twqt-"));
    QVERIFY(sent.constFirst() != sent.constLast());
}

void DeviceIdentityTest::aSavedIdentifierStays()
{
    const support::TemporaryHome home;
    const QString first = identityOfNextStart();
    QCOMPARE(identityOfNextStart(), first);
    QCOMPARE(identityOfNextStart(), first);
}

void DeviceIdentityTest::theIdentifierIsNotRemadeWhileTheClientRuns()
{
    const support::TemporaryHome home;
    TarnwickClientWindow window;
    window.close();
    const QJsonObject first = home.stateObject();
    // Another program's change to the file is not looked at either.
    home.writeState(R"({"device_id":"changed"})");
    window.show();
    window.close();
    QCOMPARE(home.stateObject(), first);
}

void DeviceIdentityTest::unlinkingAndLinkingAgainSendsTheSameIdentifier()
{
    support::ScriptedServer server;
    support::ServiceBench bench(server, [] { return std::make_unique<TarnwickClientWindow>(); });
    QVERIFY(bench.prepare(Call::LinkPoll));
    server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"t-2"})"));
    bench.bringAbout(Call::LinkPoll);
    QTRY_COMPARE(bench.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
    bench.view().button(u"Unlink")->click();
    QCOMPARE(bench.home().stateObject().value(u"device_id"_s).toString(), u"desk-1"_s);

    server.hold(callPath(Call::LinkStart));
    bench.view().button(u"Generate Link Code")->click();
    QTRY_COMPARE(server.heldCount(callPath(Call::LinkStart)), 1);
    const QList<support::RecordedRequest> starts = server.requests(callPath(Call::LinkStart));
    QCOMPARE(starts.size(), 2);
    QCOMPARE(starts.constFirst().body, "device_id=desk-1");
    QCOMPARE(starts.constLast().body, "device_id=desk-1");
    QCOMPARE(server.requests(callPath(Call::LinkPoll)).constFirst().query(), "code=TWPC-TEST01&device_id=desk-1");
}

QTEST_MAIN(DeviceIdentityTest)
#include "device_identity_test.moc"
