#pragma once

#include <QtGlobal>

/// How long a transfer may stand still before it counts as failed, in milliseconds.
#ifdef TARNWICK_TEST_TRANSFER_TIMEOUT_MS
inline constexpr int requestTimeoutMs = TARNWICK_TEST_TRANSFER_TIMEOUT_MS; // tests of a stalled transfer only
#else
inline constexpr int requestTimeoutMs = 20000;
#endif

/// The largest reply body that is read, in bytes.
inline constexpr qint64 requestMaxReplyBytes = 64LL * 1024 * 1024;
