#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QTemporaryDir>

namespace support {

/// A HOME of the test's own in a temporary folder. The former HOME, or its absence, comes back with the
/// destructor.
class TemporaryHome
{
public:
    TemporaryHome();
    ~TemporaryHome();
    Q_DISABLE_COPY_MOVE(TemporaryHome)

    QString path() const;
    /// Where the client keeps its state file. The folder is the client's, or writeState's, to make.
    QString stateFile() const;
    QString stateFolder() const;
    /// Puts these bytes into the state file; the program ends when that is impossible.
    void writeState(const QByteArray& raw) const;
    /// The bytes of the state file; empty when there is none.
    QByteArray readState() const;
    /// The state file's JSON object; empty when it holds anything else.
    QJsonObject stateObject() const;

private:
    QTemporaryDir m_folder;
    bool m_hadHome = false;
    QByteArray m_formerHome;
};

} // namespace support
