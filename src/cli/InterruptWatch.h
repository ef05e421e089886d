#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

// Turns Ctrl+C (SIGINT) into a signal on the event loop. The handler only
// writes a byte to a socket pair; the loop, which a load pumps between
// packets, delivers it, so the work in progress decides how to stop.
class InterruptWatch : public QObject {
    Q_OBJECT
public:
    InterruptWatch();
    ~InterruptWatch() override;

signals:
    void interrupted();

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};
