#pragma once

#include <QByteArray>

namespace faults {

/// The content as a gzip file.
QByteArray gzipped(const QByteArray& content);

} // namespace faults
