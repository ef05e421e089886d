#include "FtpServers.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int StartBudgetMs = 10000;
constexpr int StopWaitMs = 3000;
constexpr int StartAttempts = 3;

const char PyftpdlibScript[] = R"PY(import logging
import os
import sys
import warnings

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer

root, incoming, port, pasv_min, pasv_max, commands_path, log_path = sys.argv[1:8]
incoming = os.path.normpath(incoming)
logging.basicConfig(filename=log_path, level=logging.INFO)
warnings.filterwarnings("ignore", "write permissions assigned to anonymous user")
commands = open(commands_path, "ab", buffering=0)


class Authorizer(DummyAuthorizer):
    # The writable folder itself stays put, as on vsftpd where its parent is read-only.
    def has_perm(self, username, perm, path=None):
        if perm in "df" and path is not None and os.path.normpath(path) == incoming:
            return False
        return DummyAuthorizer.has_perm(self, username, perm, path)


class Handler(FTPHandler):
    # One unbuffered write per line, escaped so a stray LF inside a command stays one line.
    def found_terminator(self):
        line = b"".join(self._in_buffer)
        commands.write(line.replace(b"\\", b"\\\\").replace(b"\n", b"\\n") + b"\n")
        FTPHandler.found_terminator(self)


authorizer = Authorizer()
authorizer.add_anonymous(root, perm="elr")
authorizer.override_perm("anonymous", incoming, "elradfmwMT", recursive=True)
Handler.authorizer = authorizer
Handler.banner = "FTP fixture ready."
Handler.passive_ports = range(int(pasv_min), int(pasv_max) + 1)
FTPServer(("127.0.0.1", int(port)), Handler).serve_forever()
)PY";

bool MakeFolder(const QString& path, QString* error)
{
    if (!QDir().mkpath(path)) {
        *error = QStringLiteral("cannot create %1").arg(path);
        return false;
    }
    // QTemporaryDir makes 0700 folders; the unprivileged server user must traverse them.
    if (::chmod(QFile::encodeName(path).constData(), 0755) != 0) {
        *error = QStringLiteral("cannot chmod %1: %2").arg(path, QString::fromLocal8Bit(strerror(errno)));
        return false;
    }
    return true;
}

bool WriteFile(const QString& path, const QByteArray& contents, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(contents) != contents.size()) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

quint16 FreePort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        return 0;
    return probe.serverPort();
}

int RemainingMs(const QDeadlineTimer& deadline)
{
    return int(qMax<qint64>(0, deadline.remainingTime()));
}

QList<QByteArray> CompleteLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<QByteArray> lines = file.readAll().split('\n');
    // The last piece is either empty or a line the server is still writing.
    lines.removeLast();
    return lines;
}

QByteArray Unescape(const QByteArray& escaped)
{
    QByteArray out;
    out.reserve(escaped.size());
    for (qsizetype i = 0; i < escaped.size(); ++i) {
        if (escaped[i] == '\\' && i + 1 < escaped.size()) {
            ++i;
            out.append(escaped[i] == 'n' ? '\n' : escaped[i]);
        } else {
            out.append(escaped[i]);
        }
    }
    return out;
}

}

FtpServerFixture::FtpServerFixture()
    : m_Dir(QDir::tempPath() + QStringLiteral("/ftp-fixture-XXXXXX"))
{
    if (!m_Dir.isValid()) {
        m_SetupError = QStringLiteral("cannot create a temporary folder: %1").arg(m_Dir.errorString());
        return;
    }
    QString error;
    if (!MakeFolder(m_Dir.path(), &error) || !MakeFolder(RootPath(), &error) || !MakeFolder(WritablePath(), &error))
        m_SetupError = error;
}

FtpServerFixture::~FtpServerFixture()
{
    Stop();
}

QString FtpServerFixture::RootPath() const
{
    return FilePath(QStringLiteral("root"));
}

QString FtpServerFixture::WritablePath() const
{
    return RootPath() + QLatin1Char('/') + WritableDirName();
}

QString FtpServerFixture::FilePath(const QString& name) const
{
    return m_Dir.filePath(name);
}

QString FtpServerFixture::TailOf(const QString& path, int lines)
{
    QList<QByteArray> all;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        all = file.readAll().trimmed().split('\n');
    if (all.size() > lines)
        all = all.mid(all.size() - lines);
    return QStringLiteral("--- %1 ---\n%2\n").arg(path, QString::fromUtf8(all.join('\n')));
}

bool FtpServerFixture::StartServer(const QString& serverName, QString* error)
{
    if (!m_SetupError.isEmpty()) {
        *error = serverName + QStringLiteral(" fixture setup failed: ") + m_SetupError;
        return false;
    }
    if (m_Started) {
        *error = serverName + QStringLiteral(" fixture already started");
        return false;
    }

    const QDeadlineTimer deadline(StartBudgetMs);
    QString lastError;
    for (int attempt = 0; attempt < StartAttempts; ++attempt) {
        const quint16 port = FreePort();
        if (port == 0) {
            *error = QStringLiteral("no free port on 127.0.0.1");
            return false;
        }
        // A random window so that two fixtures rarely hand out the same passive ports.
        const auto pasvMin = quint16(40000 + QRandomGenerator::global()->bounded(20000 - 50));
        const auto pasvMax = quint16(pasvMin + 49);

        const Launch launch = PrepareAttempt(port, pasvMin, pasvMax, error);
        if (launch.program.isEmpty())
            return false;

        m_Process = std::make_unique<QProcess>();
        m_Process->setProgram(launch.program);
        m_Process->setArguments(launch.arguments);
        m_Process->setProcessChannelMode(QProcess::MergedChannels);
        m_Process->setStandardOutputFile(FilePath(QStringLiteral("server.out")), QIODevice::Append);
        m_Process->setChildProcessModifier([] {
            // A crashed test run must not leave the server behind.
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            // vsftpd writes its fatal "500 OOPS" to fd 0 (the control connection under inetd).
            ::dup2(STDOUT_FILENO, STDIN_FILENO);
        });
        m_Process->start();
        if (!m_Process->waitForStarted(RemainingMs(deadline))) {
            *error = QStringLiteral("cannot run %1: %2").arg(launch.program, m_Process->errorString());
            m_Process.reset();
            return false;
        }
        m_Arguments = launch.arguments;
        m_Port = port;

        lastError.clear();
        const Outcome outcome = WaitUntilServing(serverName, deadline, &lastError);
        if (outcome == Outcome::Serving) {
            m_Started = true;
            return true;
        }
        // Another process may have taken the port between FreePort() and the server's bind.
        if (outcome == Outcome::Failed || deadline.hasExpired())
            break;
    }
    Stop();
    m_Port = 0;
    *error = lastError + QLatin1Char('\n') + TailOf(FilePath(QStringLiteral("server.out")), 20) + Diagnostics();
    return false;
}

FtpServerFixture::Outcome FtpServerFixture::WaitUntilServing(const QString& serverName, const QDeadlineTimer& deadline,
                                                             QString* error)
{
    const QString where = QStringLiteral("127.0.0.1:%1").arg(m_Port);
    for (;;) {
        if (m_Process->state() == QProcess::NotRunning) {
            *error = QStringLiteral("%1 exited (status %2, code %3) before serving on %4")
                         .arg(serverName)
                         .arg(m_Process->exitStatus() == QProcess::NormalExit ? QStringLiteral("normal")
                                                                                : QStringLiteral("crash"))
                         .arg(m_Process->exitCode())
                         .arg(where);
            return Outcome::Exited;
        }
        if (deadline.hasExpired()) {
            *error = QStringLiteral("%1 did not greet on %2 within %3 ms").arg(serverName, where).arg(StartBudgetMs);
            return Outcome::Failed;
        }

        // The 220 greeting proves the server itself answers, not merely that the port is open.
        // The probe sends nothing, so it adds no line to CommandsSeen().
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, m_Port);
        if (probe.waitForConnected(qMin(RemainingMs(deadline), 500))) {
            // Short, so that a listener that is not ours (the port was taken after FreePort())
            // cannot hold this loop while our server has already exited.
            const QDeadlineTimer greetingDeadline(qMin(RemainingMs(deadline), 300));
            QByteArray greeting;
            while (!greeting.contains("\r\n") && probe.waitForReadyRead(RemainingMs(greetingDeadline)))
                greeting += probe.readAll();
            greeting += probe.readAll();
            probe.abort();
            if (greeting.startsWith("220 "))
                return Outcome::Serving;
            if (!greeting.isEmpty()) {
                *error = QStringLiteral("%1 on %2 greeted with %3")
                             .arg(serverName, where, QString::fromUtf8(greeting.trimmed()));
                return Outcome::Failed;
            }
        }
        // Doubles as the pause between probes; returns at once if the server exits.
        m_Process->waitForFinished(qMin(RemainingMs(deadline), 10));
    }
}

void FtpServerFixture::Stop()
{
    if (m_Process) {
        if (m_Process->state() != QProcess::NotRunning) {
            m_Process->terminate();
            if (!m_Process->waitForFinished(StopWaitMs)) {
                m_Process->kill();
                m_Process->waitForFinished(StopWaitMs);
            }
        }
        m_Process.reset();
    }
    KillStrays();
}

void FtpServerFixture::KillStrays()
{
    // vsftpd forks one process pair per connection and puts it in a session of its own, so it
    // outlives the listener and escapes a process-group kill. This fixture's processes are the
    // ones whose command line is exactly the one it launched (the arguments name files in its
    // own temporary folder).
    if (m_Arguments.isEmpty())
        return;
    QList<QByteArray> wanted;
    for (const QString& argument : std::as_const(m_Arguments))
        wanted.append(QFile::encodeName(argument));

    const QDeadlineTimer deadline(StopWaitMs);
    while (!deadline.hasExpired()) {
        int found = 0;
        const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        for (const QString& entry : entries) {
            bool numeric = false;
            const pid_t pid = entry.toInt(&numeric);
            if (!numeric || pid == ::getpid())
                continue;
            QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(entry));
            if (!cmdline.open(QIODevice::ReadOnly))
                continue;
            QList<QByteArray> parts = cmdline.readAll().split('\0');
            if (!parts.isEmpty() && parts.last().isEmpty())
                parts.removeLast();
            if (parts.size() != wanted.size() + 1 || parts.mid(1) != wanted)
                continue;
            ::kill(pid, SIGKILL);
            ++found;
        }
        if (found == 0)
            return;
        QThread::msleep(20);
    }
}

VsftpdServer::VsftpdServer(bool tls)
    : m_Tls(tls)
{
    if (!m_SetupError.isEmpty())
        return;
    QString error;
    if (!MakeFolder(FilePath(QStringLiteral("empty")), &error)) {
        m_SetupError = error;
        return;
    }
    // Anonymous sessions run as "ftp"; only the writable folder belongs to it.
    const passwd* ftp = ::getpwnam("ftp");
    if (!ftp) {
        m_SetupError = QStringLiteral("no \"ftp\" user on this machine (vsftpd's anonymous user)");
        return;
    }
    if (::chown(QFile::encodeName(WritablePath()).constData(), ftp->pw_uid, ftp->pw_gid) != 0)
        m_SetupError = QStringLiteral("cannot chown %1 to ftp: %2")
                           .arg(WritablePath(), QString::fromLocal8Bit(strerror(errno)));
}

VsftpdServer::~VsftpdServer() = default;

bool VsftpdServer::Start(QString* error)
{
    if (m_Tls && m_SetupError.isEmpty() && !QFile::exists(CaCertificatePath()) && !MakeCertificate(error))
        return false;
    return StartServer(QStringLiteral("vsftpd"), error);
}

QString VsftpdServer::CaCertificatePath() const
{
    return m_Tls ? FilePath(QStringLiteral("cert.pem")) : QString();
}

bool VsftpdServer::MakeCertificate(QString* error)
{
    return MakeTestCertificate(CaCertificatePath(), FilePath(QStringLiteral("key.pem")), error);
}

bool MakeTestCertificate(const QString& certPath, const QString& keyPath, QString* error)
{
    QProcess openssl;
    openssl.setProcessChannelMode(QProcess::MergedChannels);
    QStringList arguments = QStringLiteral("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 "
                                           "-addext subjectAltName=IP:127.0.0.1")
                                .split(QLatin1Char(' '));
    arguments << QStringLiteral("-keyout") << keyPath << QStringLiteral("-out") << certPath;
    openssl.start(QStringLiteral("openssl"), arguments);
    if (!openssl.waitForFinished(StartBudgetMs)) {
        *error = QStringLiteral("openssl req did not finish: %1").arg(openssl.errorString());
        openssl.kill();
        openssl.waitForFinished(StopWaitMs);
        return false;
    }
    if (openssl.exitStatus() != QProcess::NormalExit || openssl.exitCode() != 0) {
        *error = QStringLiteral("openssl req failed: %1").arg(QString::fromLocal8Bit(openssl.readAll()));
        return false;
    }
    return true;
}

FtpServerFixture::Launch VsftpdServer::PrepareAttempt(quint16 port, quint16 pasvMin, quint16 pasvMax, QString* error)
{
    QStringList lines{
        QStringLiteral("listen=YES"),
        QStringLiteral("listen_ipv6=NO"),
        QStringLiteral("listen_address=127.0.0.1"),
        QStringLiteral("listen_port=%1").arg(port),
        QStringLiteral("background=NO"),
        QStringLiteral("seccomp_sandbox=NO"),
        QStringLiteral("anonymous_enable=YES"),
        QStringLiteral("local_enable=NO"),
        QStringLiteral("no_anon_password=NO"),
        QStringLiteral("anon_root=%1").arg(RootPath()),
        QStringLiteral("secure_chroot_dir=%1").arg(FilePath(QStringLiteral("empty"))),
        QStringLiteral("pasv_enable=YES"),
        QStringLiteral("pasv_min_port=%1").arg(pasvMin),
        QStringLiteral("pasv_max_port=%1").arg(pasvMax),
        QStringLiteral("port_enable=YES"),
        QStringLiteral("connect_from_port_20=NO"),
        QStringLiteral("write_enable=YES"),
        QStringLiteral("anon_upload_enable=YES"),
        QStringLiteral("anon_mkdir_write_enable=YES"),
        QStringLiteral("anon_other_write_enable=YES"),
        QStringLiteral("anon_umask=022"),
        QStringLiteral("xferlog_enable=YES"),
        QStringLiteral("xferlog_std_format=NO"),
        QStringLiteral("log_ftp_protocol=YES"),
        QStringLiteral("vsftpd_log_file=%1").arg(FilePath(QStringLiteral("vsftpd.log"))),
        QStringLiteral("dual_log_enable=NO"),
        QStringLiteral("syslog_enable=NO"),
        QStringLiteral("ftpd_banner=FTP fixture ready."),
    };
    if (m_Tls) {
        // This vsftpd (3.0.3) knows no ssl_tlsv1_2. ssl_tlsv1=YES is what makes FEAT advertise
        // AUTH TLS; OpenSSL 3 refuses TLS below 1.2 regardless, so 1.2 and 1.3 are what is offered.
        lines << QStringLiteral("ssl_enable=YES") << QStringLiteral("rsa_cert_file=%1").arg(CaCertificatePath())
              << QStringLiteral("rsa_private_key_file=%1").arg(FilePath(QStringLiteral("key.pem")))
              << QStringLiteral("allow_anon_ssl=YES") << QStringLiteral("force_local_data_ssl=NO")
              << QStringLiteral("force_local_logins_ssl=NO") << QStringLiteral("force_anon_data_ssl=NO")
              << QStringLiteral("force_anon_logins_ssl=NO") << QStringLiteral("ssl_sslv2=NO")
              << QStringLiteral("ssl_sslv3=NO") << QStringLiteral("ssl_tlsv1=YES")
              << QStringLiteral("require_ssl_reuse=NO") << QStringLiteral("ssl_request_cert=NO");
    }
    const QString config = FilePath(QStringLiteral("vsftpd.conf"));
    if (!WriteFile(config, (lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8(), error))
        return {};
    return {QStringLiteral("/usr/sbin/vsftpd"), {config}};
}

QString VsftpdServer::Diagnostics() const
{
    return TailOf(FilePath(QStringLiteral("vsftpd.log")), 20);
}

QStringList VsftpdServer::CommandsSeen() const
{
    // e.g. Sun Nov 22 22:28:03 2026 [pid 24727] [ftp] FTP command: Client "127.0.0.1", "CWD incoming"
    static const QRegularExpression command(
        QStringLiteral(R"re(\[pid \d+\] (?:\[[^\]]*\] )?FTP command: Client "[^"]*", "(.*)"$)re"));
    QStringList seen;
    for (const QByteArray& line : CompleteLines(FilePath(QStringLiteral("vsftpd.log")))) {
        const QRegularExpressionMatch match = command.match(QString::fromUtf8(line));
        if (match.hasMatch())
            seen.append(match.captured(1));
    }
    return seen;
}

PyftpdlibServer::PyftpdlibServer()
{
    if (m_SetupError.isEmpty())
        WriteFile(FilePath(QStringLiteral("server.py")), PyftpdlibScript, &m_SetupError);
}

PyftpdlibServer::~PyftpdlibServer() = default;

bool PyftpdlibServer::Start(QString* error)
{
    return StartServer(QStringLiteral("pyftpdlib"), error);
}

FtpServerFixture::Launch PyftpdlibServer::PrepareAttempt(quint16 port, quint16 pasvMin, quint16 pasvMax, QString*)
{
    // -I: no user site-packages or PYTHON* variables, so the Debian pyftpdlib is the one used.
    return {QStringLiteral("/usr/bin/python3"),
            {QStringLiteral("-I"), FilePath(QStringLiteral("server.py")), RootPath(), WritablePath(),
             QString::number(port), QString::number(pasvMin), QString::number(pasvMax),
             FilePath(QStringLiteral("commands.log")), FilePath(QStringLiteral("pyftpdlib.log"))}};
}

QString PyftpdlibServer::Diagnostics() const
{
    return TailOf(FilePath(QStringLiteral("pyftpdlib.log")), 20);
}

QStringList PyftpdlibServer::CommandsSeen() const
{
    QStringList seen;
    for (const QByteArray& line : CompleteLines(FilePath(QStringLiteral("commands.log"))))
        seen.append(QString::fromUtf8(Unescape(line)));
    return seen;
}
