#include "app/tarnwick_client_window.h"
#include "ui/scrolling_page.h"

#include <QApplication>
#include <QFocusFrame>
#include <QPointer>

/**
 * Draws a frame around whichever control of the window has the keyboard focus.
 *
 * The style sheet replaces the desktop's own marks, and nothing else would show the focus of the link code,
 * the table or a combo box.
 */
void TarnwickClientWindow::addFocusFrame()
{
    // It moves among the widgets that it frames and may end with one of them, before the window does.
    const QPointer<QFocusFrame> frame = new QFocusFrame(this);
    connect(qApp, &QApplication::focusChanged, this, [this, frame](QWidget* old, QWidget* now) {
        // The focus may also go to a pop-up list, which marks its current line itself.
        QWidget* control = now != nullptr && now->window() == this ? now : nullptr;
        if (frame != nullptr) {
            frame->setWidget(control);
        }
        // Qt scrolls to a text cursor only, and not at all when the focus enters a page from outside. What the mouse
        // is on must stay where it is, and so must a page when the user merely comes back from another window.
        if (control != nullptr && old != nullptr && QGuiApplication::mouseButtons() == Qt::NoButton) {
            scrollIntoView(control);
        }
    });
}
