// Loads any bytes as the state file, and compares the loaded texts with an independent statement of the rule.
#include "fuzz/fuzz_application.h"

#include <QJsonDocument>
#include <QJsonObject>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static const fuzz::FuzzApplication application;
    static QWidget* const window = support::newClientWindow().release(); // ends with the process
    const support::WindowInside inside(*window);
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    application.home.writeState(bytes);

    inside.setState({});
    inside.loadState();
    const support::SavedTexts loaded = inside.state();
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    const auto textOf = [&object](QLatin1StringView key) {
        return object.value(key).toString().trimmed();
    };
    fuzz::demand(loaded.origin == textOf(QLatin1StringView("origin")), "origin");
    fuzz::demand(loaded.deviceId == textOf(QLatin1StringView("device_id")), "device_id");
    fuzz::demand(loaded.token == textOf(QLatin1StringView("access_token")), "access_token");

    inside.saveState();
    inside.setState({});
    inside.loadState();
    fuzz::demand(inside.state().deviceId == loaded.deviceId, "device_id comes back");
    fuzz::demand(inside.state().token == loaded.token, "access_token comes back");
    return 0;
}
