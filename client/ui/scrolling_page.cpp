#include "ui/scrolling_page.h"

#include <QFrame>
#include <QRect>
#include <QScrollArea>

#include <algorithm>

namespace {

/// Room above and below a control for its focus frame and its label; less in a low viewport.
constexpr int scrollingPageMargin = 40;

QScrollArea* scrollingPageOf(const QWidget* control)
{
    for (QWidget* parent = control->parentWidget(); parent != nullptr; parent = parent->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(parent)) {
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
    // Otherwise it would be a tab stop, and nothing would show its focus.
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
