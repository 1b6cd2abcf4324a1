#include "app/tarnwick_client_window.h"

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

std::filesystem::path stateBaseFolder()
{
    // An empty HOME counts as set; the path is then relative to the working directory.
    const char* home = std::getenv("HOME");
    return home != nullptr ? std::filesystem::path(home) : std::filesystem::temp_directory_path();
}

QString stateTextOf(const QJsonObject& object, QLatin1StringView key)
{
    return object.value(key).toString().trimmed();
}

} // namespace

/**
 * The path of the state file. Creates its folder; when that fails, opening the file fails, too.
 *
 * @throws std::filesystem::filesystem_error when HOME is not set and there is no temporary folder.
 */
QString TarnwickClientWindow::stateFilePath()
{
    const std::filesystem::path folder = stateBaseFolder() / "Library" / "Application Support" / "Tarnwick";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);

    const std::u8string path = (folder / "pc-client-state.json").u8string();
    return QString::fromUtf8(path.data(), static_cast<qsizetype>(path.size()));
}

/// Reads the state file. The state stays empty when the file is missing, unreadable or not a JSON object.
void TarnwickClientWindow::loadState()
{
    QFile file(stateFilePath());
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject()) {
        return;
    }
    const QJsonObject object = document.object();
    state.origin = stateTextOf(object, "origin"_L1);
    state.device_id = stateTextOf(object, "device_id"_L1);
    state.access_token = stateTextOf(object, "access_token"_L1);
}

/// Rewrites the state file. Failures are silent: the change is then lost when the client ends.
void TarnwickClientWindow::saveState() const
{
    QJsonObject object;
    object.insert("origin"_L1, baseUrl());
    object.insert("device_id"_L1, state.device_id);
    if (state.isLinked()) {
        object.insert("access_token"_L1, state.access_token);
    }

    // The file holds the token. It is created without rights for others, and an existing file loses them.
    constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
    QFile file(stateFilePath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate, ownerOnly)) {
        return;
    }
    file.setPermissions(ownerOnly);
    file.write(QJsonDocument(object).toJson(QJsonDocument::Indented));
}
