#pragma once

#include <QString>

// Held while one copy of the program, window or command line, owns the Vexil
// and the preferences. It is an advisory lock on a file beside the
// preferences: the kernel drops it when the process ends, however it ends, so
// a crash leaves no stale claim, and taking it waits for no disk write.
class OnlyCopyLock {
public:
    OnlyCopyLock() = default;
    ~OnlyCopyLock();
    OnlyCopyLock(const OnlyCopyLock&) = delete;
    OnlyCopyLock& operator=(const OnlyCopyLock&) = delete;

    // False when another copy holds the lock, or when its file cannot be made.
    bool TryClaim();

private:
    int m_fd = -1;
    QByteArray m_path;
};
