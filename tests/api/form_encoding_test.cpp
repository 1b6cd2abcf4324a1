// How a form's texts are encoded in the request.
#include "support/client_test.h"

using support::Call;
using support::Reply;

class FormEncodingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A failed creation keeps the form and the account, so one window is enough for all rows.
        run.server.reply(callPath(Call::CreateInstance), Reply::empty(500));
        QVERIFY(run.startSignedIn());
    }

    void lineTextsAreEncoded_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("encoded");
        QTest::newRow("letters, digits, unreserved") << u"aZ09-._~"_s << QByteArray("aZ09-._~");
        QTest::newRow("blanks inside") << u"Neon  Burst"_s << QByteArray("Neon%20%20Burst");
        // Intended: a service that decodes forms reads it as a space, and this client has always sent it so.
        QTest::newRow("plus") << u"a+b"_s << QByteArray("a+b");
        // Intended, too: read as an escape of the letter.
        QTest::newRow("percent and two digits") << u"%41"_s << QByteArray("A");
        QTest::newRow("lower-case escape") << u"%c3%a4"_s << QByteArray("%C3%A4");
        QTest::newRow("lone percent") << u"100%"_s << QByteArray("100%25");
        QTest::newRow("percent and no digits") << u"%zz"_s << QByteArray("%25zz");
        QTest::newRow("ampersand") << u"a&b"_s << QByteArray("a%26b");
        QTest::newRow("equals sign") << u"a=b"_s << QByteArray("a%3Db");
        QTest::newRow("hash") << u"#1"_s << QByteArray("%231");
        QTest::newRow("delimiters") << u"/?:@!$'()*,;"_s << QByteArray("/?:@!$'()*,;");
        QTest::newRow("brackets and quotes")
            << u"[\"<a>\"]{\\|}^`"_s << QByteArray("[%22%3Ca%3E%22]%7B%5C%7C%7D%5E%60");
        QTest::newRow("umlauts") << u"größe"_s << QByteArray("gr%C3%B6%C3%9Fe");
        QTest::newRow("emoji") << u"🔥"_s << QByteArray("%F0%9F%94%A5");
        QTest::newRow("tab inside") << u"a\tb"_s << QByteArray("a%09b");
    }

    void lineTextsAreEncoded()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, encoded);
        run.view().line(u"GDPS Name")->setText(text);
        const QByteArray body = bodyOfNextCreation();
        QCOMPARE(body.first(body.indexOf("&description=")), "display_name=" + encoded);
    }

    void aLargeTextArrivesWhole()
    {
        // More than any buffer on the way can hold.
        constexpr qsizetype count = 400000;
        run.view().line(u"GDPS Name")->setText(u"x"_s);
        run.view().description()->setPlainText(u"ä"_s.repeated(count));
        const QByteArray body = bodyOfNextCreation();
        QVERIFY(
            body.startsWith("display_name=x&description=" + QByteArray("%C3%A4").repeated(count) + "&emoji_badge="));
        QCOMPARE(run.server.requests().constFirst().header("Content-Length"), QByteArray::number(body.size()));
    }

private:
    /// Presses the button and returns the body that the service received.
    QByteArray bodyOfNextCreation()
    {
        run.server.forgetRequests();
        run.press(u"Create GDPS");
        const bool isHandled = support::waitFor([this] { return run.view().button(u"Create GDPS")->isEnabled(); });
        return isHandled ? run.server.requests().constFirst().body : QByteArray("nothing has come");
    }

    support::ClientRun run;
};

TARNWICK_TEST(FormEncodingTest)
#include "form_encoding_test.moc"
