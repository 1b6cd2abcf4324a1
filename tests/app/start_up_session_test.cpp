// A start with a stored token: the session is checked at once.
#include "support/client_test.h"

#include <QApplication>
#include <QEvent>

using support::Call;
using support::ClientRun;

namespace {

/// Remembers the text of the status line when "Unlink" was disabled, also during the window's construction.
class UnlinkWatcher : public QObject
{
public:
    UnlinkWatcher() { qApp->installEventFilter(this); }

    QString textWhenDisabled;

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        const auto* button = qobject_cast<QPushButton*>(object);
        if (event->type() == QEvent::EnabledChange && button != nullptr && button->text() == u"Unlink"_s) {
            textWhenDisabled = support::WindowView(*button->window()).status();
        }
        return false;
    }
};

} // namespace

class StartUpSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theCheckIsUnderWayBeforeTheWindowIsShown()
    {
        ClientRun run;
        run.server.hold(callPath(Call::Session));
        const UnlinkWatcher watcher;
        run.startLinked();
        QCOMPARE(watcher.textWhenDisabled, u"Checking linked Tarnwick session..."_s);
        QCOMPARE(run.view().status(), watcher.textWhenDisabled);
        // A check in flight disables this button and not the other one.
        QVERIFY(!run.view().button(u"Unlink")->isEnabled());
        QVERIFY(run.view().button(u"Refresh")->isEnabled());
        QCOMPARE(run.view().account().constFirst(), u"Not linked yet"_s);

        // The check needs no visible window, only the event loop.
        QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
        QVERIFY(!run.window().isVisible());
    }

    void exactlyOneCheckIsInFlightWhenTheWindowIsFirstShown()
    {
        ClientRun run;
        run.server.hold(callPath(Call::Session));
        run.startLinked();
        run.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
        QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
        QCOMPARE(run.server.count(), 1);
        QCOMPARE(run.view().status(), u"Checking linked Tarnwick session..."_s);
        const support::RecordedRequest request = run.server.requests().constFirst();
        QCOMPARE(request.method, "GET");
        QCOMPARE(request.header("Authorization"), "Bearer token-1");

        run.server.release(callPath(Call::Session));
        QTRY_COMPARE(run.view().status(), u"Loaded 1 Tarnwick project(s)."_s);
        QCOMPARE(run.server.count(callPath(Call::Session)), 1);
        QCOMPARE(run.server.count(), 2);
    }
};

TARNWICK_TEST(StartUpSessionTest)
#include "start_up_session_test.moc"
