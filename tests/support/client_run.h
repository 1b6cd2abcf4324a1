#pragma once

#include "opened_urls.h"
#include "scripted_server.h"
#include "service_bench.h"
#include "temporary_home.h"
#include "window_view.h"

#include <QJsonObject>
#include <QString>
#include <QTest>
#include <QTimer>

#include <memory>

namespace support {

/**
 * One run of the client with everything around it: service, home, desktop and, once started, the window.
 *
 * The window's class is a parameter because it exists in the test's translation unit only.
 */
template <typename Window>
class ClientRun
{
public:
    ClientRun() : bench(server, [] { return std::make_unique<Window>(); }) {}

    /// Opens the window of a desktop that is not linked.
    void start() { bench.startUnlinked(); }
    /// Opens the window of a linked desktop. Its session check is on its way.
    void startLinked() { bench.startLinked(); }
    /// Opens the window on whatever the state file holds.
    void startStored() { bench.startStored(); }
    /// The same as a linked one, and waits until the project list has been loaded.
    bool startSignedIn()
    {
        bench.startLinked();
        return QTest::qWaitFor([this] { return view().status().startsWith(QStringLiteral("Loaded ")); });
    }

    QWidget& window() { return bench.window(); }
    WindowView view() const { return bench.view(); }
    const TemporaryHome& home() const { return bench.home(); }
    QString savedText(const QString& key) const { return home().stateObject().value(key).toString(); }

    void press(QStringView buttonText) const { view().button(buttonText)->click(); }
    /// Presses a button whether it is enabled or not: what it does by itself must hold all the same.
    void forcePress(QStringView buttonText) const
    {
        view().button(buttonText)->setEnabled(true);
        press(buttonText);
    }

    /// The timer that drives the link poll: the only one that belongs to the window itself.
    QTimer* pollTimer()
    {
        const QWidget& owner = window();
        const auto timers = owner.findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
        return timers.size() == 1 ? timers.constFirst() : nullptr;
    }
    /// One tick of it, now.
    void tick() { bench.tickPollTimer(); }

    /// Presses "Generate Link Code" and waits until the window shows the code that the service hands out.
    bool showLinkCode(const QString& code, const QString& approveUrl = {})
    {
        server.reply(
            callPath(Call::LinkStart),
            Reply::json(200, QJsonObject{{QStringLiteral("code"), code}, {QStringLiteral("approve_url"), approveUrl}}));
        press(u"Generate Link Code");
        return QTest::qWaitFor(
            [this, &code] { return view().status().startsWith(QStringLiteral("Code %1 is ready.").arg(code)); });
    }

    /// Has one more request made, which is possible in every state, and waits for its answer. Whatever was to
    /// be sent before is with the service by then.
    bool markerComesBack()
    {
        const QString marker = QStringLiteral("marker");
        server.reply(callPath(Call::LinkStart), Reply::json(500, QJsonObject{{QStringLiteral("message"), marker}}));
        press(u"Generate Link Code");
        return QTest::qWaitFor([this, &marker] { return view().status() == marker; });
    }

    ScriptedServer server;
    OpenedUrls opened;

private:
    ServiceBench bench;
};

} // namespace support
