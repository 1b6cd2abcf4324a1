// Every text and address with the service's host has the host that the client was built for. This test is in the
// program that is built for another host.
#include "support/client_test.h"

#include <QLabel>

#include <algorithm>

class PublicHostTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNewClientNamesItEverywhere()
    {
        support::ClientRun run;
        run.startStored();
        const support::WindowView view = run.view();
        QCOMPARE(view.line(u"Tarnwick URL")->text(), u"https://other.example"_s);
        QCOMPARE(view.line(u"Tarnwick URL")->placeholderText(), u"https://other.example"_s);
        const auto labels = run.window().findChildren<QLabel*>();
        const auto count = std::count_if(labels.begin(), labels.end(), [](const QLabel* label) {
            return label->text() == u"Generate a one-time link code, then approve it at other.example/link/pc."_s;
        });
        QCOMPARE(count, 1);
        run.press(u"Open Public Pairing Page");
        QCOMPARE(run.opened.urls(), QList<QUrl>{QUrl(u"https://other.example/link/pc"_s)});
        run.window().close();
        QCOMPARE(run.savedText(u"origin"_s), u"https://other.example"_s);
    }

    void pairingNamesIt()
    {
        support::ClientRun run;
        run.start();
        QVERIFY(run.showLinkCode(u"TWPC-1"_s));
        QCOMPARE(run.view().status(),
                 u"Code TWPC-1 is ready. Approve it at other.example/link/pc before it expires."_s);
        run.tick();
        QTRY_COMPARE(run.view().status(), u"Waiting for approval at other.example/link/pc."_s);
    }
};

TARNWICK_TEST(PublicHostTest)
#include "public_host_test.moc"
