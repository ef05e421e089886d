#pragma once

#include <QString>

#include <utility>

// Held while one copy of the program, window or command line, owns the Vexil
// and the preferences. It is an advisory lock on a file beside the
// preferences: the kernel drops it when the process ends, however it ends, so
// a crash leaves no stale claim, and taking it waits for no disk write.
class OnlyCopyLock {
public:
    // The lock of the Vexil and the preferences; a download into the firmware
    // folder takes a lock of its own, so a fetch can run beside a window.
    static constexpr const char* DeviceLockName = "VexilUtilPrefs.lock";
    static constexpr const char* DownloadLockName = "VexilUtilDownload.lock";

    explicit OnlyCopyLock(QString fileName = QString::fromLatin1(DeviceLockName)) : m_fileName(std::move(fileName)) {}
    ~OnlyCopyLock();
    OnlyCopyLock(const OnlyCopyLock&) = delete;
    OnlyCopyLock& operator=(const OnlyCopyLock&) = delete;

    // False when another copy holds the lock, or when its file cannot be made.
    // The holder's words ("vexilctl load") are kept in the file for the others.
    bool TryClaim(const QString& holder = QString());
    // Who holds the lock, as "vexilctl load (process 123)", after a failed
    // claim; empty when that copy did not say.
    QString Holder() const { return m_holder; }

private:
    QString m_fileName;
    QString m_holder;
    int m_fd = -1;
    QByteArray m_path;
};
