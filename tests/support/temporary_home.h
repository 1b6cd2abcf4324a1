#pragma once

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace support {

/// A HOME of the test's own in a temporary folder. The former HOME, or its absence, comes back with the destructor.
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
        // A test may have taken rights away; the folder could not be removed then.
        for (const char* folder : {"", "/Library", "/Library/Application Support", folderName}) {
            QFile::setPermissions(path() + QLatin1StringView(folder),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        m_hadHome ? qputenv("HOME", m_formerHome) : qunsetenv("HOME");
    }
    Q_DISABLE_COPY_MOVE(TemporaryHome)

    QString path() const { return m_folder.path(); }
    /// Where the client keeps its state file. The folder is the client's, or writeState's, to make.
    QString stateFile() const { return stateFolder() + QStringLiteral("/pc-client-state.json"); }
    QString stateFolder() const { return path() + QLatin1StringView(folderName); }
    /// Puts these bytes into the state file; the program ends when that is impossible.
    void writeState(const QByteArray& raw) const
    {
        QFile file(stateFile());
        if (!QDir().mkpath(stateFolder()) || !file.open(QIODevice::WriteOnly) || file.write(raw) != raw.size()) {
            qFatal("Cannot write %s", qPrintable(stateFile()));
        }
    }
    /// The bytes of the state file; empty when there is none.
    QByteArray readState() const
    {
        QFile file(stateFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// The state file's JSON object; empty when it holds anything else.
    QJsonObject stateObject() const { return QJsonDocument::fromJson(readState()).object(); }

private:
    static constexpr const char* folderName = "/Library/Application Support/Tarnwick";

    QTemporaryDir m_folder;
    bool m_hadHome = false;
    QByteArray m_formerHome;
};

} // namespace support
