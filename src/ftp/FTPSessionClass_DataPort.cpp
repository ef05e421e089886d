#include "FTPSessionClass.h"

#include "FTPReply.h"

#include <QRandomGenerator>

void FTPSessionClass::SetDataPortRange(int start, int end)
{
    DataPortStart = start;
    DataPortEnd = end;
    DataPort = static_cast<int>(start + QRandomGenerator::global()->generateDouble() * (end - start));
}

void FTPSessionClass::NextDataPort()
{
    ++DataPort;
    if (DataPort > DataPortEnd)
        DataPort = DataPortStart;
}

QString FTPSessionClass::BuildPortString() const
{
    const QHostAddress local = CommandSocket ? CommandSocket->localAddress() : QHostAddress();
    return FTPPortArgument(local, DataPort);
}

int FTPSessionClass::CalculatePassivePort(const QString& line)
{
    return FTPPassivePort(line).value_or(0);
}

QString FTPSessionClass::CalculatePassiveAddress(const QString& line)
{
    return FTPPassiveAddress(line);
}

bool FTPSessionClass::CalcSetPassivePort(const QString& line)
{
    const std::optional<quint16> port = FTPPassivePort(line);
    if (!port) {
        EndFTPSession(QStringLiteral("Error: The server's passive mode reply names no valid port: ") + line);
        return false;
    }
    SetPassivePort(*port);
    return true;
}

void FTPSessionClass::SetPassivePort(int port)
{
    // The reply's own address is not used: the data connection goes to the
    // server the control connection reached, whatever a server behind a
    // translating router believes its address to be.
    if (DataSocket && CommandSocket)
        DataSocket->Connect(CommandSocket->peerAddress().toString(), port);
}

// Listens on DataPort, or on the next free port of the range when another
// program holds it, so that the PORT command names a port that really waits.
bool FTPSessionClass::OpenActiveDataPort()
{
    if (!DataSocket || !CommandSocket) {
        EndFTPSession(QStringLiteral("Data Socket is no longer active."));
        return false;
    }
    const int tries = DataPortEnd - DataPortStart + 1;
    for (int i = 0; i < tries; ++i) {
        if (DataSocket->Listen(CommandSocket->localAddress(), DataPort))
            return true;
        NextDataPort();
    }
    EndFTPSession(QStringLiteral("Error: No free data port from %1 to %2.").arg(DataPortStart).arg(DataPortEnd));
    return false;
}

bool FTPSessionClass::RunDataFrontSteps(const QString& line, int code, const StepCommand& next)
{
    if (AtStep("START")) {
        if (PassiveMode)
            NextFTPStep(QStringLiteral("PASV"), QStringLiteral("PASV"), QStringLiteral("Passive Mode"));
        else
            NextFTPStep(QStringLiteral("NOTPASV"), QStringLiteral("NOOP"), QString());
    } else if (AtStep("PASV")) {
        if (code != 227)
            UnexpectedReply(line);
        else if (CalcSetPassivePort(line))
            NextFTPStep(next.step, next.command, next.statusText);
    } else if (AtStep("NOTPASV")) {
        if (code != 200)
            UnexpectedReply(line);
        else if (OpenActiveDataPort())
            NextFTPStep(QStringLiteral("PORT"), QStringLiteral("PORT ") + BuildPortString(),
                        QStringLiteral("Set data port to: ") + QString::number(DataPort));
    } else if (AtStep("PORT")) {
        if (code != 200)
            UnexpectedReply(line);
        else
            NextFTPStep(next.step, next.command, next.statusText);
    } else {
        return false;
    }
    return true;
}

void FTPSessionClass::DeleteSingleFile()
{
    StartOperation(QStringLiteral("DeleteSingleFile"), QStringLiteral("Send Delete Single File Command"));
}

void FTPSessionClass::ExecuteDeleteSingleFileSteps(const QString& line, int code)
{
    if (!FTPFinalLineB(line))
        return;
    if (RunDataFrontSteps(line, code, {QStringLiteral("TYPE"), QStringLiteral("TYPE ") + FTPTransferType,
                                       QStringLiteral("Change transfer type.")}))
        return;
    if (AtStep("TYPE")) {
        if (code != 200)
            return UnexpectedReply(line);
        NextFTPStep(QStringLiteral("DELETEFILE"), QStringLiteral("NOOP"), QStringLiteral("Deleting file..."));
    } else if (AtStep("DELETEFILE")) {
        if (code != 200)
            return UnexpectedReply(line);
        const QString name = GetNextFileName();
        if (DataSocket)
            DataSocket->PutFileName(name);
        NextFTPStep(QStringLiteral("DELE"), QStringLiteral("DELE ") + name, QStringLiteral("Deleting ") + name);
    } else if (AtStep("DELE")) {
        if (code != 250)
            return UnexpectedReply(line);
        StopTimer();
        ReportSuccess(QStringLiteral("File has been deleted."));
    } else {
        UnknownStep();
    }
}

void FTPSessionClass::GetStatus()
{
    StartOperation(QStringLiteral("GetStatus"), QStringLiteral("Send Get Status Command"));
}

void FTPSessionClass::ExecuteStatusSteps(const QString& line, int code)
{
    RunStatusSteps(line, code, {QStringLiteral("STATUS"), QStringLiteral("STAT"), QStringLiteral("Get System Status")});
}

void FTPSessionClass::GetSystemInfo()
{
    StartOperation(QStringLiteral("GetSystemInfo"), QStringLiteral("Send Get System Info Command"));
}

void FTPSessionClass::ExecuteSystemInfoSteps(const QString& line, int code)
{
    RunStatusSteps(line, code, {QStringLiteral("SYSTEM"), QStringLiteral("SYST"), QStringLiteral("Get system information.")});
}

// GetStatus and GetSystemInfo differ only in the query and its reply code.
void FTPSessionClass::RunStatusSteps(const QString& line, int code, const StepCommand& query)
{
    if (!FTPFinalLineA(line))
        return;
    if (RunDataFrontSteps(line, code, {QStringLiteral("NEXT"), QStringLiteral("NOOP"), QStringLiteral("NOOP")}))
        return;
    const int answer = query.step == QLatin1String("STATUS") ? 211 : 215;
    if (AtStep("NEXT")) {
        if (code != 200)
            return UnexpectedReply(line);
        NextFTPStep(query.step, query.command, query.statusText);
    } else if (AtStep(query.step.toLatin1().constData())) {
        if (code == 150 || code == 125) {
            if (DataSocket)
                DataSocket->Poll();
        } else if (code == answer) {
            StopTimer();
            ReportSuccess(QStringLiteral("System information received."));
        } else {
            UnexpectedReply(line);
        }
    } else {
        UnknownStep();
    }
}
