#pragma once

#include <QStringList>

class QWidget;

namespace support {

/**
 * A window in words: a line for each widget and layout in it, indented under what holds it.
 *
 * A line names class, object name, text, form label and place, and then whatever differs from a new object of the
 * class. What Qt itself puts into a widget has a line only if there is something to tell about it.
 */
QStringList widgetTree(QWidget* window);

} // namespace support
