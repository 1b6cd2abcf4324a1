#pragma once

class QScrollArea;
class QWidget;

/**
 * A tab page that scrolls when the window is too low for it, instead of squeezing its fields to nothing.
 *
 * It owns the page, and is parentless until the tab widget adopts it.
 */
QScrollArea* newScrollingPage(QWidget* page);

/// Scrolls the page that the control is part of, if any, until all of the control is in view, or at least its top.
void scrollIntoView(const QWidget* control);
