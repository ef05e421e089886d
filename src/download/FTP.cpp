#include "FTP.h"

#include "FTPDataSocket.h"
#include "FTPDirList.h"
#include "FTPSocketError.h"
#include "Window1Firmware.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTimer>

#include <cerrno>
#include <cstdio>
#include <limits>

namespace {

QString Quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// A listed name as the trace shows it: control characters would garble the log.
QString Printable(QString text)
{
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control)
            c = QLatin1Char('?');
    }
    return text;
}

} // namespace

FTP::FTP(Window1Firmware& window)
    : m_window(window), m_deadlineUs(std::numeric_limits<qint64>::max())
{
}

void FTP::BeginRun(qint64 boundMs)
{
    m_deadlineUs = m_window.clock().Microseconds() + boundMs * 1000;
}

bool FTP::IsPlainName(const QString& name)
{
    return FTPIsPlainName(name) && !name.contains(QLatin1String(".."));
}

template <typename Operation>
bool FTP::Run(Operation operation)
{
    Globals& globals = m_window.globals();
    globals.FTPDone = false;
    globals.FTPError = false;
    if (!Session)
        return false;
    operation(*Session);
    return Wait();
}

bool FTP::Wait()
{
    Globals& globals = m_window.globals();
    QTimer tick;
    tick.start(PumpMs);
    while (!globals.FTPDone) {
        if (m_abandoned || m_window.clock().Microseconds() >= m_deadlineUs) {
            // Ended as the session's own time-out ends an operation; the
            // control connection stays for the log-off.
            if (Session)
                Session->EndFTPSession(m_abandoned ? QStringLiteral("Download stopped: the main window is closing.")
                                                   : QStringLiteral("Error: The connection timed out. Ending session."));
            globals.FTPError = true;
            globals.FTPDone = true;
            break;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return !globals.FTPError;
}

bool FTP::FTPLogon()
{
    Session = std::make_unique<FTPSessionClass>(m_window.globals(), m_window.clock());
    Session->SetLoginInfo(ServerHost, QStringLiteral("anonymous"), QLatin1String(FirmwareServer::kAnonymousPassword));
    Session->SetStatusReporting(true);
    Session->SetTimeoutSeconds(TimeoutSeconds);
    Session->CommandPort = ServerPort;
    return Run([](FTPSessionClass& session) { session.Logon(); });
}

QString FTP::ConnectFailureText() const
{
    const int code = Session ? Session->ConnectFailure() : 0;
    const QString server = QStringLiteral("%1 (port %2)").arg(ServerHost).arg(ServerPort);
    const QString settings = QStringLiteral(" If you set FTPServer or FTPPort in the preferences, check them too.");
    switch (code) {
    case 0:
        return {};
    case FTPSocketError::kHostNotFound:
        return QStringLiteral("No connection to the firmware server: the name %1 was not found. Check that this "
                              "computer is on the network and can look up names, then try again.")
                   .arg(ServerHost)
            + settings;
    case FTPSocketError::kConnectionRefused:
        return QStringLiteral("No connection to the firmware server: %1 refused it. The server may be down; try "
                              "again later.")
                   .arg(server)
            + settings;
    case FTPSocketError::kNetwork:
        return QStringLiteral("No connection to the firmware server: there is no route to %1. Check the network "
                              "connection, then try again.")
            .arg(server);
    case FTPSocketError::kTimedOut:
        return QStringLiteral("No connection to the firmware server: %1 did not answer within %2 seconds. Check the "
                              "network connection and any firewall, then try again.")
            .arg(server)
            .arg(TimeoutSeconds);
    default:
        return QStringLiteral("No connection to the firmware server %1 (error %2). Check the network connection, "
                              "then try again.")
            .arg(server)
            .arg(code);
    }
}

void FTP::FTPLogoff()
{
    m_window.globals().FTPDone = false;
    m_window.globals().FTPError = false;
    if (Session)
        Session->Logoff();
}

bool FTP::FTPChangeDir(const QString& dir)
{
    return Run([&](FTPSessionClass& session) {
        session.SetServerDirectoryPathName(dir);
        session.ChangeDir();
    });
}

QString FTP::FTPGetDirectory()
{
    const bool listed = Run([](FTPSessionClass& session) {
        session.UseNameList = true;
        session.GetDirList();
    });
    if (!listed)
        return QStringLiteral("ERROR");
    QString list = Session->DirectoryFileList;
    return list.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

bool FTP::FTPGetFile(const QString& name)
{
    m_window.globals().FTPFile = name;
    const bool fetched = Run([&](FTPSessionClass& session) {
        session.AddFileName(name);
        session.GetSingleFile();
    });
    // The client keeps the bytes of a broken fetch beside the target for a
    // restart; a download never resumes, so nothing of it may stay behind.
    if (!fetched && Session && IsPlainName(name))
        QFile::remove(FTPDataSocket::TemporaryPathOf(QDir(Session->LocalDirectory).filePath(name)));
    return fetched;
}

bool FTP::FTPGetNewRevision(const QStringList& list, const QString& prefix, const QString& extension, int& count)
{
    QString best;
    qsizetype bestIndex = -1;
    for (qsizetype i = 0; i < list.size(); ++i) {
        const QString entry = list.at(i).trimmed();
        if (entry.left(prefix.size()).compare(prefix, Qt::CaseInsensitive) != 0
            || entry.right(4).compare(extension, Qt::CaseInsensitive) != 0)
            continue;
        // A name from the server never leads outside the folder.
        if (!IsPlainName(entry)) {
            m_window.globals().SetStatusText(
                QStringLiteral("Skipped listed name ") + Quoted(Printable(entry)) + QStringLiteral(": not a plain file name"),
                true);
            continue;
        }
        const QString revision = entry.mid(prefix.size(), std::max<qsizetype>(0, entry.size() - prefix.size() - 4));
        if (Window1Firmware::LeadingNumber(revision) > Window1Firmware::LeadingNumber(best)) {
            best = revision;
            bestIndex = i;
        }
    }
    const qint64 toBeat = prefix.compare(QLatin1String("vexil"), Qt::CaseInsensitive) == 0
        ? Window1Firmware::LeadingNumber(m_window.hmcuRevision)
        : 0;
    if (bestIndex < 0 || Window1Firmware::LeadingNumber(best) <= toBeat)
        return false;
    ++count;
    strFileName = list.at(bestIndex).trimmed();
    return FTPGetFile(strFileName);
}

bool FTP::FTPHexVerify()
{
    Globals& globals = m_window.globals();
    const QString path = globals.m_FolderPath + strFileName;
    if (m_window.m_MCULoader.Verify(path)) {
        globals.SetStatusText(Quoted(strFileName) + QStringLiteral(" verification succeeded"), true);
        return true;
    }
    globals.SetStatusText(Quoted(strFileName) + QStringLiteral(" verification failed"), false);
    if (std::remove(QFile::encodeName(path).constData()) == 0) {
        globals.SetStatusText(QStringLiteral("Deleted file ") + Quoted(strFileName), false);
    } else {
        const int error = errno;
        globals.SetStatusText(QStringLiteral("Delete failed on ") + Quoted(strFileName) + QStringLiteral(". Error ")
                                  + QString::number(error) + QLatin1Char('.'),
                              false);
    }
    return false;
}

void FTP::FTPGetNewHexRevision(const QStringList& list, const QString& prefix, int& count)
{
    // The bad file is gone and the local revision unchanged, so each round
    // finds and fetches the same file again.
    for (int failures = 0;;) {
        if (!FTPGetNewRevision(list, prefix, QStringLiteral(".hex"), count) || FTPHexVerify())
            return;
        if (++failures >= FetchAttempts) {
            m_window.globals().SetStatusText(QStringLiteral("Unable to copy file ") + Quoted(strFileName), false);
            return;
        }
    }
}
