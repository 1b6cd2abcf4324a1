#pragma once

#include <QOperatingSystemVersion>

#if defined(Q_OS_UNIX)
#include <sys/resource.h>
#endif

namespace support {

/// The peak of this process's resident memory. 0 if the system does not report it, and with a sanitizer, which keeps
/// freed memory on purpose.
inline qint64 peakMemoryBytes()
{
#if defined(Q_OS_UNIX) && !defined(TARNWICK_TEST_SANITIZED)
    rusage usage = {};
    constexpr qint64 unit = QOperatingSystemVersion::currentType() == QOperatingSystemVersion::MacOS ? 1 : 1024;
    return ::getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss * unit : 0;
#else
    return 0;
#endif
}

} // namespace support
