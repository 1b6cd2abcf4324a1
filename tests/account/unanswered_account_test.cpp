#include "app/tarnwick_client_window.h"
#include "support/client_run.h"

#include <QObject>
#include <QRegularExpression>
#include <QTest>

using support::Call;
using support::callPath;
using support::Reply;

/// A service that accepts a request and never answers it. Built with a short transfer timeout.
class UnansweredAccountTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void anUnansweredPollStopsPollingAndKeepsTheCode();
    void anUnansweredSessionCheckSignsOut();
    void anUnansweredLinkRequestCanBeRepeated();

private:
    using Run = support::ClientRun<TarnwickClientWindow>;
};

void UnansweredAccountTest::anUnansweredPollStopsPollingAndKeepsTheCode()
{
    Run run;
    run.start();
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
    run.server.reply(callPath(Call::LinkPoll), Reply::never());
    run.tick();
    QTRY_VERIFY(!run.pollTimer()->isActive());
    QCOMPARE(run.view().status(), u"Operation canceled"_s);
    QCOMPARE(run.view().line(u"Link code")->text(), u"TWPC-1"_s);
}

void UnansweredAccountTest::anUnansweredSessionCheckSignsOut()
{
    Run run;
    run.server.reply(callPath(Call::Session), Reply::never());
    run.startLinked();
    QTRY_COMPARE(run.view().status(), u"Operation canceled"_s);
    QVERIFY(!run.home().stateObject().contains(u"access_token"_s));
    QVERIFY(!run.view().button(u"Unlink")->isEnabled());
}

void UnansweredAccountTest::anUnansweredLinkRequestCanBeRepeated()
{
    Run run;
    run.start();
    run.server.reply(callPath(Call::LinkStart), Reply::never());
    run.press(u"Generate Link Code");
    QVERIFY(!run.view().button(u"Generate Link Code")->isEnabled());
    QTRY_COMPARE(run.view().status(), u"Operation canceled"_s);
    QVERIFY(run.view().button(u"Generate Link Code")->isEnabled());
    QVERIFY(run.showLinkCode(u"TWPC-1"_s));
}

QTEST_MAIN(UnansweredAccountTest)
#include "unanswered_account_test.moc"
