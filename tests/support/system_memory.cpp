#include "system_memory.h"

#if defined(Q_OS_UNIX)
#include <sys/resource.h>
#endif

namespace support {

qint64 peakMemoryBytes()
{
#if defined(Q_OS_UNIX) && !defined(TARNWICK_TEST_SANITIZED)
    rusage usage = {};
    if (::getrusage(RUSAGE_SELF, &usage) != 0) {
        return 0;
    }
#if defined(Q_OS_DARWIN)
    return usage.ru_maxrss;
#else
    return static_cast<qint64>(usage.ru_maxrss) * 1024;
#endif
#else
    return 0;
#endif
}

} // namespace support
