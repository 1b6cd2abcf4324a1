#include "message_catcher.h"

#include <atomic>

namespace support {

namespace {

/// A message handler is a plain function and finds the object through this.
std::atomic<MessageCatcher*> innermostCatcher = nullptr;

} // namespace

MessageCatcher::MessageCatcher()
    : m_outer(innermostCatcher.exchange(this)),
      m_formerHandler(qInstallMessageHandler(&MessageCatcher::handle))
{
}

MessageCatcher::~MessageCatcher()
{
    qInstallMessageHandler(m_formerHandler);
    innermostCatcher = m_outer;
}

QList<CaughtMessage> MessageCatcher::entries() const
{
    const QMutexLocker lock(&m_mutex);
    return m_entries;
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

void MessageCatcher::handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    MessageCatcher* catcher = innermostCatcher;
    if (type == QtFatalMsg) { // the program ends here
        while (catcher->m_outer != nullptr) {
            catcher = catcher->m_outer;
        }
        catcher->m_formerHandler(type, context, text);
        return;
    }
    const QMutexLocker lock(&catcher->m_mutex);
    catcher->m_entries.append({QString::fromUtf8(context.category), text});
}

} // namespace support
