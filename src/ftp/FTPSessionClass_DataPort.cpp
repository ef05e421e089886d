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

void FTPSessionClass::EnterDataFront(const DataFrontSteps& steps)
{
    const QString text = QLatin1String(steps.text);
    if (PassiveMode)
        NextFTPStep(steps.pasv, "PASV", text + "Passive Mode");
    else
        NextFTPStep(steps.notpasv, "NOOP", text + "Active Mode");
}

FTPSessionClass::StepRows FTPSessionClass::DataFront(const QString& line, const StepCommand& next)
{
    return DataFront(line, [this, next] { NextFTPStep(next.step, next.command, next.statusText); });
}

FTPSessionClass::StepRows FTPSessionClass::DataFront(const QString& line, std::function<void()> onward,
                                                     const DataFrontSteps& steps)
{
    const QString text = QLatin1String(steps.text);
    return {
        {"START", kAnyCode, [this] { EnterDataFront(); }},
        {steps.pasv, 227, [=, this] {
            if (CalcSetPassivePort(line))
                NextFTPStep(steps.port, "NOOP", text + "Connect to host-supplied port.");
        }},
        {steps.notpasv, 200, [=, this] {
            if (OpenActiveDataPort())
                NextFTPStep(steps.port, "PORT " + BuildPortString(), text + "Set data port to: " + QString::number(DataPort));
        }},
        {steps.port, 200, onward},
    };
}

FTPSessionClass::StepRow FTPSessionClass::DataEnd(const char* step, const QString& statusText, std::function<void()> done)
{
    return {step, 200, [this, step, statusText, done] {
        if (!DataSocket || DataSocket->TransferDone())
            done();
        else
            NextFTPStep(step, "FORCENOOP", statusText);
    }};
}

void FTPSessionClass::DeleteSingleFile()
{
    StartOperation("DeleteSingleFile", "Send Delete Single File Command");
}

void FTPSessionClass::ExecuteDeleteSingleFileSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, DeleteWalk(line));
}

FTPSessionClass::StepRows FTPSessionClass::DeleteWalk(const QString& line)
{
    return DataFront(line, {"TYPE", "TYPE " + FTPTransferType, "Change transfer type."}) + StepRows{
        {"TYPE", 200, [this] { NextFTPStep("DELETEFILE", "NOOP", "Deleting file..."); }},
        {"DELETEFILE", 200, [this] {
            const QString name = GetNextFileName();
            if (DataSocket)
                DataSocket->PutFileName(name);
            NextFTPStep("DELE", "DELE " + name, "Deleting " + name);
        }},
        {"DELE", 250, [this] { StopTimer(); ReportSuccess("File has been deleted."); }},
    };
}

void FTPSessionClass::GetStatus()
{
    StartOperation("GetStatus", "Send Get Status Command");
}

void FTPSessionClass::GetSystemInfo()
{
    StartOperation("GetSystemInfo", "Send Get System Info Command");
}

void FTPSessionClass::ExecuteStatusSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, DataFront(line, {"NEXT", "NOOP", "NOOP"}) + StepRows{
        {"NEXT", 200, [this] { NextFTPStep("STATUS", "STAT", "Get System Status"); }},
        {"STATUS", {150, 125}, [this] { DataSocket ? DataSocket->Poll() : void(); }},
        {"STATUS", 211, [this] { StopTimer(); ReportSuccess("System information received."); }},
    });
}

void FTPSessionClass::ExecuteSystemInfoSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, DataFront(line, {"NEXT", "NOOP", "NOOP"}) + StepRows{
        {"NEXT", 200, [this] { NextFTPStep("SYSTEM", "SYST", "Get system information."); }},
        {"SYSTEM", {150, 125}, [this] { DataSocket ? DataSocket->Poll() : void(); }},
        {"SYSTEM", 215, [this] { StopTimer(); ReportSuccess("System information received."); }},
    });
}
