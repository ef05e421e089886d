#include "FtpServers.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTcpSocket>

#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool Fail(QString* error, const QString& why)
{
    *error = why;
    return false;
}

} // namespace

QByteArray FileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

RealFtpServer::RealFtpServer(Kind kind) : kind(kind), m_dir(QDir::tempPath() + QStringLiteral("/ftp-fixture-XXXXXX")) {}

RealFtpServer::~RealFtpServer()
{
    // What has not ended by then, QProcess kills.
    if (m_process) {
        m_process->terminate();
        m_process->waitForFinished(3000);
    }
}

bool RealFtpServer::Start(QString* error)
{
    // QTemporaryDir makes 0700 folders; the unprivileged server user must traverse them.
    for (const char* path : {".", "root", "root/incoming", "empty"}) {
        if (!QDir(m_dir.path()).mkpath(QLatin1String(path))
            || ::chmod(QFile::encodeName(m_dir.filePath(QLatin1String(path))).constData(), 0755) != 0)
            return Fail(error, QStringLiteral("cannot set up ") + m_dir.filePath(QLatin1String(path)));
    }
    if (kind == Kind::Vsftpd) {
        // Anonymous sessions run as "ftp"; only the writable folder belongs to it.
        const passwd* ftp = ::getpwnam("ftp");
        if (!ftp || ::chown(QFile::encodeName(IncomingPath()).constData(), ftp->pw_uid, ftp->pw_gid) != 0)
            return Fail(error, QStringLiteral("cannot give /incoming to the user \"ftp\""));
        QProcess openssl;
        openssl.setProcessChannelMode(QProcess::MergedChannels);
        openssl.start(QStringLiteral("openssl"),
                      QStringLiteral("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 "
                                     "-addext subjectAltName=IP:127.0.0.1 -keyout %1 -out %2")
                          .arg(m_dir.filePath(QStringLiteral("key.pem")), CertificatePath())
                          .split(QLatin1Char(' ')));
        if (!openssl.waitForFinished(10000) || openssl.exitCode() != 0)
            return Fail(error, QStringLiteral("openssl: ") + QString::fromLocal8Bit(openssl.readAll()));
    }
    // Another program may take the free port before the server binds it.
    for (int attempt = 0; attempt < 3; ++attempt) {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        const quint16 port = probe.serverPort();
        probe.close();
        if (Launch(port, error))
            return true;
    }
    return false;
}

bool RealFtpServer::Launch(quint16 port, QString* error)
{
    // A random window, so that two fixtures rarely hand out the same passive ports.
    const int pasvMin = 40000 + QRandomGenerator::global()->bounded(20000 - 50);
    const QString log = m_dir.filePath(QStringLiteral("commands.log"));
    m_process = std::make_unique<QProcess>();
    if (kind == Kind::Vsftpd) {
        QString config = QString::fromUtf8(FileBytes(QStringLiteral(FTP_TEST_DATA "/vsftpd.conf.in")));
        const std::pair<const char*, QString> fields[] = {{"@PORT@", QString::number(port)}, {"@DIR@", m_dir.path()},
            {"@PASV_MIN@", QString::number(pasvMin)}, {"@PASV_MAX@", QString::number(pasvMin + 49)}};
        for (const auto& [field, value] : fields)
            config.replace(QLatin1String(field), value);
        QFile file(m_dir.filePath(QStringLiteral("vsftpd.conf")));
        if (config.isEmpty() || !file.open(QIODevice::WriteOnly) || file.write(config.toUtf8()) < 0)
            return Fail(error, QStringLiteral("cannot write ") + file.fileName());
        m_process->setProgram(QStringLiteral("/usr/sbin/vsftpd"));
        m_process->setArguments({file.fileName()});
    } else {
        // Debian's pyftpdlib belongs to this interpreter; -I keeps user packages out.
        m_process->setProgram(QStringLiteral("/usr/bin/python3"));
        m_process->setArguments({QStringLiteral("-I"), QStringLiteral(FTP_TEST_DATA "/ftpd.py"),
                                 m_dir.filePath(QStringLiteral("root")), QString::number(port),
                                 QString::number(pasvMin), log});
    }
    const QString output = m_dir.filePath(QStringLiteral("server.out"));
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->setStandardOutputFile(output, QIODevice::Append);
    m_process->setChildProcessModifier([] {
        // A crashed test run must not leave the server behind.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        // vsftpd writes its fatal "500 OOPS" to fd 0.
        ::dup2(STDOUT_FILENO, STDIN_FILENO);
    });
    m_process->start();
    const QDeadlineTimer deadline(10000);
    while (!deadline.hasExpired() && m_process->waitForStarted(1000) && m_process->state() == QProcess::Running) {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, port);
        if (probe.waitForConnected(200) && probe.waitForReadyRead(300)) {
            if (!probe.readAll().startsWith("220 "))
                break; // someone else's listener
            m_port = port;
            return true;
        }
        m_process->waitForFinished(20);
    }
    m_process.reset(); // kills what still runs
    return Fail(error, QStringLiteral("no greeting on port %1:\n").arg(port) + QString::fromUtf8(FileBytes(output)));
}

QStringList RealFtpServer::CommandsSeen() const
{
    // vsftpd: ... [pid 24727] [ftp] FTP command: Client "127.0.0.1", "CWD incoming"; ftpd.py writes the same.
    static const QRegularExpression command(QStringLiteral(R"re(FTP command: Client "[^"]*", "(.*)"$)re"));
    QStringList seen;
    for (const QByteArray& line : FileBytes(m_dir.filePath(QStringLiteral("commands.log"))).split('\n')) {
        if (const QRegularExpressionMatch match = command.match(QString::fromUtf8(line)); match.hasMatch())
            seen << match.captured(1);
    }
    return seen;
}

ScriptedFtpPeer::ScriptedFtpPeer()
{
    m_listener.listen(QHostAddress::LocalHost, 0);
    connect(&m_listener, &QTcpServer::newConnection, this, [this] {
        m_client = m_listener.nextPendingConnection();
        // Small replies go out as written instead of waiting for Nagle.
        m_client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        connect(m_client, &QTcpSocket::readyRead, this, [this] {
            m_buffer += m_client->readAll();
            for (qsizetype end; (end = m_buffer.indexOf("\r\n")) >= 0; m_buffer.remove(0, end + 2)) {
                received << QString::fromLatin1(m_buffer.left(end));
                if (onLine)
                    onLine(received.last());
                Reply(received.size());
            }
        });
        Reply(0);
    });
}

ScriptedFtpPeer::~ScriptedFtpPeer()
{
    // The socket goes with the listener and must not reach a half-destroyed peer.
    if (m_client)
        m_client->disconnect(this);
}

void ScriptedFtpPeer::Reply(qsizetype index)
{
    if (index < replies.size())
        m_client->write(replies[index]);
    if (closeAfterLast && index == replies.size() - 1)
        m_client->disconnectFromHost();
}
