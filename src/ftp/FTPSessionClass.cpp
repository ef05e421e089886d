#include "FTPSessionClass.h"

#include "Clock.h"
#include "DoEvents.h"
#include "FTPReply.h"
#include "FTPSocketError.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QPointer>
#include <QRandomGenerator>
#include <QStringDecoder>
#include <QStringEncoder>

#include <algorithm>
#include <iterator>
#include <utility>

#include <array>

Q_LOGGING_CATEGORY(lcFtpSteps, "vexil.ftp.steps", QtWarningMsg)

namespace {

// An object the session drops may be inside its own event now: it goes later,
// held by the application meanwhile so that nothing is left behind at exit.
void DeleteLater(QObject* object)
{
    object->setParent(QCoreApplication::instance());
    object->deleteLater();
}

} // namespace

FTPSessionClass::FTPSessionClass(Globals& globals, Clock& clock)
    : m_globals(globals), m_clock(clock)
{
    Construct();
    FileDelimiter = QStringLiteral(":");
    FTPCommandCRLF = QByteArrayLiteral("\r\n");
    ConnectionTimer = std::make_unique<FTPConnectionTimer>(this);
    SessionStartTime = static_cast<double>(m_clock.Microseconds());
}

FTPSessionClass::FTPSessionClass(Globals& globals, Clock& clock, const QString& id)
    : m_globals(globals), m_clock(clock)
{
    Construct();
    ID = id;
    FileDelimiter = QStringLiteral(":");
    FTPCommandCRLF = QByteArrayLiteral("\r\n");
    ConnectionTimer = std::make_unique<FTPConnectionTimer>(this);
    SessionStartTime = static_cast<double>(m_clock.Microseconds());
}

FTPSessionClass::~FTPSessionClass()
{
    // Any of these may be running its own event now, the deletion inside it.
    DropSockets(true);
    if (ConnectionTimer) {
        ConnectionTimer->stop();
        ConnectionTimer->Session = nullptr;
        if (ConnectionTimer->Firing)
            DeleteLater(ConnectionTimer.release());
    }
}

// The defaults both constructors share, in their order.
void FTPSessionClass::Construct()
{
    DataPortStart = 30003;
    DataPortEnd = 30100;
    DataPort = static_cast<int>(30003.0 + QRandomGenerator::global()->generateDouble() * (DataPortEnd - DataPortStart));
    CommandPort = 21;
    Timeout = 20000;
    SendBufferSize = 2048;
    ServerTextEncoding = QStringConverter::Latin1;
    PassiveMode = true;
    FTPTransferType = QStringLiteral("I");
    ShowInvisible = false;
    UseNameList = false;
    SetStatusReporting(true);
}

void FTPSessionClass::SetLoginInfo(const QString& server, const QString& userID, const QString& password)
{
    ServerAddress = server;
    ServerUserID = userID;
    ServerPassword = password;
}

void FTPSessionClass::SetStatusReporting(bool on)
{
    if (on)
        FTPStatusInstance = std::make_unique<FTPStatusClass>(m_globals, this);
}

void FTPSessionClass::SetLocalFolderItem(const QFileInfo& item)
{
    LocalDirectory = item.absolutePath() + QLatin1Char('/');
    if (!item.isDir())
        AddFileName(item.fileName());
}

QString FTPSessionClass::GetNextFileName()
{
    return Files.isEmpty() ? QString() : Files.takeLast();
}

QFileInfo FTPSessionClass::GetNextFolderItem()
{
    return FileFolderItems.isEmpty() ? QFileInfo() : FileFolderItems.takeLast();
}

QString FTPSessionClass::Decode(const QByteArray& bytes) const
{
    QStringDecoder decoder(ServerTextEncoding);
    return decoder(bytes);
}

void FTPSessionClass::NextFTPStep(const QString& step, const QString& command, const QString& statusText)
{
    ResetConnectionTimer();
    qCDebug(lcFtpSteps) << FTPSessionType << CurrentFTPStep << "->" << step;
    CurrentFTPStep = step;

    const bool force = command.compare(QLatin1String("FORCENOOP"), Qt::CaseInsensitive) == 0;
    if (!force && command.compare(QLatin1String("NOOP"), Qt::CaseInsensitive) == 0) {
        // A local step: the machine moves on as if the server had said 200,
        // with no round trip and no report of the step text.
        Buffer = QByteArrayLiteral("200 NOOP command successful.") + FTPCommandCRLF;
        m_localStep = true;
        ParseCommandBuffer();
        return;
    }

    const QString sent = force ? QStringLiteral("NOOP") : command;
    if (!sent.isEmpty() && CommandSocket) {
        QStringEncoder encoder(ServerTextEncoding);
        CommandSocket->Write(QByteArray(encoder(sent)) + FTPCommandCRLF);
    }

    if (FTPStatusInstance) {
        FTPStatusInstance->Session = this;
        const auto alive = Alive();
        // No password reaches a report.
        FTPStatusInstance->Response_FTP(command.contains(QLatin1String("PASS"), Qt::CaseInsensitive)
                                            ? QStringLiteral("PASS")
                                            : command);
        // The report may run events that end or delete the session or drop the sink.
        if (!alive.expired() && FTPStatusInstance)
            FTPStatusInstance->Status_FTP(statusText);
    }
}

void FTPSessionClass::CommandDataAvailable(FTPCommandSocket* socket)
{
    ReceiveControlBytes(socket->ReadAll(), socket);
}

void FTPSessionClass::ReceiveControlBytes(const QByteArray& bytes, FTPCommandSocket* from)
{
    // A session deleted, or a socket it dropped (the pass of the event loop may
    // even have deleted the socket), while the lines were handled stops here.
    const auto alive = Alive();
    const QPointer<FTPCommandSocket> socket = from;
    const auto current = [&] { return !alive.expired() && (!from || (socket && socket->Session == this)); };
    Buffer += bytes;
    while (current() && Buffer.contains(FTPCommandCRLF)) {
        ParseCommandBuffer();
        DoEvents(-1);
    }
    if (current() && Buffer.size() > kMaxReplyLineBytes) {
        Buffer.clear();
        CancelFTPSession(QStringLiteral("Error: The server sent a reply line longer than %1 bytes. Ending session.")
                             .arg(kMaxReplyLineBytes));
    }
}

void FTPSessionClass::CommandSocketError(FTPCommandSocket* socket, int code)
{
    if (socket != CommandSocket)
        return;
    if (!m_controlConnected && m_connectError == 0)
        m_connectError = code;
    // The server's close after QUIT is the expected end of a log-off.
    if (GetCurrentFTPStep().compare(QLatin1String("QUIT"), Qt::CaseInsensitive) == 0)
        return;
    EndFTPSession(QStringLiteral("Error: ") + QString::number(code));
}

void FTPSessionClass::ParseCommandBuffer()
{
    // A local step's own 200 is no word from the server about what it owes.
    const bool local = std::exchange(m_localStep, false);
    ResetConnectionTimer();
    const qsizetype end = Buffer.indexOf(FTPCommandCRLF);
    if (end < 0)
        return;
    const QString line = Decode(Buffer.left(end));
    const int code = FTPReplyCode(line);
    Buffer.remove(0, end + FTPCommandCRLF.size());
    const auto alive = Alive();
    if (FTPStatusInstance)
        FTPStatusInstance->Response_FTP(line);
    if (alive.expired())
        return;
    // The final reply of a transfer that ended before it came is set aside
    // whole: the server answers in order, so it precedes any later answer. A
    // code no transfer ends with means the server owed nothing after all.
    static constexpr int transferEnds[] = {226, 425, 426, 450, 451, 452, 551, 552};
    if (!local && m_lateReplyOwed && std::find(std::begin(transferEnds), std::end(transferEnds), code) != std::end(transferEnds)) {
        if (FTPFinalLineB(line)) {
            m_lateReplyOwed = m_finalOwed = false;
            if (FTPStatusInstance)
                FTPStatusInstance->Status_FTP(QStringLiteral("Late reply of the ended transfer set aside: ") + line);
        }
        return;
    }
    if (!local && code >= 200)
        m_lateReplyOwed = false;
    if (!local && FTPFinalLineB(line))
        m_finalOwed = code >= 100 && code < 200;
    Dispatch(line, code);
}

void FTPSessionClass::ParseCommandBuffer(int code)
{
    ResetConnectionTimer();
    // A line that passes both final-line tests.
    Dispatch(QStringLiteral("x     "), code);
}

void FTPSessionClass::Dispatch(const QString& line, int code)
{
    using Machine = void (FTPSessionClass::*)(const QString&, int);
    struct Route {
        const char* type;
        Machine machine;
    };
    // In the order of testing.
    static const std::array<Route, 31> routes{{
        {"AbortTransfer", &FTPSessionClass::ExecuteAbortTransferSteps},
        {"ChangeDir", &FTPSessionClass::ExecuteChangeDirSteps},
        {"ParentDir", &FTPSessionClass::ExecuteParentDirSteps},
        {"PutDir", &FTPSessionClass::ExecutePutDirSteps},
        {"PutDirImmediate", &FTPSessionClass::ExecutePutDirImmediateSteps},
        {"PutFile", &FTPSessionClass::ExecutePutFileSteps},
        {"PutSingleFile", &FTPSessionClass::ExecutePutSingleFileSteps},
        {"RestartPutSingleFile", &FTPSessionClass::ExecuteRestartPutSingleFileSteps},
        {"GetDirList", &FTPSessionClass::ExecuteGetDirListSteps},
        {"GetDirListImmediate", &FTPSessionClass::ExecuteGetDirListImmediateSteps},
        {"GetFile", &FTPSessionClass::ExecuteGetFileSteps},
        {"GetSingleFile", &FTPSessionClass::ExecuteGetSingleFileSteps},
        {"RestartGetSingleFile", &FTPSessionClass::ExecuteRestartGetSingleFileSteps},
        {"GetDir", &FTPSessionClass::ExecuteGetDirSteps},
        {"GetDirImmediate", &FTPSessionClass::ExecuteGetDirImmediateSteps},
        {"DeleteFile", &FTPSessionClass::ExecuteDeleteFileSteps},
        {"DeleteSingleFile", &FTPSessionClass::ExecuteDeleteSingleFileSteps},
        {"DeleteDir", &FTPSessionClass::ExecuteDeleteDirSteps},
        {"DeleteDirImmediate", &FTPSessionClass::ExecuteDeleteDirImmediateSteps},
        {"RemoveDir", &FTPSessionClass::ExecuteRemoveDirSteps},
        {"MakeDir", &FTPSessionClass::ExecuteMakeDirSteps},
        {"RenameFile", &FTPSessionClass::ExecuteRenameFileSteps},
        {"RenameSingleFile", &FTPSessionClass::ExecuteRenameSingleFileSteps},
        {"ChmodSingleFile", &FTPSessionClass::ExecuteChmodSingleFileSteps},
        {"GetWorkingDir", &FTPSessionClass::ExecuteGetWorkingDirSteps},
        {"Logon", &FTPSessionClass::ExecuteLogonSteps},
        {"Logoff", &FTPSessionClass::ExecuteLogoffSteps},
        {"GetSystemInfo", &FTPSessionClass::ExecuteSystemInfoSteps},
        {"GetStatus", &FTPSessionClass::ExecuteStatusSteps},
        {"SITECommand", &FTPSessionClass::ExecuteSITESteps},
        {"DirectCommand", &FTPSessionClass::ExecuteDirectCommandSteps},
    }};
    for (const Route& route : routes) {
        if (FTPSessionType.compare(QLatin1String(route.type), Qt::CaseInsensitive) == 0) {
            (this->*route.machine)(line, code);
            return;
        }
    }
}

void FTPSessionClass::ResetConnectionTimer()
{
    if (!ConnectionTimer)
        ConnectionTimer = std::make_unique<FTPConnectionTimer>(this);
    ConnectionTimer->start(Timeout);
}

void FTPSessionClass::StopTimer()
{
    if (ConnectionTimer)
        ConnectionTimer->stop();
}

bool FTPSessionClass::SuccessfulMessage(const QString& text)
{
    static const std::array<const char*, 14> successes{
        "File has been deleted.",
        "The file list has been transferred.",
        "File Transfer Complete.",
        "File Rename Complete.",
        "The directory has been deleted.",
        "Directory Transfer Complete.",
        "Directory Change Complete.",
        "Empty Directory Removed.",
        "Directory Created.",
        "The working directory has been transferred.",
        "Connected to Corvane server.",
        "Logoff Complete.",
        "Chmod Command Complete.",
        "System information received.",
    };
    for (const char* success : successes) {
        if (text.compare(QLatin1String(success), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

void FTPSessionClass::ReportEnd(const QString& text)
{
    if (!FTPStatusInstance)
        return;
    if (SuccessfulMessage(text))
        FTPStatusInstance->Successful_FTP(text);
    else
        FTPStatusInstance->Error_FTP(text);
}

int FTPSessionClass::ConnectFailure() const
{
    if (m_controlConnected)
        return 0;
    return m_connectError != 0 ? m_connectError : FTPSocketError::kTimedOut;
}

void FTPSessionClass::EndFTPSession(const QString& text)
{
    ++m_endCount;
    m_lateReplyOwed = m_lateReplyOwed || m_finalOwed;
    const auto alive = Alive();
    if (!text.isEmpty())
        ReportEnd(text);
    if (alive.expired())
        return;
    StopTimer();
    if (!IgnoreCancel)
        DropSockets(true);
}

void FTPSessionClass::CancelFTPSession(const QString& text)
{
    ++m_endCount;
    m_lateReplyOwed = m_lateReplyOwed || m_finalOwed;
    const auto alive = Alive();
    ReportEnd(text);
    if (alive.expired())
        return;
    StopTimer();
    DropSockets(true);
}

void FTPSessionClass::DropSockets(bool close)
{
    if (CommandSocket) {
        FTPCommandSocket* socket = CommandSocket;
        CommandSocket = nullptr;
        socket->Session = nullptr;
        if (close)
            socket->close();
        DeleteLater(socket);
    }
    if (DataSocket) {
        FTPDataSocket* socket = DataSocket;
        DataSocket = nullptr;
        socket->Session = nullptr;
        if (close)
            socket->Close();
        DeleteLater(socket);
    }
}

bool FTPSessionClass::SocketsActive()
{
    if (!DataSocket) {
        EndFTPSession(QStringLiteral("Data Socket is no longer active."));
        return false;
    }
    if (!CommandSocket) {
        EndFTPSession(QStringLiteral("Command Socket is no longer active."));
        return false;
    }
    if (!CommandSocket->IsConnected()) {
        EndFTPSession(QStringLiteral("Connection Lost."));
        return false;
    }
    return true;
}

double FTPSessionClass::CalcSessionTime() const
{
    return (static_cast<double>(m_clock.Microseconds()) - SessionStartTime) / 1000000.0;
}

bool FTPSessionClass::AtStep(const char* step) const
{
    return CurrentFTPStep.compare(QLatin1String(step), Qt::CaseInsensitive) == 0;
}

bool FTPSessionClass::Codes::Accepts(int code) const
{
    if (first == kAnyCode)
        return true;
    if (first == kAny2xx)
        return code / 100 == 2;
    return code == first || code == second;
}

void FTPSessionClass::RunSteps(const QString& line, int code, FinalTest test, const StepRows& rows)
{
    if (!(test == FinalTest::A ? FTPFinalLineA(line) : FTPFinalLineB(line)))
        return;
    bool known = false;
    for (const StepRow& row : rows) {
        if (!AtStep(row.step))
            continue;
        known = true;
        if (row.codes.Accepts(code))
            return row.action();
    }
    if (known)
        UnexpectedReply(line);
    else
        UnknownStep();
}

void FTPSessionClass::UnexpectedReply(const QString& line)
{
    const bool tlsStep = AtStep("AUTH") || AtStep("PBSZ") || AtStep("PROT");
    const QString separator = tlsStep ? QStringLiteral("\r") : QStringLiteral("\n");
    EndFTPSession(QStringLiteral("Error: ") + line + separator + Decode(Buffer));
}

void FTPSessionClass::UnknownStep()
{
    EndFTPSession(QStringLiteral("Unknown error during (") + CurrentFTPStep + QStringLiteral(")."));
}

void FTPSessionClass::ReportSuccess(const QString& text)
{
    if (FTPStatusInstance)
        FTPStatusInstance->Successful_FTP(text);
}

void FTPSessionClass::StartOperation(const QString& type, const QString& entryText)
{
    if (EnterOperation(type))
        NextFTPStep(QStringLiteral("START"), QStringLiteral("NOOP"), entryText);
}

bool FTPSessionClass::EnterOperation(const QString& type)
{
    if (!SocketsActive())
        return false;
    FTPSessionType = type;
    // Cleared and re-armed before the first step rather than after it: the
    // first step's reports pump events, and a quick server's final reply can be
    // handled inside them; re-arming afterwards would revive a stopped timer.
    Buffer.clear();
    ResetConnectionTimer();
    IgnoreCancel = true;
    return true;
}
