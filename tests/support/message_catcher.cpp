#include "message_catcher.h"

#include <atomic>

namespace support {

namespace {

/// A message handler is a plain function; this is how it finds the object.
std::atomic<MessageCatcher*>& innermostCatcher()
{
    static std::atomic<MessageCatcher*> catcher = nullptr;
    return catcher;
}

} // namespace

MessageCatcher::MessageCatcher(Forward forward)
    : m_forward(forward),
      m_outer(innermostCatcher().exchange(this)),
      m_formerHandler(qInstallMessageHandler(&MessageCatcher::handle))
{
}

MessageCatcher::~MessageCatcher()
{
    qInstallMessageHandler(m_formerHandler);
    innermostCatcher() = m_outer;
}

QStringList MessageCatcher::messages() const
{
    QStringList texts;
    const QList<CaughtMessage> caught = entries();
    for (const CaughtMessage& entry : caught) {
        texts.append(entry.text);
    }
    return texts;
}

QList<CaughtMessage> MessageCatcher::entries() const
{
    const QMutexLocker lock(&m_mutex);
    return m_entries;
}

void MessageCatcher::clear()
{
    const QMutexLocker lock(&m_mutex);
    m_entries.clear();
}

void MessageCatcher::handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (MessageCatcher* catcher = innermostCatcher()) {
        catcher->take(type, context, text);
    }
}

void MessageCatcher::take(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_entries.append({type, QString::fromUtf8(context.category), text});
    }
    if (m_forward == Forward::No && type != QtFatalMsg) {
        return;
    }
    // The handler before this one may be handle() itself, which would only come back here.
    if (m_outer) {
        m_outer->take(type, context, text);
    } else {
        m_formerHandler(type, context, text);
    }
}

} // namespace support
