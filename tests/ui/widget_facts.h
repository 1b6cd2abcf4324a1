#pragma once

#include <QLayout>
#include <QString>
#include <QWidget>

namespace support {

/// What is different about a widget or a layout from another one, its properties first: ": readOnly true; maxLength 6",
/// or nothing. Left out are sizes and positions, and what else follows from other properties.
QString differences(const QWidget* found, const QWidget* newOne);
QString differences(const QLayout* found, const QLayout* newOne);

/// The keys of a value of one of Qt's enumerations: "AlignLeft|AlignTop".
QString keysOf(Qt::Alignment alignment);

} // namespace support
