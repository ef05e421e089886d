#pragma once

#include <QDateTime>
#include <QtGlobal>

// The one source of time. Device time-outs are measured against Microseconds();
// a simulated device waits through SleepMicroseconds(), so a test clock can make
// an eight-second erase pass without eight seconds of real waiting.
class Clock {
public:
    virtual ~Clock() = default;
    // Monotonic microseconds since an arbitrary start.
    virtual qint64 Microseconds() = 0;
    // Blocks the caller (or, on a test clock, advances time) by the given amount.
    virtual void SleepMicroseconds(qint64 us) = 0;
    // Local wall-clock date and time, for log stamps.
    virtual QDateTime LocalDateTime() = 0;
};
