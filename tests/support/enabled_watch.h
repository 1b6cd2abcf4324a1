#pragma once

#include <QEvent>
#include <QObject>
#include <QWidget>

#include <functional>
#include <utility>

namespace support {

/// Calls the test when a widget is enabled or disabled, during the operation that does this. So a test can check what
/// has happened by then.
class EnabledWatch : public QObject
{
public:
    using Notify = std::function<void(bool enabled)>;

    EnabledWatch(QWidget* widget, Notify notify) : m_widget(widget), m_notify(std::move(notify))
    {
        m_widget->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == m_widget && event->type() == QEvent::EnabledChange) {
            m_notify(m_widget->isEnabled());
        }
        return false;
    }

private:
    QWidget* m_widget;
    Notify m_notify;
};

} // namespace support
