#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace support {

/// The contents of a state file. A client that finds a token in it is linked from the start.
inline QByteArray storedState(const QString& origin, const QString& token = {},
                              const QString& deviceId = QStringLiteral("desk-1"))
{
    QJsonObject object{{QStringLiteral("origin"), origin}, {QStringLiteral("device_id"), deviceId}};
    if (!token.isEmpty()) {
        object.insert(QStringLiteral("access_token"), token);
    }
    return QJsonDocument(object).toJson();
}

} // namespace support
