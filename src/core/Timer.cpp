#include "Timer.h"

Timer::Timer(int periodMs, QObject* parent) : QObject(parent), m_period(periodMs)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Timer::Fire);
}

void Timer::SetMode(Mode mode)
{
    m_mode = mode;
    m_timer.stop();
    if (mode == ModeOff)
        return;
    m_timer.setSingleShot(mode == ModeSingle);
    m_timer.start(m_period);
}

void Timer::Fire()
{
    if (m_mode == ModeSingle)
        m_mode = ModeOff;
    emit Action();
}
