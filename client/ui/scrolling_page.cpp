#include "ui/scrolling_page.h"

#include <QFrame>
#include <QRect>
#include <QScrollArea>

#include <algorithm>

namespace {

/// Room above and below a control for its focus frame and its label, as far as the viewport is high enough.
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
    // Not a tab stop: it would be one without a visible focus.
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(page);
    return area;
}

void scrollIntoView(const QWidget* control)
{
    QScrollArea* area = scrollingPageOf(control);
    if (area != nullptr) {
        const QRect place(control->mapTo(area->widget(), QPoint()), control->size());
        const int margin = std::clamp((area->viewport()->height() - place.height()) / 2, 0, scrollingPageMargin);
        area->ensureVisible(place.left(), place.bottom(), 0, margin);
        area->ensureVisible(place.left(), place.top(), 0, margin);
    }
}
