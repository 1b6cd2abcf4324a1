#pragma once

#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>

namespace support {

/// A message of qDebug(), qWarning() and the like.
struct CaughtMessage
{
    QString category;
    QString text;
};

/// Catches all messages of qDebug(), qWarning() and the like, from every thread, during its lifetime. Objects can be
/// nested: only the innermost one gets the messages.
class MessageCatcher
{
public:
    MessageCatcher();
    ~MessageCatcher();
    Q_DISABLE_COPY_MOVE(MessageCatcher)

    /// In the order in which they were printed.
    QList<CaughtMessage> entries() const;
    QStringList messages() const;

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text);

    mutable QMutex m_mutex;
    QList<CaughtMessage> m_entries;
    MessageCatcher* m_outer = nullptr;
    QtMessageHandler m_formerHandler = nullptr;
};

} // namespace support
