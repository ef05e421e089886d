#include "ManualClock.h"

ManualClock::ManualClock(QDateTime start) : m_start(std::move(start)) {}

QDateTime ManualClock::LocalDateTime()
{
    return m_start.addMSecs(m_us / 1000);
}

void ManualClock::Advance(qint64 us)
{
    if (us > 0)
        m_us += us;
}
