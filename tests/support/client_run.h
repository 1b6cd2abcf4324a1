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
 * One run of the client with everything around it: service, home, desktop and, after the start, the window.
 *
 * Unless the test says otherwise, the service replies to every call with a success: the code is TWPC-TEST01, a poll is
 * always pending, the account is Ann's and has the core "core-a" and one project, "Neon".
 */
class ClientRun
{
public:
    ClientRun();
    /// With a service that uses TLS.
    explicit ClientRun(const TlsIdentity& identity);
    ~ClientRun();
    Q_DISABLE_COPY_MOVE(ClientRun)

    /// Sets the base URL for the state file, instead of the server's own.
    void setOrigin(const QString& origin) { m_origin = origin; }

    /// Opens the window of a desktop that is not linked.
    void start();
    /// Opens the window of a desktop that is linked with the token "token-1". Its session check is in flight.
    void startLinked();
    /// Opens the window with the current state file.
    void startStored();
    /// Like startLinked(), and waits until the project list has been loaded. False if it was not.
    bool startSignedIn();

    /// Prepares everything for the call but does not make it. False if that fails.
    bool prepare(Call call);
    /// Makes the call after a prepare(); nothing has been sent yet when it returns. If the reply's body is held, it is
    /// sent after the client has read the head.
    void bringAbout(Call call);

    QWidget& window() { return *m_window; }
    WindowView view() const { return WindowView(*m_window); }
    void destroyWindow() { m_window.reset(); }
    const TemporaryHome& home() const { return m_home; }
    /// A text of the state file's JSON object.
    QString savedText(const QString& key) const;

    void press(QStringView buttonText) const { view().button(buttonText)->click(); }
    /// Presses a button even if it is disabled: the operation itself must be correct then, too.
    void forcePress(QStringView buttonText) const;

    /// The timer that triggers the polls: the only one that is a child of the window itself.
    QTimer* pollTimer() const;
    /// Sends one tick of it now, instead of waiting for 1.5 seconds.
    void tick() const;

    /// Presses "Generate Link Code" and waits until the window shows the code from the service's reply.
    bool showLinkCode(const QString& code, const QString& approveUrl = {});

    /// Shows the code TWPC-1 and makes a poll that gets this reply. An approval starts a session check.
    bool pollWith(const Reply& reply);
    /// Makes the call and waits until the service has received it. It gets no reply until it is released.
    bool holdCall(Call call);

    /// Makes one more request, which is possible in every state, and waits for its reply. Everything that was to be
    /// sent before has arrived by then.
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
