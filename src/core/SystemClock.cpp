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
    // Only the simulated device sleeps, to stand for its answer time. A plain
    // sleep wakes late by up to a tenth of a millisecond on a busy or virtual
    // machine, which would be billed to the host; so sleep short, then yield
    // until the moment itself.
    constexpr qint64 SpinUs = 250;
    const qint64 deadline = Microseconds() + us;
    if (us > SpinUs)
        std::this_thread::sleep_for(std::chrono::microseconds(us - SpinUs));
    while (Microseconds() < deadline)
        std::this_thread::yield();
}

QDateTime SystemClock::LocalDateTime()
{
    return QDateTime::currentDateTime();
}
