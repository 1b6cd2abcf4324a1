#pragma once

class QScrollArea;
class QWidget;

/// A scroll area around a tab page. Without it, the fields of the page would be squeezed in a low window.
QScrollArea* newScrollingPage(QWidget* page);

/// Scrolls the control's page, if it is on one, until the control is visible, or at least its top.
void scrollIntoView(const QWidget* control);
