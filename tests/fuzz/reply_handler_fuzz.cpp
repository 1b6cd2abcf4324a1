// Passes any reply to the window: the kind, the status, how the transfer ended, and the body. Afterwards, everything
// that a reply may change must be as the rules say.
#include "fuzz/fuzz_application.h"
#include "fuzz/invented_answer.h"
#include "support/client_window.h"
#include "support/creation_form.h"

#include <QJsonDocument>
#include <QNetworkReply>

#include <algorithm>
#include <utility>

namespace {

using fuzz::Answer;
using support::Call;
using support::WindowInside;

class InventedReply : public QNetworkReply
{
public:
    InventedReply(const Answer& answer, QByteArray content) : body(std::move(content))
    {
        setProperty("taskKind", answer.kind);
        if (answer.status != 0) {
            setAttribute(QNetworkRequest::HttpStatusCodeAttribute, answer.status);
        }
        open(QIODevice::ReadOnly); // resets an error
        if (answer.transferFailed) {
            setError(UnknownNetworkError, QStringLiteral("cut"));
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

/// A window without requests in flight. Its own requests reach nobody, because its base URL has no host.
QWidget& idleWindow()
{
    static const fuzz::FuzzApplication application;
    static QWidget* const window = support::newClientWindow().release(); // ends with the process
    support::WindowView(*window).line(u"Tarnwick URL")->setText(QStringLiteral("http://"));
    return *window;
}

void handle(QWidget& window, const Answer& answer, const QByteArray& body = {})
{
    const WindowInside inside(window);
    if (answer.isOfAKnownKind()) {
        inside.setBusy(answer.kind, true);
    }
    inside.handleReply(new InventedReply(answer, body));
}

/// Links the window; a reply without a known kind then updates the controls.
void link(QWidget& window)
{
    const WindowInside inside(window);
    inside.unlink();
    inside.setState({.origin = {}, .deviceId = {}, .token = QStringLiteral("token")});
    handle(window, {.kind = -1, .status = 200, .transferFailed = false, .body = {}});
}

/// Gives the window a code to poll for, an account, cores and projects.
void furnish(QWidget& window)
{
    const auto succeed = [&window](Call call, const QByteArray& body) {
        handle(window, {.kind = static_cast<int>(call), .status = 200, .transferFailed = false, .body = {}}, body);
    };
    succeed(Call::LinkStart, R"({"code":"TWPC-0"})");
    WindowInside(window).setBusy(static_cast<int>(Call::Instances), true); // so the session's success sends nothing
    succeed(Call::Session, R"({"user":{"display_name":"Bob"},"available_cores":[{"key":"x"},{"key":"y"}]})");
    succeed(Call::Instances, R"({"instances":[{"slug":"one"},{"slug":"two"}]})");
}

faults::WindowSight sightOf(QWidget& window)
{
    faults::WindowSight sight = faults::sightOf(window);
    sight.insert(QStringLiteral("token"), WindowInside(window).state().token);
    return sight;
}

void demandSame(const faults::WindowSight& actual, const faults::WindowSight& expected)
{
    for (auto part = expected.cbegin(); part != expected.cend(); ++part) {
        fuzz::demand(actual.value(part.key()) == part.value(), qPrintable(part.key()));
    }
    fuzz::demand(actual.size() == expected.size(), "no part is missing");
}

void demandBusyFlags(QWidget& window, const QString& underWay)
{
    for (const Call call : support::allCalls()) {
        const bool isUnderWay = underWay == QLatin1StringView(support::callName(call));
        fuzz::demand(WindowInside(window).isBusy(static_cast<int>(call)) == isUnderWay, support::callName(call));
    }
}

void settle(const QWidget& window)
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
    // The head is the kind as a digit, or as a letter if the transfer failed, and the status as three digits, so that
    // seeds can be typed. Other characters are accepted, too.
    const bool transferFailed = data[0] >= 'A';
    const QByteArray body(reinterpret_cast<const char*>(data) + headSize, static_cast<qsizetype>(size - headSize));
    const Answer answer{.kind = data[0] - (transferFailed ? 'A' : '0'),
                        .status = (data[1] - '0') * 100 + (data[2] - '0') * 10 + (data[3] - '0'),
                        .transferFailed = transferFailed,
                        .body = QJsonDocument::fromJson(body).object()};

    for (const bool isFurnished : {false, true}) {
        QWidget& window = idleWindow();
        link(window);
        if (isFurnished) {
            furnish(window);
        }
        support::fillCreationForm(support::WindowView(window));
        const faults::WindowSight before = sightOf(window);
        handle(window, answer, body);
        const faults::WindowSight expected =
            answer.isOfAKnownKind()
                ? faults::sightAfter(before, static_cast<Call>(answer.kind), fuzz::outcomeOf(answer))
                : before;
        demandSame(sightOf(window), expected);
        demandBusyFlags(window, expected.value(QStringLiteral("under way")));
        settle(window);
        demandBusyFlags(window, {});
    }
    return 0;
}
