#pragma once

#include <QStringList>

class QWidget;

namespace support {

/**
 * A window as text: one line for each widget and layout, indented below its parent.
 *
 * A line has the class, object name, text, form label and position, then whatever differs from a new object of the
 * class. A widget that Qt itself creates inside another one has a line only if there is something to say about it.
 */
QStringList widgetTree(QWidget* window);

} // namespace support
