#include "SystemClock.h"

#include <chrono>
#include <thread>

SystemClock::SystemClock()
{
    m_timer.start();
}

qint64 SystemClock::Microseconds()
{
    return m_timer.nsecsElapsed() / 1000;
}

void SystemClock::SleepMicroseconds(qint64 us)
{
    if (us > 0)
        std::this_thread::sleep_for(std::chrono::microseconds(us));
}

QDateTime SystemClock::LocalDateTime()
{
    return QDateTime::currentDateTime();
}
