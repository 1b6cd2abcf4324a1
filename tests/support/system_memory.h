#pragma once

#include <QtGlobal>

namespace support {

/// The most memory that this process has ever had resident. 0 where the system does not tell, and under a
/// sanitizer, which keeps freed memory on purpose.
qint64 peakMemoryBytes();

} // namespace support
