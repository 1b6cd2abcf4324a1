// A start with a stored token: the session is checked at once.
#include "support/client_test.h"

#include <QEvent>

using support::Call;
using support::ClientRun;

namespace {

/// Remembers the text of the status line when it was first painted.
class FirstPaintWatcher : public QObject
{
public:
    explicit FirstPaintWatcher(QLabel* label) : watched(label) { label->installEventFilter(this); }

    QString textAtFirstPaint;

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && textAtFirstPaint.isNull()) {
            textAtFirstPaint = watched->text();
        }
        return QObject::eventFilter(object, event);
    }

private:
    QLabel* watched;
};

} // namespace

class StartUpSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exactlyOneCheckIsInFlightWhenTheWindowIsFirstShown()
    {
        ClientRun run;
        run.server.hold(callPath(Call::Session));
        run.startLinked();
        const FirstPaintWatcher watcher(run.view().label(u"StatusText"_s));
        run.window().show();
        QVERIFY(QTest::qWaitForWindowExposed(&run.window()));
        QTRY_COMPARE(watcher.textAtFirstPaint, u"Checking linked Tarnwick session..."_s);
        QTRY_COMPARE(run.server.heldCount(callPath(Call::Session)), 1);
        QCOMPARE(run.server.count(), 1);
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
