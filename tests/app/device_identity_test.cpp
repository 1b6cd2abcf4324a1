// The identifier by which the service knows this installation.
#include "support/client_test.h"

#include <QRegularExpression>

#include <chrono>

using support::Call;
using support::ClientRun;
using support::Reply;

namespace {

/// The identifier that the client saves when it is closed, and that its next start uses.
QString identityOfNextStart(const support::TemporaryHome& home)
{
    support::newClientWindow()->close();
    return home.stateObject().value(u"device_id"_s).toString();
}

bool identityIsNew(const QString& identifier)
{
    static const QRegularExpression form(u"^twqt-[1-9a-f][0-9a-f]*$"_s);
    return form.match(identifier).hasMatch();
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
    void aNewIdentifierIsTheMonotonicClockInHexadecimal()
    {
        const support::TemporaryHome home;
        const qint64 before = identityClock();
        const QString identifier = identityOfNextStart(home);
        const qint64 after = identityClock();

        QVERIFY2(identityIsNew(identifier), qPrintable(identifier));
        bool isNumber = false;
        const qint64 ticks = identifier.mid(5).toLongLong(&isNumber, 16);
        QVERIFY(isNumber);
        QVERIFY(ticks >= before);
        QVERIFY(ticks <= after);
    }

    void whatCountsAsNoIdentifier_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::newRow("no key") << support::json("{'origin':'https://a.example'}");
        QTest::newRow("blanks") << support::json("{'device_id':'   '}");
        QTest::newRow("number") << support::json("{'device_id':42}");
    }

    void whatCountsAsNoIdentifier()
    {
        QFETCH(QByteArray, stored);
        const support::TemporaryHome home;
        home.writeState(stored);
        const QString identifier = identityOfNextStart(home);
        QVERIFY2(identityIsNew(identifier), qPrintable(identifier));
    }

    void anyOtherStoredTextIsKept_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::newRow("short") << u"abc"_s;
        QTest::newRow("another client's") << u"other-00FF"_s;
        QTest::newRow("upper-case digits") << u"twqt-ABC"_s;
        QTest::newRow("any script") << u"größe 🔥"_s;
    }

    void anyOtherStoredTextIsKept()
    {
        QFETCH(QString, stored);
        const support::TemporaryHome home;
        home.writeState(support::storedState(u"https://a.example"_s, {}, stored));
        QCOMPARE(identityOfNextStart(home), stored);
    }

    void startsWithoutASaveMakeDifferentIdentifiers()
    {
        ClientRun run;
        QList<QByteArray> sent;
        for (int start = 0; start < 2; ++start) {
            // Empty on purpose: the identifier generated for it is used for this start only.
            run.home().writeState(support::storedState(run.server.origin(), {}, {}));
            run.startStored();
            QVERIFY(run.markerComesBack());
            sent.append(run.server.requests().constLast().body);
        }
        QVERIFY(sent.constFirst().startsWith("device_id=twqt-"));
        QVERIFY(sent.constLast().startsWith("device_id=twqt-"));
        QVERIFY(sent.constFirst() != sent.constLast());
    }

    void aSavedIdentifierStays()
    {
        const support::TemporaryHome home;
        const QString first = identityOfNextStart(home);
        QCOMPARE(identityOfNextStart(home), first);
    }

    void theIdentifierIsNotRemadeWhileTheClientRuns()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        window->close();
        const QJsonObject first = home.stateObject();
        window->show();
        window->close();
        QCOMPARE(home.stateObject(), first);
    }

    void unlinkingAndLinkingAgainSendsTheSameIdentifier()
    {
        ClientRun run;
        QVERIFY(run.prepare(Call::LinkPoll));
        run.server.reply(callPath(Call::LinkPoll), Reply::json(200, R"({"access_token":"t-2"})"));
        run.bringAbout(Call::LinkPoll);
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        run.press(u"Unlink");
        QCOMPARE(run.savedText(u"device_id"_s), u"desk-1"_s);

        QVERIFY(run.markerComesBack());
        const QList<support::RecordedRequest> starts = run.server.requests(callPath(Call::LinkStart));
        QCOMPARE(starts.size(), 2);
        QCOMPARE(starts.constFirst().body, "device_id=desk-1");
        QCOMPARE(starts.constLast().body, "device_id=desk-1");
    }
};

TARNWICK_TEST(DeviceIdentityTest)
#include "device_identity_test.moc"
