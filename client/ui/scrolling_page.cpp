#include "ui/scrolling_page.h"

#include <QFrame>
#include <QRect>
#include <QScrollArea>

namespace {

/// Room around a control, in pixels: for the frame that marks its focus, and for the label above it.
constexpr int scrollingPageMargin = 40;

QScrollArea* scrollingPageOf(const QWidget* control)
{
    for (QWidget* holder = control->parentWidget(); holder != nullptr; holder = holder->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(holder)) {
            return area;
        }
    }
    return nullptr;
}

} // namespace

QScrollArea* newScrollingPage(QWidget* page)
{
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    // It follows the focus of the fields inside it; a stop of its own would be one that nobody can see.
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(page);
    return area;
}

void scrollIntoView(const QWidget* control)
{
    QScrollArea* area = scrollingPageOf(control);
    if (area != nullptr) {
        const QRect place(control->mapTo(area->widget(), QPoint()), control->size());
        area->ensureVisible(place.left(), place.bottom(), 0, scrollingPageMargin);
        area->ensureVisible(place.left(), place.top(), 0, scrollingPageMargin);
    }
}
