// Tokens that no service should send. They are kept and sent unchanged, wherever they came from.
#include "support/client_test.h"

#include <QJsonObject>

using support::Call;
using support::Reply;

namespace {

struct OddToken
{
    const char* name;
    QString token;
    QByteArray sent;
};

const QList<OddToken> oddTokens{
    {"64 KiB", QString(64LL * 1024, u't'), QByteArray(64LL * 1024, 't')},
    {"umlauts", u"tökén"_s, "t\xc3\xb6k\xc3\xa9n"},
    {"emoji", u"🔥"_s, "\xf0\x9f\x94\xa5"},
    {"blanks inside", u"a  b"_s, "a  b"},
    {"tab inside", u"a\tb"_s, "a\tb"},
    {"colon and comma", u"a: b, c"_s, "a: b, c"},
    {"quotes and backslashes", u"a\"b'c\\d\\\\e\\n"_s, "a\"b'c\\d\\\\e\\n"},
    {"half a surrogate pair", u"a"_s + QChar(0xd83d) + u'b', "a?b"},
    {"line breaks around it", u"\r\n\r\na\r\n"_s, "a"},
    {"every kind of blank around it", u"\v\f \u2028\u00a0a\u2029\u0085\t"_s, "a"},
};

/// Since Qt 6.8, a header with one of these characters in its value is left out, and Qt prints a warning.
const QList<OddToken> controlTokens{
    {"NUL inside", u"a\0b"_s, QByteArray("a\0b", 3)},
    {"a header of its own", u"a\r\nX-Injected: b"_s, "a\r\nX-Injected: b"},
    {"a line feed", u"a\nb"_s, "a\nb"},
    {"a carriage return", u"a\rb"_s, "a\rb"},
};

void addTokens(const QList<OddToken>& tokens)
{
    QTest::addColumn<QString>("token");
    QTest::addColumn<QByteArray>("sent");
    for (const OddToken& odd : tokens) {
        QTest::newRow(odd.name) << odd.token << odd.sent;
    }
}

} // namespace

class TokenFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStoredTokenIsSentByteForByte_data() { addTokens(oddTokens); }

    void aStoredTokenIsSentByteForByte()
    {
        QFETCH(QString, token);
        QFETCH(QByteArray, sent);
        support::ClientRun run;
        run.home().writeState(support::storedState(run.server.origin(), token));
        run.startStored();
        QVERIFY(isSignedIn(run));
        checkRequests(run, {Call::Session, Call::Instances}, sent);
        run.window().close();
        QCOMPARE(run.savedText(u"access_token"_s), token.trimmed());
    }

    void aTokenWithALineBreakMakesAHeaderOfItsOwnOnPurpose_data() { addTokens(controlTokens); }

    /// Only the service and the state file can contain such a token, and it is sent to that service.
    void aTokenWithALineBreakMakesAHeaderOfItsOwnOnPurpose()
    {
        QFETCH(QString, token);
        QFETCH(QByteArray, sent);
        const support::MessageCatcher messages;
        support::ClientRun run;
        run.home().writeState(support::storedState(run.server.origin(), token));
        run.startStored();
        QVERIFY(isSignedIn(run));
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
        QVERIFY(!run.server.requests(callPath(Call::Session)).constFirst().raw.contains("Authorization"));
        QStringList printed = messages.messages();
        printed.removeDuplicates();
        QCOMPARE(printed, QStringList{u"HTTP header value contained illegal character(s)"_s});
#else
        checkRequests(run, {Call::Session, Call::Instances}, sent);
        QCOMPARE(messages.messages(), QStringList());
#endif
    }

    /// Also after a restart, until it is removed.
    void aTokenOfTheServiceIsKeptAsItCame()
    {
        support::ClientRun run;
        run.server.reply(callPath(Call::LinkPoll),
                         Reply::json(200, QJsonObject{{u"access_token"_s, u"\r\n\vtö  \"k\" én\u2028 "_s}}));
        const QByteArray sent = "t\xc3\xb6  \"k\" \xc3\xa9n";
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        run.tick();
        QVERIFY(isSignedIn(run));
        checkRequests(run, {Call::Session, Call::Instances}, sent);

        run.window().close();
        QCOMPARE(run.savedText(u"access_token"_s), u"tö  \"k\" én"_s);
        run.destroyWindow();
        run.server.forgetRequests();
        run.startStored();
        QVERIFY(isSignedIn(run));
        checkRequests(run, {Call::Session, Call::Instances}, sent);
        run.server.forgetRequests();
        run.view().line(u"GDPS Name")->setText(u"Neon Burst"_s);
        run.press(u"Create GDPS");
        QVERIFY(isSignedIn(run)); // the project list is requested afterwards
        checkRequests(run, {Call::CreateInstance, Call::Instances}, sent);

        run.press(u"Unlink");
        QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
        QVERIFY(run.markerComesBack());
        QVERIFY(!run.server.requests().constLast().hasHeader("Authorization"));
    }

private:
    static bool isSignedIn(const support::ClientRun& run)
    {
        return support::waitFor([&run] { return run.view().status() == u"Loaded 1 Tarnwick project(s)."_s; });
    }

    static void checkRequests(const support::ClientRun& run, const QList<Call>& calls, const QByteArray& sent)
    {
        for (const Call call : calls) {
            const auto requests = run.server.requests(callPath(call));
            QCOMPARE(requests.size(), 1);
            QVERIFY(requests.constFirst().raw.contains(": Bearer " + sent + "\r\n"));
        }
    }
};

TARNWICK_TEST(TokenFaultsTest)
#include "token_faults_test.moc"
