#include "FTPSessionClass.h"

#include "FTPReply.h"
#include "FirmwareServer.h"

#include <QPointer>
#include <QSslConfiguration>

void FTPSessionClass::Logon()
{
    FTPSessionType = QStringLiteral("Logon");
    NT = false;
    NextFTPStep(QStringLiteral("CONNECT"), QString(), FirmwareServer::ConnectingMessage());
    Buffer.clear();
    ResetConnectionTimer();
    DropSockets(false);
    DataSocket = new FTPDataSocket(this);
    DataSocket->setParent(&m_socketOwner);
    CommandSocket = new FTPCommandSocket(this);
    CommandSocket->setParent(&m_socketOwner);
    if (FTPS) {
        CommandSocket->SetConnectionType(FTPCommandSocket::kConnectionTypeTLS);
        CommandSocket->SetSecure(false);
        if (!TrustedCertificates.isEmpty()) {
            QSslConfiguration configuration = CommandSocket->sslConfiguration();
            configuration.addCaCertificates(TrustedCertificates);
            CommandSocket->setSslConfiguration(configuration);
        }
    }
    IgnoreCancel = true;
    CommandSocket->Connect(ServerAddress, CommandPort);
}

// Secures the open control connection and waits on the event loop for the
// handshake. The wait ends with the handshake, or with the session: a failed
// handshake, a dropped connection and the inactivity timer all end it.
bool FTPSessionClass::WaitForTLS()
{
    if (!CommandSocket) {
        EndFTPSession(QStringLiteral("Command Socket is no longer active."));
        return false;
    }
    QPointer<FTPCommandSocket> socket = CommandSocket;
    const quint64 endsBefore = m_endCount;
    socket->SetSecure(true);
    while (socket && !socket->SSLConnected()) {
        if (m_endCount != endsBefore || socket != CommandSocket || socket->state() == QAbstractSocket::UnconnectedState)
            return false;
        socket->Poll();
    }
    return socket && m_endCount == endsBefore && socket == CommandSocket;
}

void FTPSessionClass::ExecuteLogonSteps(const QString& line, int code)
{
    if (!FTPFinalLineA(line))
        return;

    if (AtStep("CONNECT")) {
        if (code != 220 && code != 530)
            return UnexpectedReply(line);
        if (line.contains(QLatin1String("Microsoft"), Qt::CaseInsensitive))
            NT = true;
        if (FTPS)
            NextFTPStep(QStringLiteral("AUTH"), QStringLiteral("AUTH TLS"), QStringLiteral("\"Sending AUTH\""));
        else
            NextFTPStep(QStringLiteral("USER"), QStringLiteral("USER ") + ServerUserID, QStringLiteral("Send UserID"));
    } else if (AtStep("AUTH")) {
        if (code != 234)
            return UnexpectedReply(line, true);
        if (!WaitForTLS())
            return;
        NextFTPStep(QStringLiteral("PBSZ"), QStringLiteral("PBSZ 0"), QStringLiteral("Sending PBSZ"));
    } else if (AtStep("PBSZ")) {
        if (code != 200)
            return UnexpectedReply(line, true);
        NextFTPStep(QStringLiteral("PROT"), QStringLiteral("PROT P"), QStringLiteral("Sending PROT"));
    } else if (AtStep("PROT")) {
        // A refusal of a private data channel (534) still lets the log-on go on.
        if (code != 200 && code != 534)
            return UnexpectedReply(line, true);
        NextFTPStep(QStringLiteral("USER"), QStringLiteral("USER ") + ServerUserID, QStringLiteral("Send UserID"));
    } else if (AtStep("USER")) {
        if (code != 331)
            return UnexpectedReply(line);
        NextFTPStep(QStringLiteral("PASS"), QStringLiteral("PASS ") + ServerPassword, QStringLiteral("Send Password"));
    } else if (AtStep("PASS")) {
        if (code != 230)
            return UnexpectedReply(line);
        StopTimer();
        ReportSuccess(QStringLiteral("Connected to Corvane server."));
    } else {
        UnknownStep();
    }
}

void FTPSessionClass::Logoff()
{
    if (!EnterOperation(QStringLiteral("Logoff")))
        return;
    NextFTPStep(QStringLiteral("QUIT"), QStringLiteral("QUIT"), QStringLiteral("Send Logoff Command"));
}

void FTPSessionClass::ExecuteLogoffSteps(const QString& line, int code)
{
    Q_UNUSED(code);
    if (!FTPFinalLineA(line))
        return;
    if (AtStep("QUIT")) {
        if (CommandSocket)
            Buffer += CommandSocket->ReadAll();
        // The sockets stay for the server to close; its close at QUIT reports nothing.
        EndFTPSession(QStringLiteral("Logoff Complete."));
    } else {
        UnknownStep();
    }
}
