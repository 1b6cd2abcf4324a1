#pragma once

#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>

namespace support {

/// One message of the logging functions.
struct CaughtMessage
{
    QString category;
    QString text;
};

/// Catches all messages of qDebug, qWarning and their like, from every thread, while it lives. Objects nest: only the
/// innermost one gets them.
class MessageCatcher
{
public:
    MessageCatcher();
    ~MessageCatcher();
    Q_DISABLE_COPY_MOVE(MessageCatcher)

    /// In the order in which they were printed.
    QList<CaughtMessage> entries() const;
    QStringList messages() const;
    void clear();

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text);

    mutable QMutex m_mutex;
    QList<CaughtMessage> m_entries;
    MessageCatcher* m_outer = nullptr;
    QtMessageHandler m_formerHandler = nullptr;
};

} // namespace support
