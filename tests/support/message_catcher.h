#pragma once

#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace support {

/// One message of the logging functions.
struct CaughtMessage
{
    QtMsgType type = QtDebugMsg;
    QString category;
    QString text;
};

/// Catches all messages of qDebug, qWarning and their like, from every thread, while it lives. They go no
/// further than here, unless forwarding is asked for; a fatal one is always passed on, for the program ends
/// with it. Objects nest.
class MessageCatcher
{
public:
    enum class Forward { No, Yes };

    explicit MessageCatcher(Forward forward = Forward::No);
    ~MessageCatcher();
    Q_DISABLE_COPY_MOVE(MessageCatcher)

    /// The texts in the order in which they were printed.
    QStringList messages() const;
    QList<CaughtMessage> entries() const;
    void clear();

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text);
    void take(QtMsgType type, const QMessageLogContext& context, const QString& text);

    mutable QMutex m_mutex;
    QList<CaughtMessage> m_entries;
    Forward m_forward;
    MessageCatcher* m_outer = nullptr;
    QtMessageHandler m_formerHandler = nullptr;
};

} // namespace support
