// What the window's operations do in states that no user action leads to. New callers may rely on it.
#include "support/client_test.h"

using support::Reply;
using support::WindowInside;

class InnerContractsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEmptyIdentifierIsWrittenAsAnEmptyText()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        const WindowInside inside(*window);
        window->findChild<QLineEdit*>()->setText(u"http://a.example"_s);
        inside.setState({});
        inside.saveState();
        QCOMPARE(home.readState(), "{\n    \"device_id\": \"\",\n    \"origin\": \"http://a.example\"\n}\n");
    }

    void aRequestForTheTokenOfAnUnlinkedDesktopGoesWithoutOne()
    {
        const support::TemporaryHome home;
        support::ScriptedServer server;
        server.reply("/anything", Reply::json(200, "{}"));
        const auto window = support::newClientWindow();
        WindowInside(*window).sendInstances(QUrl(server.origin() + u"/anything"_s));
        QTRY_COMPARE(server.count("/anything"), 1);
        const support::RecordedRequest request = server.requests("/anything").constFirst();
        QCOMPARE(request.header("Accept"), "application/json");
        QVERIFY(!request.hasHeader("Authorization"));
    }

    void withoutItsFieldTheBaseUrlIsTheStoredOne()
    {
        const support::TemporaryHome home;
        const auto window = support::newClientWindow();
        const WindowInside inside(*window);
        inside.setState({.origin = u" stored.example/ "_s, .deviceId = {}, .token = {}});
        QCOMPARE(inside.baseUrlBeforeItsField(), u"https://stored.example"_s);
    }

    void withoutATableNoProjectCanBeOpened()
    {
        support::ClientRun run;
        QVERIFY(run.startSignedIn());
        QVERIFY(run.view().button(u"Open Selected Project")->isEnabled());
        WindowInside(run.window()).updateControlsBeforeTheTable();
        QVERIFY(!run.view().button(u"Open Selected Project")->isEnabled());
        QVERIFY(run.view().button(u"Refresh")->isEnabled());
    }
};

TARNWICK_TEST(InnerContractsTest)
#include "inner_contracts_test.moc"
