#pragma once

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace support {

/// A temporary folder as HOME. The destructor restores the former HOME, or unsets it if there was none.
class TemporaryHome
{
public:
    TemporaryHome() : m_hadHome(qEnvironmentVariableIsSet("HOME")), m_formerHome(qgetenv("HOME"))
    {
        if (!m_folder.isValid()) {
            qFatal("No temporary home: %s", qPrintable(m_folder.errorString()));
        }
        qputenv("HOME", QFile::encodeName(path()));
    }
    ~TemporaryHome()
    {
        // A folder without permissions, which a test may have left, could not be removed.
        for (const char* folder : {"", "/Library", "/Library/Application Support", folderName}) {
            QFile::setPermissions(path() + QLatin1StringView(folder),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        m_hadHome ? qputenv("HOME", m_formerHome) : qunsetenv("HOME");
    }
    Q_DISABLE_COPY_MOVE(TemporaryHome)

    QString path() const { return m_folder.path(); }
    /// The path of the client's state file. The client or writeState() creates its folder.
    QString stateFile() const { return stateFolder() + QStringLiteral("/pc-client-state.json"); }
    QString stateFolder() const { return path() + QLatin1StringView(folderName); }
    /// Writes these bytes to the state file; ends the program if that fails.
    void writeState(const QByteArray& raw) const
    {
        QFile file(stateFile());
        if (!QDir().mkpath(stateFolder()) || !file.open(QIODevice::WriteOnly) || file.write(raw) != raw.size()) {
            qFatal("Cannot write %s", qPrintable(stateFile()));
        }
    }
    /// The bytes of the state file; empty if there is none.
    QByteArray readState() const
    {
        QFile file(stateFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// The state file's JSON object; empty if it contains anything else.
    QJsonObject stateObject() const { return QJsonDocument::fromJson(readState()).object(); }

private:
    static constexpr const char* folderName = "/Library/Application Support/Tarnwick";

    QTemporaryDir m_folder;
    bool m_hadHome = false;
    QByteArray m_formerHome;
};

} // namespace support
