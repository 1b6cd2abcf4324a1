#include "client_window.h"

#include "app/tarnwick_client_window.h"

#include <QScopedValueRollback>

#include <tuple>
#include <type_traits>

static_assert(std::is_convertible_v<TarnwickClientWindow*, QMainWindow*>);
static_assert(std::has_virtual_destructor_v<TarnwickClientWindow>);
static_assert(!std::is_copy_constructible_v<TarnwickClientWindow>);

namespace {

// Access is not checked in an explicit instantiation, so this one names private members from outside the class.
struct ClientInside
{
    friend constexpr auto clientMembers(ClientInside /*tag*/);
};

template <typename Tag, auto... members>
struct ExposedMembers
{
    friend constexpr auto clientMembers(Tag /*tag*/) { return std::make_tuple(members...); }
};

template struct ExposedMembers<
    ClientInside, &TarnwickClientWindow::state, &TarnwickClientWindow::loadState, &TarnwickClientWindow::saveState,
    &TarnwickClientWindow::unlink, &TarnwickClientWindow::isBusy, &TarnwickClientWindow::setBusy,
    &TarnwickClientWindow::handleReply, &TarnwickClientWindow::sendRequest, &TarnwickClientWindow::baseUrl,
    &TarnwickClientWindow::updateControls, &TarnwickClientWindow::originEdit, &TarnwickClientWindow::projectTable>;

const auto [clientState, clientLoadState, clientSaveState, clientUnlink, clientIsBusy, clientSetBusy, clientHandleReply,
            clientSendRequest, clientBaseUrl, clientUpdateControls, clientOriginEdit, clientProjectTable] =
    clientMembers(ClientInside());

TarnwickClientWindow& clientOf(QWidget& window)
{
    return dynamic_cast<TarnwickClientWindow&>(window);
}

} // namespace

namespace support {

std::unique_ptr<QWidget> newClientWindow()
{
    return std::make_unique<TarnwickClientWindow>();
}

SavedTexts WindowInside::state() const
{
    const ClientState& state = clientOf(m_window).*clientState;
    return {.origin = state.origin, .deviceId = state.device_id, .token = state.access_token};
}

void WindowInside::setState(const SavedTexts& texts) const
{
    clientOf(m_window).*
        clientState = {.origin = texts.origin, .device_id = texts.deviceId, .access_token = texts.token};
}

void WindowInside::loadState() const
{
    (clientOf(m_window).*clientLoadState)();
}

void WindowInside::saveState() const
{
    (clientOf(m_window).*clientSaveState)();
}

void WindowInside::unlink() const
{
    (clientOf(m_window).*clientUnlink)();
}

bool WindowInside::isBusy(int kind) const
{
    return (clientOf(m_window).*clientIsBusy)(static_cast<TaskKind>(kind));
}

void WindowInside::setBusy(int kind, bool busy) const
{
    (clientOf(m_window).*clientSetBusy)(static_cast<TaskKind>(kind), busy);
}

void WindowInside::handleReply(QNetworkReply* reply) const
{
    (clientOf(m_window).*clientHandleReply)(reply);
}

void WindowInside::sendInstances(const QUrl& url) const
{
    (clientOf(m_window).*clientSendRequest)(TaskKind::Instances, url, {}, true);
}

QString WindowInside::baseUrlBeforeItsField() const
{
    const QScopedValueRollback<QLineEdit*> notYet(clientOf(m_window).*clientOriginEdit, nullptr);
    return (clientOf(m_window).*clientBaseUrl)();
}

void WindowInside::updateControlsBeforeTheTable() const
{
    const QScopedValueRollback<QTableWidget*> notYet(clientOf(m_window).*clientProjectTable, nullptr);
    (clientOf(m_window).*clientUpdateControls)();
}

} // namespace support
