#include "ui/scrolling_page.h"

#include <QFrame>
#include <QScrollArea>

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
