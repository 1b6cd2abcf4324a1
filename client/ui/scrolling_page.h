#pragma once

class QScrollArea;
class QWidget;

/**
 * A tab page that scrolls when the window is too low for it, instead of squeezing its fields to nothing.
 *
 * It owns the page, and is parentless until the tab widget adopts it.
 */
QScrollArea* newScrollingPage(QWidget* page);
