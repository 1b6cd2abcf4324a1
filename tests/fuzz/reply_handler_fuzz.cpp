// Hands any reply to the window: the kind, the status, how the transfer ended, and the body. Everything that the reply
// may change has to be afterwards what the rules make of it.
#include "app/tarnwick_client_window.h"
#include "fuzz/fuzz_application.h"
#include "fuzz/window_sight.h"
#include "support/private_member.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QNetworkReply>

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

void fuzzHandle(TarnwickClientWindow& window, const fuzz::Answer& answer, const QByteArray& body)
{
    if (answer.kind >= 0 && answer.kind < static_cast<int>(taskKindCount)) {
        (window.*memberOf(SetBusy()))(static_cast<TaskKind>(answer.kind), true);
    }
    const auto transferError = answer.transferFailed ? QNetworkReply::UnknownNetworkError : QNetworkReply::NoError;
    (window.*memberOf(HandleReply()))(new InventedReply(answer.kind, answer.status, transferError, body));
}

/// Gives the window a code that is polled for, an account, cores and projects.
void fuzzFurnish(TarnwickClientWindow& window)
{
    const auto succeed = [&window](TaskKind kind, const QByteArray& body) {
        fuzzHandle(window, {.kind = static_cast<int>(kind), .status = 200, .transferFailed = false, .body = {}}, body);
    };
    succeed(TaskKind::LinkStart, R"({"code":"TWPC-0"})");
    (window.*memberOf(SetBusy()))(TaskKind::Instances, true); // the session's success shall not send anything
    succeed(TaskKind::Session, R"({"user":{"display_name":"Bob"},"available_cores":[{"key":"x"},{"key":"y"}]})");
    succeed(TaskKind::Instances, R"({"instances":[{"slug":"one"},{"slug":"two"}]})");
}

fuzz::WindowSight fuzzSight(const TarnwickClientWindow& window)
{
    fuzz::WindowSight sight = fuzz::visibleSight(window);
    sight.token = (window.*memberOf(State())).access_token;
    for (std::size_t kind = 0; kind < taskKindCount; ++kind) {
        sight.busy.at(kind) = (window.*memberOf(IsBusy()))(static_cast<TaskKind>(kind));
    }
    return sight;
}

void fuzzDemandSame(const fuzz::WindowSight& actual, const fuzz::WindowSight& expected)
{
    fuzz::demand(actual.status == expected.status, "the sentence is the right one");
    fuzz::demand(actual.code == expected.code, "the code is the right one");
    fuzz::demand(actual.isPolling == expected.isPolling, "the code is polled for, or not, as it has to be");
    fuzz::demand(actual.token == expected.token, "the token is the right one");
    fuzz::demand(actual.account == expected.account, "the account's texts are the right ones");
    fuzz::demand(actual.cores == expected.cores, "the cores are the right ones");
    fuzz::demand(actual.rows == expected.rows, "there is the right row for each project");
    fuzz::demand(actual.form.words() == expected.form.words(), "the form holds what it has to");
    fuzz::demand(actual.busy == expected.busy, "what has to be under way is, and nothing else");
    fuzz::demand(actual.buttons == fuzz::usableButtons(expected), "the right buttons can be pressed");
}

void fuzzSettle(const TarnwickClientWindow& window)
{
    while (window.findChild<QNetworkReply*>() != nullptr) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    constexpr std::size_t headSize = 4;
    if (size < headSize) {
        return -1;
    }
    // The head is a digit of a kind, or a letter of one whose transfer failed, and three digits of a status, or
    // whatever is there instead: seeds can be typed.
    const bool transferFailed = data[0] >= 'A';
    const int kind = data[0] - (transferFailed ? 'A' : '0');
    const int status = (data[1] - '0') * 100 + (data[2] - '0') * 10 + (data[3] - '0');
    const QByteArray body(reinterpret_cast<const char*>(data) + headSize, static_cast<qsizetype>(size - headSize));
    const fuzz::Answer answer{.kind = kind,
                              .status = status,
                              .transferFailed = transferFailed,
                              .body = QJsonDocument::fromJson(body).object()};

    for (const bool isFurnished : {false, true}) {
        TarnwickClientWindow& window = fuzzWindow();
        if (isFurnished) {
            fuzzFurnish(window);
        }
        support::fillCreationForm(support::WindowView(window));
        const fuzz::WindowSight before = fuzzSight(window);
        fuzzHandle(window, answer, body);
        fuzzDemandSame(fuzzSight(window), fuzz::sightAfter(before, answer));
        fuzzSettle(window);
        fuzz::demand(fuzzSight(window).busy == std::array<bool, taskKindCount>{}, "nothing stays busy");
    }
    return 0;
}
