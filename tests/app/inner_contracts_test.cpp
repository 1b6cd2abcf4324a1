// What two operations of the window do in states that nothing a user does leads to. Whoever calls them next may rely on
// it all the same.
#include "app/tarnwick_client_window.h"

#include "support/private_member.h"
#include "support/scripted_server.h"
#include "support/temporary_home.h"

#include <QTest>

using support::Reply;

struct ContractSaveState
{
    using Type = void (TarnwickClientWindow::*)();
    friend Type memberOf(ContractSaveState tag);
};
struct ContractSendRequest
{
    using Type = void (TarnwickClientWindow::*)(TaskKind, const QUrl&, const FormFields&, bool);
    friend Type memberOf(ContractSendRequest tag);
};
struct ContractState
{
    using Type = ClientState TarnwickClientWindow::*;
    friend Type memberOf(ContractState tag);
};

template struct PrivateMember<ContractSaveState, &TarnwickClientWindow::saveState>;
template struct PrivateMember<ContractSendRequest, &TarnwickClientWindow::sendRequest>;
template struct PrivateMember<ContractState, &TarnwickClientWindow::state>;

class InnerContractsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEmptyIdentifierIsWrittenAsAnEmptyText();
    void aRequestForTheTokenOfAnUnlinkedDesktopGoesWithoutOne();
};

void InnerContractsTest::anEmptyIdentifierIsWrittenAsAnEmptyText()
{
    const support::TemporaryHome home;
    home.writeState(R"({"origin":"http://a.example"})");
    TarnwickClientWindow window;
    (window.*memberOf(ContractState())).device_id.clear();
    (window.*memberOf(ContractSaveState()))();
    QCOMPARE(home.readState(), "{\n    \"device_id\": \"\",\n    \"origin\": \"http://a.example\"\n}\n");
}

void InnerContractsTest::aRequestForTheTokenOfAnUnlinkedDesktopGoesWithoutOne()
{
    const support::TemporaryHome home;
    support::ScriptedServer server;
    server.reply("/anything", Reply::json(200, "{}"));
    TarnwickClientWindow window;
    const QUrl url(server.origin() + u"/anything"_s);
    (window.*memberOf(ContractSendRequest()))(TaskKind::Instances, url, {}, true);
    QTRY_COMPARE(server.count("/anything"), 1);
    const support::RecordedRequest request = server.requests("/anything").constFirst();
    QVERIFY(request.header("Accept") == "application/json");
    QVERIFY(!request.hasHeader("Authorization"));
}

QTEST_MAIN(InnerContractsTest)
#include "inner_contracts_test.moc"
