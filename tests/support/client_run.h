#pragma once

#include "call.h"
#include "opened_urls.h"
#include "scripted_server.h"
#include "temporary_home.h"
#include "window_view.h"

#include <QString>

#include <memory>

class QTimer;

namespace support {

/**
 * One run of the client with everything around it: service, home, desktop and, once started, the window.
 *
 * The service answers every call well until the test tells it otherwise: the code is TWPC-TEST01, no poll is ever
 * approved, the account is Ann's and has the core "core-a" and one project, "Neon".
 */
class ClientRun
{
public:
    ClientRun();
    /// A service that is reached over TLS.
    explicit ClientRun(const TlsIdentity& identity);
    ~ClientRun();
    Q_DISABLE_COPY_MOVE(ClientRun)

    /// The base URL that the state file names from now on, instead of the server's own.
    void setOrigin(const QString& origin) { m_origin = origin; }

    /// Opens the window of a desktop that is not linked.
    void start();
    /// Opens the window of a desktop that is linked by the token "token-1". Its session check is on its way.
    void startLinked();
    /// Opens the window on whatever the state file holds.
    void startStored();
    /// The same as a linked one, and waits until the project list has been loaded. False when it is not.
    bool startSignedIn();

    /// Goes up to the point at which nothing but the call itself is missing. False when that fails.
    bool prepare(Call call);
    /// Causes the call after a prepare(); nothing has been sent yet when it returns. The body of an answer that is
    /// held comes once the client is done with the head.
    void bringAbout(Call call);

    QWidget& window() { return *m_window; }
    WindowView view() const { return WindowView(*m_window); }
    void destroyWindow() { m_window.reset(); }
    const TemporaryHome& home() const { return m_home; }
    /// A text of the state file's JSON object.
    QString savedText(const QString& key) const;

    void press(QStringView buttonText) const { view().button(buttonText)->click(); }
    /// Presses a button whether it is enabled or not: what it does by itself must hold all the same.
    void forcePress(QStringView buttonText) const;

    /// The timer that drives the link poll: the only one that belongs to the window itself.
    QTimer* pollTimer() const;
    /// Delivers one tick of it now, which would come by itself a second and a half later.
    void tick() const;

    /// Presses "Generate Link Code" and waits until the window shows the code that the service hands out.
    bool showLinkCode(const QString& code, const QString& approveUrl = {});

    /// Shows the code TWPC-1 and makes a poll that is answered so; an approval brings about a session check.
    bool pollWith(const Reply& reply);
    /// Brings the call about and waits until the service has it. It stays unanswered until it is released.
    bool holdCall(Call call);

    /// Has one more request made, which is possible in every state, and waits for its answer. Whatever was to
    /// be sent before is with the service by then.
    bool markerComesBack();

    ScriptedServer server;
    OpenedUrls opened;

private:
    void answerEverythingWell();
    void sendHeldBodies();

    TemporaryHome m_home;
    QString m_origin;
    std::unique_ptr<ScriptedServer> m_bystander;
    std::unique_ptr<QWidget> m_window;
};

} // namespace support
