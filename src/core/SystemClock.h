#pragma once

#include "Clock.h"

#include <QElapsedTimer>

class SystemClock final : public Clock {
public:
    SystemClock();
    qint64 Microseconds() override;
    void SleepMicroseconds(qint64 us) override;
    QDateTime LocalDateTime() override;

private:
    QElapsedTimer m_timer;
};
