#pragma once

#include "Clock.h"

// A clock that moves only when told to, or when something sleeps on it.
class ManualClock final : public Clock {
public:
    explicit ManualClock(QDateTime start = QDateTime(QDate(2026, 1, 2), QTime(9, 30, 0)));
    qint64 Microseconds() override { return m_us; }
    void SleepMicroseconds(qint64 us) override { Advance(us); }
    QDateTime LocalDateTime() override;

    void Advance(qint64 us);
    // Total time spent in SleepMicroseconds and Advance.
    qint64 Elapsed() const { return m_us; }

private:
    qint64 m_us = 0;
    QDateTime m_start;
};
