#include "FTPSessionClass.h"

#include "FTPReply.h"
#include "FirmwareServer.h"

#include <QPointer>
#include <QSslConfiguration>

void FTPSessionClass::Logon()
{
    FTPSessionType = QStringLiteral("Logon");
    NT = false;
    // As in StartSequence: the earlier connection goes before the first report.
    DropSockets(false);
    const auto alive = Alive();
    NextFTPStep(QStringLiteral("CONNECT"), QString(), FirmwareServer::ConnectingMessage());
    if (alive.expired())
        return;
    Buffer.clear();
    ResetConnectionTimer();
    IgnoreCancel = true;
    OpenConnection();
}

void FTPSessionClass::OpenConnection()
{
    DropSockets(false);
    DataSocket = new FTPDataSocket(this);
    CommandSocket = new FTPCommandSocket(this);
    if (FTPS) {
        CommandSocket->SetConnectionType(FTPCommandSocket::kConnectionTypeTLS);
        CommandSocket->SetSecure(false);
        QSslConfiguration configuration = CommandSocket->sslConfiguration();
        // Adding even none would stop the system's roots loading on demand.
        if (!TrustedCertificates.isEmpty())
            configuration.addCaCertificates(TrustedCertificates);
        // The data connections resume this connection's session.
        configuration.setSslOption(QSsl::SslOptionDisableSessionPersistence, false);
        CommandSocket->setSslConfiguration(configuration);
    }
    // A new connection owes nothing, and tells whether it was ever made.
    m_controlConnected = false;
    m_connectError = 0;
    m_finalOwed = m_lateReplyOwed = false;
    QObject::connect(CommandSocket, &QAbstractSocket::connected, CommandSocket, [this] { m_controlConnected = true; });
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
    const auto alive = Alive();
    socket->SetSecure(true);
    while (socket && !socket->SSLConnected()) {
        if (alive.expired())
            return false;
        if (m_endCount != endsBefore || socket != CommandSocket || socket->state() == QAbstractSocket::UnconnectedState)
            return false;
        socket->Poll();
    }
    return !alive.expired() && socket && m_endCount == endsBefore && socket == CommandSocket;
}

FTPSessionClass::StepRows FTPSessionClass::LogonFront(const QString& line, Codes userCodes)
{
    const auto user = [this] { NextFTPStep("USER", "USER " + ServerUserID, "Send UserID"); };
    return {
        {"CONNECT", {220, 530}, [=, this] {
            if (line.contains(QLatin1String("Microsoft"), Qt::CaseInsensitive))
                NT = true;
            if (FTPS)
                NextFTPStep("AUTH", "AUTH TLS", "\"Sending AUTH\"");
            else
                user();
        }},
        {"AUTH", 234, [this] {
            if (WaitForTLS())
                NextFTPStep("PBSZ", "PBSZ 0", "Sending PBSZ");
        }},
        {"PBSZ", 200, [this] { NextFTPStep("PROT", "PROT P", "Sending PROT"); }},
        {"PROT", 200, [=, this] {
            if (DataSocket)
                DataSocket->SetPrivate(true);
            user();
        }},
        // A refusal of a private data channel still lets the log-on go on, in plain.
        {"PROT", 534, user},
        {"USER", userCodes, [this] { NextFTPStep("PASS", "PASS " + ServerPassword, "Send Password"); }},
    };
}

FTPSessionClass::StepRows FTPSessionClass::LogonPrefix(const QString& line, std::function<void()> then, const char* cwdStep)
{
    return LogonFront(line, {331, 230}) + StepRows{
        {"PASS", 230, [=, this] {
            const QString dir = GetServerDirectoryPathName();
            if (dir.isEmpty())
                then();
            else
                NextFTPStep(cwdStep, "CWD " + dir, "Change directory to: " + dir);
        }},
        {cwdStep, 250, then},
    };
}

FTPSessionClass::StepRow FTPSessionClass::QuitEnd(const QString& text)
{
    return {"QUIT", kAnyCode, [this, text] {
        if (CommandSocket)
            Buffer += CommandSocket->ReadAll();
        StopTimer();
        EndFTPSession(text);
    }};
}

void FTPSessionClass::ExecuteLogonSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, LogonFront(line, 331) + StepRows{
        {"PASS", 230, [this] { StopTimer(); ReportSuccess("Connected to Corvane server."); }},
    });
}

void FTPSessionClass::Logoff()
{
    if (!EnterOperation(QStringLiteral("Logoff")))
        return;
    NextFTPStep(QStringLiteral("QUIT"), QStringLiteral("QUIT"), QStringLiteral("Send Logoff Command"));
}

void FTPSessionClass::ExecuteLogoffSteps(const QString& line, int code)
{
    // The sockets stay for the server to close; its close at QUIT reports nothing.
    RunSteps(line, code, FinalTest::A, {QuitEnd("Logoff Complete.")});
}
