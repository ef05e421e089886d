#pragma once

#include <QObject>
#include <QTimer>

// A timer control: designed off with a period; setting the mode to single arms
// it to fire once, on the event loop, one period later.
class Timer : public QObject {
    Q_OBJECT
public:
    enum Mode { ModeOff = 0, ModeSingle = 1, ModeMultiple = 2 };

    explicit Timer(int periodMs = 250, QObject* parent = nullptr);

    int Period() const { return m_period; }
    void SetPeriod(int ms) { m_period = ms; }
    Mode GetMode() const { return m_mode; }
    void SetMode(Mode mode);

signals:
    void Action();

private:
    void Fire();

    QTimer m_timer;
    int m_period;
    Mode m_mode = ModeOff;
};
