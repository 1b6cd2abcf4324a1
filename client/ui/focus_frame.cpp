#include "app/tarnwick_client_window.h"
#include "ui/scrolling_page.h"

#include <QApplication>
#include <QFocusFrame>
#include <QPointer>

/// Frames the control that has the keyboard focus: the style sheet hides the focus marks of the desktop's style.
void TarnwickClientWindow::addFocusFrame()
{
    // QFocusFrame reparents itself to the parent of its widget and may be deleted together with it.
    const QPointer<QFocusFrame> frame = new QFocusFrame(this);
    frame->hide();
    connect(qApp, &QApplication::focusChanged, this, [this, frame](QWidget* old, QWidget* now) {
        // The list of a combo box is a window of its own, and marks its current item itself.
        QWidget* control = now != nullptr && now->window() == this ? now : nullptr;
        if (frame != nullptr) {
            frame->setWidget(control);
        }
        // Qt itself scrolls only to a field's text cursor. The page must not move under a pressed mouse button, nor
        // when the window is activated again; in that case no control had the focus before.
        if (control != nullptr && old != nullptr && QGuiApplication::mouseButtons() == Qt::NoButton) {
            scrollIntoView(control);
        }
    });
}
