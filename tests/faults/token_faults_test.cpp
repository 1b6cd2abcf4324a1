// Tokens that no service should hand out. They are kept and sent as they came, wherever they came from.
#include "app/tarnwick_client_window.h"
#include "support/client_run.h"
#include "support/creation_form.h"
#include "support/message_catcher.h"

#include <QTest>

using support::Call;
using support::callPath;
using support::RecordedRequest;
using support::Reply;

class TokenFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTokenIsSentByteForByte_data();
    void aTokenIsSentByteForByte();
    void aTokenWithALineBreakMakesAHeaderOfItsOwnOnPurpose_data();
    void aTokenWithALineBreakMakesAHeaderOfItsOwnOnPurpose();
    void lineBreaksAroundATokenAreNotPartOfIt_data();
    void lineBreaksAroundATokenAreNotPartOfIt();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;

    static bool link(Run& run, const QString& token, bool isStored);
    static bool isSignedIn(Run& run);
    static void checkRequests(Run& run, const QByteArray& sent);
    static void checkCreation(Run& run, const QByteArray& sent);
    static void checkUnlink(Run& run);
};

namespace {

void addTokenSources(const char* name, const QString& token, const QByteArray& sent)
{
    QTest::addRow("%s, from the state file", name) << token << sent << true;
    QTest::addRow("%s, from the service", name) << token << sent << false;
}

void addTokenColumns()
{
    QTest::addColumn<QString>("token");
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<bool>("isStored");
}

} // namespace

/// Gives the client the token.
bool TokenFaultsTest::link(Run& run, const QString& token, bool isStored)
{
    run.server.reply(callPath(Call::LinkPoll), Reply::json(200, QJsonObject{{u"access_token"_s, token}}));
    if (isStored) {
        run.home().writeState(support::storedState(run.server.origin(), token));
        run.startStored();
    } else {
        run.start();
        if (!run.showLinkCode(u"TWPC-1"_s)) {
            return false;
        }
        run.tick();
    }
    return true;
}

/// Waits until the client has used the token twice.
bool TokenFaultsTest::isSignedIn(Run& run)
{
    return QTest::qWaitFor([&run] { return run.view().status() == u"Loaded 1 Tarnwick project(s)."_s; }, 30000);
}

void TokenFaultsTest::checkRequests(Run& run, const QByteArray& sent)
{
    for (const Call call : {Call::Session, Call::Instances}) {
        const QList<RecordedRequest> requests = run.server.requests(callPath(call));
        QCOMPARE(requests.size(), 1);
        QVERIFY(requests.constFirst().raw.contains("\r\nAuthorization: Bearer " + sent + "\r\n"));
    }
    QVERIFY(run.view().button(u"Unlink")->isEnabled());
    QVERIFY(run.view().button(u"Refresh")->isEnabled());
    QVERIFY(run.view().button(u"Create GDPS")->isEnabled());
}

/// The one POST that carries it.
void TokenFaultsTest::checkCreation(Run& run, const QByteArray& sent)
{
    support::fillCreationForm(run.view());
    run.press(u"Create GDPS");
    // The project list is asked for afterwards.
    QVERIFY(isSignedIn(run));
    const QList<RecordedRequest> requests = run.server.requests(callPath(Call::CreateInstance));
    QCOMPARE(requests.size(), 1);
    QVERIFY(requests.constFirst().raw.contains("\r\nAuthorization: Bearer " + sent + "\r\n"));
}

/// Once it is forgotten, it is in the file no longer, and nothing of it goes out any more.
void TokenFaultsTest::checkUnlink(Run& run)
{
    run.press(u"Unlink");
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    QVERIFY(run.markerComesBack());
    QVERIFY(!run.server.requests().constLast().raw.contains("Bearer"));
}

void TokenFaultsTest::aTokenIsSentByteForByte_data()
{
    addTokenColumns();
    const auto add = [](const char* name, const QString& token) {
        addTokenSources(name, token, token.toUtf8());
    };
    add("64 KiB", QString(64LL * 1024, u't'));
    add("umlauts", u"tökén"_s);
    add("emoji", u"🔥🔥"_s);
    add("right to left", u"שלום"_s);
    add("blanks inside", u"a  b"_s);
    add("tab inside", u"a\tb"_s);
    add("NUL inside", u"a\0b"_s);
    add("colon and comma", u"a: b, c"_s);
    add("quotes and backslashes", uR"(a"b'c\d\\e\n)"_s);
    add("half a surrogate pair", u"a"_s + QChar(0xd83d) + u'b');
}

void TokenFaultsTest::aTokenIsSentByteForByte()
{
    QFETCH(QString, token);
    QFETCH(QByteArray, sent);
    QFETCH(bool, isStored);
    const support::MessageCatcher messages;
    Run run;
    QVERIFY(link(run, token, isStored));
    QVERIFY(isSignedIn(run));
    checkRequests(run, sent);

    // Closing saves it, and the next start has it from there.
    run.window().close();
    QCOMPARE(run.savedText(u"access_token"_s), token.trimmed());
    run.server.forgetRequests();
    run.startStored();
    QVERIFY(isSignedIn(run));
    checkRequests(run, sent);
    checkCreation(run, sent);
    checkUnlink(run);
    QCOMPARE(messages.messages(), QStringList());
}

void TokenFaultsTest::aTokenWithALineBreakMakesAHeaderOfItsOwnOnPurpose_data()
{
    addTokenColumns();
    const auto add = [](const char* name, const QString& token) {
        addTokenSources(name, token, token.toUtf8());
    };
    add("a header", u"a\r\nX-Injected: b"_s);
    add("two headers", u"a\r\nX-Injected: b\r\nCookie: c=d"_s);
    add("a line feed", u"a\nb"_s);
    add("a carriage return", u"a\rb"_s);
}

/// Only the service and the state file can put one there, and it goes back to that service. What the service cannot
/// take, it should not hand out.
void TokenFaultsTest::aTokenWithALineBreakMakesAHeaderOfItsOwnOnPurpose()
{
    aTokenIsSentByteForByte();
}

void TokenFaultsTest::lineBreaksAroundATokenAreNotPartOfIt_data()
{
    addTokenColumns();
    addTokenSources("both sides", u"\r\n\r\na\r\n"_s, "a");
    addTokenSources("every kind of blank", u"\v\f \u2028\u00a0a\u2029\u0085\t"_s, "a");
}

void TokenFaultsTest::lineBreaksAroundATokenAreNotPartOfIt()
{
    aTokenIsSentByteForByte();
}

QTEST_MAIN(TokenFaultsTest)
#include "token_faults_test.moc"
