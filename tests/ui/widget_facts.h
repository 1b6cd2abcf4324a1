#pragma once

#include <QLayout>
#include <QString>
#include <QWidget>

namespace support {

/// How a widget or layout differs from another one, properties first: ": readOnly true; maxLength 6", or nothing.
/// Leaves out sizes, positions, and whatever follows from other properties.
QString differences(const QWidget* found, const QWidget* newOne);
QString differences(const QLayout* found, const QLayout* newOne);

/// The names of an enumeration's value: "AlignLeft|AlignTop".
QString keysOf(Qt::Alignment alignment);

} // namespace support
