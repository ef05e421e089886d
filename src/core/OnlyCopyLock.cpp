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

bool OnlyCopyLock::TryClaim(const QString& holder)
{
    if (m_fd >= 0)
        return true;
    m_holder.clear();
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    QDir().mkpath(folder);
    QByteArray path = QFile::encodeName(QDir(folder).filePath(m_fileName));
    // A copy that is just ending removes the file it held; a lock taken on that
    // removed file would be nobody's concern, so it is taken again on the new one.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0)
            return false;
        // Never waits: a second copy is told at once.
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            char said[256] = {};
            const ssize_t n = ::pread(fd, said, sizeof said - 1, 0);
            m_holder = n > 0 ? QString::fromUtf8(said, n).trimmed() : QString();
            ::close(fd);
            return false;
        }
        struct stat held {};
        struct stat named {};
        if (::fstat(fd, &held) == 0 && ::stat(path.constData(), &named) == 0 && held.st_ino == named.st_ino
            && held.st_dev == named.st_dev) {
            m_fd = fd;
            m_path = std::move(path);
            const QByteArray said = QStringLiteral("%1 (process %2)\n").arg(holder).arg(::getpid()).toUtf8();
            if (holder.isEmpty() || ::ftruncate(fd, 0) != 0 || ::pwrite(fd, said.constData(), said.size(), 0) < 0)
                (void)::ftruncate(fd, 0);
            return true;
        }
        ::close(fd);
    }
    return false;
}
