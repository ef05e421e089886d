#include "OnlyCopyLock.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

OnlyCopyLock::~OnlyCopyLock()
{
    if (m_fd < 0)
        return;
    // Removed while still held, so no other copy can be holding it; a file left
    // behind by a crash is harmless, as nobody holds a lock on it.
    ::unlink(m_path.constData());
    ::close(m_fd);
}

bool OnlyCopyLock::TryClaim()
{
    if (m_fd >= 0)
        return true;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    QDir().mkpath(folder);
    QByteArray path = QFile::encodeName(QDir(folder).filePath(QStringLiteral("VexilUtilPrefs.lock")));
    // A copy that is just ending removes the file it held; a lock taken on that
    // removed file would be nobody's concern, so it is taken again on the new one.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0)
            return false;
        // Never waits: a second copy is told at once.
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            ::close(fd);
            return false;
        }
        struct stat held {};
        struct stat named {};
        if (::fstat(fd, &held) == 0 && ::stat(path.constData(), &named) == 0 && held.st_ino == named.st_ino
            && held.st_dev == named.st_dev) {
            m_fd = fd;
            m_path = std::move(path);
            return true;
        }
        ::close(fd);
    }
    return false;
}
