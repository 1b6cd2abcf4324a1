#pragma once

#include "scripted_server.h"
#include "temporary_home.h"
#include "window_view.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <memory>

namespace support {

/// The client's five requests, told apart by what a person does to bring them about.
enum class Call { LinkStart, LinkPoll, Session, Instances, CreateInstance };

/// Every one of them.
QList<Call> allCalls();
/// A plain name, for data rows.
const char* callName(Call call);
/// The path that the call goes to.
QByteArray callPath(Call call);

/// The bytes of a state file. A client that finds a token in it starts linked.
QByteArray storedState(const QString& origin, const QString& token = {},
                       const QString& deviceId = QStringLiteral("desk-1"));

/// One run of the client against a scripted service, in a home of its own. The service answers every call
/// well until the test tells it otherwise: the code is TWPC-TEST01, no poll is ever approved, the account is
/// Ann's and has the core "core-a" and one project, "Neon".
class ServiceBench
{
public:
    using WindowMaker = std::function<std::unique_ptr<QWidget>()>;

    /// The base URL is the server's origin unless another one is named.
    ServiceBench(ScriptedServer& server, WindowMaker makeWindow, const QString& origin = {});
    ~ServiceBench() = default;
    Q_DISABLE_COPY_MOVE(ServiceBench)

    /// Constructs the window, linked by the token "token-1" or not linked at all.
    void startUnlinked();
    void startLinked();
    /// Constructs it on whatever the state file holds.
    void startStored();
    /// Constructs the window linked and waits until its project list has come. False when it does not come.
    bool settleLinked();

    /// Goes up to the point at which nothing but the call itself is missing. False when that fails.
    bool prepare(Call call);
    /// Causes the call after a prepare(); nothing has been sent yet when it returns. The body of an answer that is
    /// held comes once the client is done with the head.
    void bringAbout(Call call);
    /// Delivers one tick of the poll timer, which would come by itself a second and a half later.
    void tickPollTimer();

    QWidget& window() { return *m_window; }
    WindowView view() const { return WindowView(*m_window); }
    const TemporaryHome& home() const { return m_home; }
    void destroyWindow() { m_window.reset(); }

private:
    void answerEverythingWell();
    void sendHeldBodies();

    TemporaryHome m_home;
    ScriptedServer& m_server;
    WindowMaker m_makeWindow;
    QString m_origin;
    std::unique_ptr<ScriptedServer> m_bystander;
    std::unique_ptr<QWidget> m_window;
};

} // namespace support
