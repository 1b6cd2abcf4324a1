// Hands any reply to the window: the kind, the status, how the transfer ended, and the body.
#include "app/tarnwick_client_window.h"
#include "fuzz/fuzz_application.h"
#include "support/private_member.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkReply>
#include <QTableWidget>

#include <algorithm>
#include <utility>

struct HandleReply
{
    using Type = void (TarnwickClientWindow::*)(QNetworkReply*);
    friend Type memberOf(HandleReply tag);
};
struct SetBusy
{
    using Type = void (TarnwickClientWindow::*)(TaskKind, bool);
    friend Type memberOf(SetBusy tag);
};
struct IsBusy
{
    using Type = bool (TarnwickClientWindow::*)(TaskKind) const;
    friend Type memberOf(IsBusy tag);
};
struct Unlink
{
    using Type = void (TarnwickClientWindow::*)();
    friend Type memberOf(Unlink tag);
};
struct State
{
    using Type = ClientState TarnwickClientWindow::*;
    friend Type memberOf(State tag);
};

template struct PrivateMember<HandleReply, &TarnwickClientWindow::handleReply>;
template struct PrivateMember<SetBusy, &TarnwickClientWindow::setBusy>;
template struct PrivateMember<IsBusy, &TarnwickClientWindow::isBusy>;
template struct PrivateMember<Unlink, &TarnwickClientWindow::unlink>;
template struct PrivateMember<State, &TarnwickClientWindow::state>;

namespace {

/// A finished reply that was never on any wire.
class InventedReply : public QNetworkReply
{
public:
    InventedReply(int kind, int status, NetworkError transferError, QByteArray content) : body(std::move(content))
    {
        setProperty("taskKind", kind);
        if (status != 0) {
            setAttribute(QNetworkRequest::HttpStatusCodeAttribute, status);
        }
        open(QIODevice::ReadOnly); // forgets an error
        if (transferError != NoError) {
            setError(transferError, QStringLiteral("transfer error"));
        }
        setFinished(true);
    }

    void abort() override {}
    qint64 bytesAvailable() const override { return body.size() - position + QNetworkReply::bytesAvailable(); }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        const qint64 count = std::min(maxSize, body.size() - position);
        std::copy_n(body.constData() + position, count, data);
        position += count;
        return count > 0 ? count : -1;
    }

private:
    QByteArray body;
    qint64 position = 0;
};

/// The text that a failure has to show; empty for a success.
QString fuzzErrorText(int status, bool transferFailed, const QJsonObject& object)
{
    if (status == 202 || (status < 400 && !transferFailed)) {
        return {};
    }
    const QString message = object.value(u"message"_s).toString();
    QString words = message.isEmpty() ? object.value(u"error"_s).toString() : message;
    if (!words.isEmpty()) {
        return words;
    }
    return status >= 400 ? u"Tarnwick returned HTTP %1."_s.arg(status) : u"transfer error"_s;
}

/// A linked window that waits for nothing. What it sends goes nowhere: its base URL has no host.
TarnwickClientWindow& fuzzWindow()
{
    static const fuzz::FuzzApplication application;
    static auto* window = [] {
        auto* made = new TarnwickClientWindow;
        const auto fields = made->findChildren<QLineEdit*>();
        for (QLineEdit* field : fields) {
            if (field->placeholderText().startsWith(u"https://"_s)) {
                field->setText(u"http://"_s);
            }
        }
        return made;
    }();
    (window->*memberOf(Unlink()))();
    (window->*memberOf(State())).access_token = u"token"_s;
    return *window;
}

void fuzzSettle(const TarnwickClientWindow& window)
{
    while (window.findChild<QNetworkReply*>() != nullptr) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    constexpr std::size_t headSize = 4;
    if (size < headSize) {
        return -1;
    }
    // The head is a digit, or whatever is there instead, and three digits of a status: seeds can be typed.
    const int kind = data[0] - '0';
    const bool transferFailed = data[1] >= 'A';
    const int status = transferFailed ? 0 : (data[1] - '0') * 100 + (data[2] - '0') * 10 + (data[3] - '0');
    const QByteArray body(reinterpret_cast<const char*>(data) + headSize, static_cast<qsizetype>(size - headSize));
    const bool isKnown = kind >= 0 && kind < static_cast<int>(taskKindCount);

    TarnwickClientWindow& window = fuzzWindow();
    if (isKnown) {
        (window.*memberOf(SetBusy()))(static_cast<TaskKind>(kind), true);
    }
    auto* status_line = window.findChild<QLabel*>(u"StatusText"_s);
    const QString before = status_line->text();
    auto* reply = new InventedReply(kind, status,
                                    transferFailed ? QNetworkReply::UnknownNetworkError : QNetworkReply::NoError, body);
    (window.*memberOf(HandleReply()))(reply);

    const QJsonObject object = QJsonDocument::fromJson(body).object();
    const QString errorText = fuzzErrorText(status, transferFailed, object);
    if (!isKnown) {
        fuzz::demand(status_line->text() == before, "an unknown kind changes nothing");
    } else if (!errorText.isEmpty()) {
        fuzz::demand(status_line->text() == errorText, "a failure shows its text");
        fuzz::demand(!(window.*memberOf(IsBusy()))(static_cast<TaskKind>(kind)), "the kind is free again");
    } else if (static_cast<TaskKind>(kind) == TaskKind::Instances) {
        const auto rows = object.value(u"instances"_s).toArray().size();
        fuzz::demand(window.findChild<QTableWidget*>()->rowCount() == rows, "a row for each project");
    }
    fuzzSettle(window);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (int each = 0; each < static_cast<int>(taskKindCount); ++each) {
        fuzz::demand(!(window.*memberOf(IsBusy()))(static_cast<TaskKind>(each)), "nothing stays busy");
    }
    return 0;
}
