// How the texts of a form look on the wire.
#include "app/tarnwick_client_window.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <QTest>
#include <QUrl>
#include <QUrlQuery>

#include <memory>

using support::Call;
using support::Reply;

class FormEncodingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void lineTextsAreEncoded_data();
    void lineTextsAreEncoded();
    void descriptionsAreEncoded_data();
    void descriptionsAreEncoded();
    void theWholeFormKeepsItsOrder();
    void aLargeTextArrivesWhole();

private:
    /// Presses the button and gives the body that has come in.
    QByteArray bodyOfNextCreation();

    std::unique_ptr<support::MessageCatcher> messages;
    std::unique_ptr<support::ScriptedServer> server;
    std::unique_ptr<support::ServiceBench> bench;
};

void FormEncodingTest::initTestCase()
{
    server = std::make_unique<support::ScriptedServer>();
    bench = std::make_unique<support::ServiceBench>(*server, [] { return std::make_unique<TarnwickClientWindow>(); });
    // A failed creation keeps the form and the account, so one window does for all.
    server->reply(callPath(Call::CreateInstance), Reply::empty(500));
    QVERIFY(bench->settleLinked());
}

void FormEncodingTest::init()
{
    messages = std::make_unique<support::MessageCatcher>();
}

void FormEncodingTest::cleanup()
{
    QCOMPARE(messages->messages(), QStringList());
    messages.reset();
}

void FormEncodingTest::cleanupTestCase()
{
    bench.reset();
}

QByteArray FormEncodingTest::bodyOfNextCreation()
{
    server->forgetRequests();
    bench->bringAbout(Call::CreateInstance);
    const bool hasCome = QTest::qWaitFor([this] { return server->count(callPath(Call::CreateInstance)) == 1; });
    const bool isHandled = QTest::qWaitFor([this] { return bench->view().button(u"Create GDPS")->isEnabled(); });
    return hasCome && isHandled ? server->requests().constFirst().body : QByteArray("nothing has come");
}

void FormEncodingTest::lineTextsAreEncoded_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("encoded");
    QTest::newRow("letters, digits, unreserved") << u"aZ09-._~"_s << QByteArray("aZ09-._~");
    QTest::newRow("blanks inside") << u"Neon  Burst"_s << QByteArray("Neon%20%20Burst");
    // Sent as it is. A service that reads forms takes it for a blank; that is how this client has always done.
    QTest::newRow("plus") << u"a+b"_s << QByteArray("a+b");
    // Taken for an escape of the letter.
    QTest::newRow("percent and two digits") << u"%41"_s << QByteArray("A");
    QTest::newRow("lower-case escape") << u"%c3%a4"_s << QByteArray("%C3%A4");
    QTest::newRow("lone percent") << u"100%"_s << QByteArray("100%25");
    QTest::newRow("percent and no digits") << u"%zz"_s << QByteArray("%25zz");
    QTest::newRow("ampersand") << u"a&b"_s << QByteArray("a%26b");
    QTest::newRow("equals sign") << u"a=b"_s << QByteArray("a%3Db");
    QTest::newRow("hash") << u"#1"_s << QByteArray("%231");
    QTest::newRow("delimiters") << u"/?:@!$'()*,;"_s << QByteArray("/?:@!$'()*,;");
    QTest::newRow("brackets and quotes") << u"[\"<a>\"]{\\|}^`"_s << QByteArray("[%22%3Ca%3E%22]%7B%5C%7C%7D%5E%60");
    QTest::newRow("umlauts") << u"größe"_s << QByteArray("gr%C3%B6%C3%9Fe");
    QTest::newRow("emoji") << u"🔥"_s << QByteArray("%F0%9F%94%A5");
    QTest::newRow("right to left") << u"שלום"_s << QByteArray("%D7%A9%D7%9C%D7%95%D7%9D");
    QTest::newRow("tab inside") << u"a\tb"_s << QByteArray("a%09b");
}

void FormEncodingTest::lineTextsAreEncoded()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, encoded);
    bench->view().line(u"GDPS Name")->setText(text);
    const QByteArray body = bodyOfNextCreation();
    QCOMPARE(body.first(body.indexOf("&description=")), "display_name=" + encoded);

    QUrlQuery rendered;
    rendered.addQueryItem(u"display_name"_s, text);
    QCOMPARE(encoded, rendered.toString(QUrl::FullyEncoded).toUtf8().mid(13));
}

void FormEncodingTest::descriptionsAreEncoded_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("encoded");
    QTest::newRow("empty") << QString() << QByteArray();
    QTest::newRow("lines") << u"one\ntwo"_s << QByteArray("one%0Atwo");
    QTest::newRow("empty line") << u"one\n\ntwo"_s << QByteArray("one%0A%0Atwo");
    QTest::newRow("carriage returns") << u"one\r\ntwo"_s << QByteArray("one%0Atwo");
    QTest::newRow("lines with delimiters") << u"a=1&\nb=2"_s << QByteArray("a%3D1%26%0Ab%3D2");
    QTest::newRow("tab") << u"a\tb"_s << QByteArray("a%09b");
}

void FormEncodingTest::descriptionsAreEncoded()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, encoded);
    bench->view().line(u"GDPS Name")->setText(u"x"_s);
    bench->view().description()->setPlainText(text);
    const QByteArray body = bodyOfNextCreation();
    QCOMPARE(body.first(body.indexOf("&emoji_badge=")), "display_name=x&description=" + encoded);
}

void FormEncodingTest::theWholeFormKeepsItsOrder()
{
    const support::WindowView view = bench->view();
    view.line(u"GDPS Name")->setText(u" A&B "_s);
    view.description()->setPlainText(u"b"_s);
    view.line(u"Emoji")->setText(u"⭐"_s);
    view.line(u"Accent")->setText(u"#0f0"_s);
    view.line(u"Tags")->setText(u" x, y=z "_s);
    view.combo(u"Preset")->setCurrentText(u"hardcore"_s);
    view.checkBox(u"Show this GDPS in the public recent list")->setChecked(true);
    view.checkBox(u"Start this GDPS in maintenance mode")->setChecked(true);
    QCOMPARE(bodyOfNextCreation(),
             "display_name=A%26B&description=b&emoji_badge=%E2%AD%90&accent_color=%230f0&tags=x,%20y%3Dz"
             "&preset_name=hardcore&core_key=core-a&public_listing=true&maintenance_mode=true");
}

void FormEncodingTest::aLargeTextArrivesWhole()
{
    // More than any buffer on the way holds at once.
    constexpr qsizetype count = 400000;
    bench->view().line(u"GDPS Name")->setText(u"x"_s);
    bench->view().description()->setPlainText(u"ä"_s.repeated(count));
    const QByteArray body = bodyOfNextCreation();
    const QByteArray start = "display_name=x&description=";
    QVERIFY(body.startsWith(start));
    QVERIFY(body.mid(start.size(), 6 * count) == QByteArray("%C3%A4").repeated(count));
    QVERIFY(body.mid(start.size() + 6 * count).startsWith("&emoji_badge="));
    QCOMPARE(server->requests().constFirst().header("Content-Length"), QByteArray::number(body.size()));
}

QTEST_MAIN(FormEncodingTest)
#include "form_encoding_test.moc"
