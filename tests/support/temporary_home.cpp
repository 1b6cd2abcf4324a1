#include "temporary_home.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QStringList>

using Qt::StringLiterals::operator""_s;

namespace support {

TemporaryHome::TemporaryHome() : m_hadHome(qEnvironmentVariableIsSet("HOME")), m_formerHome(qgetenv("HOME"))
{
    if (!m_folder.isValid()) {
        qFatal("No temporary home: %s", qPrintable(m_folder.errorString()));
    }
    qputenv("HOME", QFile::encodeName(m_folder.path()));
}

TemporaryHome::~TemporaryHome()
{
    // A test may have taken rights away; the folder could not be removed then.
    const QStringList folders = {u"/Library"_s, u"/Library/Application Support"_s,
                                 u"/Library/Application Support/Tarnwick"_s};
    QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    for (const QString& folder : folders) {
        QFile::setPermissions(path() + folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    if (m_hadHome) {
        qputenv("HOME", m_formerHome);
    } else {
        qunsetenv("HOME");
    }
}

QString TemporaryHome::path() const
{
    return m_folder.path();
}

QString TemporaryHome::stateFile() const
{
    return stateFolder() + u"/pc-client-state.json"_s;
}

QString TemporaryHome::stateFolder() const
{
    return path() + u"/Library/Application Support/Tarnwick"_s;
}

void TemporaryHome::writeState(const QByteArray& raw) const
{
    QFile file(stateFile());
    if (!QDir().mkpath(stateFolder()) || !file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(raw) != raw.size() || !file.flush()) {
        qFatal("Cannot write %s", qPrintable(stateFile()));
    }
}

QByteArray TemporaryHome::readState() const
{
    QFile file(stateFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject TemporaryHome::stateObject() const
{
    return QJsonDocument::fromJson(readState()).object();
}

} // namespace support
