#pragma once

#include <QTimer>

class FTPSessionClass;

// The session's inactivity timer: one-shot, re-armed by every step, reply and
// data block, so its period measures silence rather than the length of a
// transfer.
class FTPConnectionTimer : public QTimer {
    Q_OBJECT
public:
    explicit FTPConnectionTimer(FTPSessionClass* session);

    FTPSessionClass* Session;
    // True while its own time-out is being handled.
    bool Firing = false;

private:
    void Event_Action();
};
