// Loads any bytes as the state file, and compares what the window takes from them with the plain rule.
#include "app/tarnwick_client_window.h"
#include "fuzz/fuzz_application.h"
#include "support/private_member.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

struct LoadState
{
    using Type = void (TarnwickClientWindow::*)();
    friend Type memberOf(LoadState tag);
};
struct SaveState
{
    using Type = void (TarnwickClientWindow::*)();
    friend Type memberOf(SaveState tag);
};
struct State
{
    using Type = ClientState TarnwickClientWindow::*;
    friend Type memberOf(State tag);
};

template struct PrivateMember<LoadState, &TarnwickClientWindow::loadState>;
template struct PrivateMember<SaveState, &TarnwickClientWindow::saveState>;
template struct PrivateMember<State, &TarnwickClientWindow::state>;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static const fuzz::FuzzApplication application;
    static auto* window = new TarnwickClientWindow;
    ClientState& state = window->*memberOf(State());
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    {
        QFile file(application.stateFile());
        const bool written = QDir().mkpath(application.stateFolder()) && file.open(QIODevice::WriteOnly) &&
                             file.write(bytes) == bytes.size();
        fuzz::demand(written, "the file can be written");
    }

    state = {};
    (window->*memberOf(LoadState()))();
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    fuzz::demand(state.origin == object.value(u"origin"_s).toString().trimmed(), "origin");
    fuzz::demand(state.device_id == object.value(u"device_id"_s).toString().trimmed(), "device_id");
    fuzz::demand(state.access_token == object.value(u"access_token"_s).toString().trimmed(), "access_token");

    // What is saved comes back as it was.
    const ClientState loaded = state;
    (window->*memberOf(SaveState()))();
    state = {};
    (window->*memberOf(LoadState()))();
    fuzz::demand(state.device_id == loaded.device_id, "device_id comes back");
    fuzz::demand(state.access_token == loaded.access_token, "access_token comes back");
    return 0;
}
