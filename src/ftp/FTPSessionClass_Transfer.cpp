#include "FTPSessionClass.h"

#include "FTPDirList.h"

#include <QDir>
#include <QFile>

void FTPSessionClass::GetSingleFile()
{
    StartOperation("GetSingleFile", "Send Get Single File Command");
}

void FTPSessionClass::RestartGetSingleFile()
{
    StartOperation("RestartGetSingleFile", "Send Restart Get Single File Command");
}

void FTPSessionClass::PutSingleFile()
{
    StartOperation("PutSingleFile", "Send Put Single File Command");
}

void FTPSessionClass::RestartPutSingleFile()
{
    StartOperation("RestartPutSingleFile", "Send Restart Put Single File Command");
}

void FTPSessionClass::ExecuteGetSingleFileSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B,
             DataFront(line, {"TYPE", "TYPE " + FTPTransferType, "Change transfer type."}) + ReceiveWalk(false));
}

void FTPSessionClass::ExecuteRestartGetSingleFileSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B,
             DataFront(line, {"TYPE", "TYPE " + FTPTransferType, "Change transfer type."}) + ReceiveWalk(true));
}

void FTPSessionClass::ExecutePutSingleFileSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, SendWalk(line, false));
}

void FTPSessionClass::ExecuteRestartPutSingleFileSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, SendWalk(line, true));
}

FTPSessionClass::StepRows FTPSessionClass::ReceiveWalk(bool restart, std::function<void()> done)
{
    const auto retr = [this] {
        if (DataSocket)
            NextFTPStep("RETR", "RETR " + DataSocket->GetFileName(), "Get file ");
    };
    return {
        {"TYPE", 200, [this] { NextFTPStep("GETFILE", "NOOP", "Get file "); }},
        // The earlier file of this name stays until the new one is complete.
        {"GETFILE", 200, [=, this] {
            if (!DataSocket)
                return EndFTPSession("Data Socket is no longer active.");
            if (!DataSocket->PutFileName(GetNextFileName()))
                return;
            if (restart)
                NextFTPStep("REST", "REST " + QString::number(RestartByteCount), "Get file ");
            else
                retr();
        }},
        {"REST", 350, retr},
        {"RETR", restart ? Codes(150) : Codes(150, 125), [this] { DataSocket ? DataSocket->Poll() : void(); }},
        {"RETR", 226, [this] { NextFTPStep("FILEEND", "NOOP", "Get file "); }},
        DataEnd("FILEEND", "Get file ", [this, done] {
            if (CommitReceived())
                done ? done() : ReportSuccess("File Transfer Complete.");
        }),
    };
}

bool FTPSessionClass::CommitReceived()
{
    if (!DataSocket) {
        EndFTPSession("Data Socket is no longer active.");
        return false;
    }
    if (DataSocket->CommitReceivedFile())
        return true;
    EndFTPSession("Error writing local file: " + DataSocket->GetFileName());
    return false;
}

FTPSessionClass::StepRows FTPSessionClass::SendWalk(const QString& line, bool restart)
{
    // The name is taken when the data side is set up; then SIZE or STOR.
    const auto send = [this] {
        const QString name = GetNextFileName();
        if (DataSocket)
            DataSocket->PutFileName(name);
        return name;
    };
    const auto onward = [this, restart](const QString& name) {
        if (restart)
            NextFTPStep("SIZE", "SIZE " + name, "Send file ");
        else
            NextFTPStep("STOR", "STOR " + name, "Send file " + name);
    };
    return {
        {"START", kAnyCode, [this] { NextFTPStep("TYPE", "TYPE " + FTPTransferType, "Change transfer type."); }},
        {"TYPE", 200, [this] { EnterDataFront(); }},
        {"PASV", 227, [=, this] {
            const QString name = send();
            if (CalcSetPassivePort(line))
                onward(name);
        }},
        {"NOTPASV", 200, [=, this] {
            // A server may connect as soon as it has the port, before its 200:
            // by then the data side must know which file it sends.
            send();
            if (OpenActiveDataPort())
                NextFTPStep("PORT", "PORT " + BuildPortString(), "Set data port to: " + QString::number(DataPort));
        }},
        {"PORT", 200, [=, this] { onward(DataSocket ? DataSocket->GetFileName() : QString()); }},
        {"SIZE", 213, [=, this] {
            const QStringList parts = line.split(QLatin1Char(' '));
            if (parts.size() != 2 || !DataSocket)
                return UnexpectedReply(line);
            RestartByteCount = FTPLeadingNumber(parts.at(1));
            DataSocket->SetRestartPosition();
            NextFTPStep("REST", "REST " + QString::number(RestartByteCount), "Send file ");
        }},
        {"REST", 350, [this] {
            const QString name = DataSocket ? DataSocket->GetFileName() : QString();
            NextFTPStep("STOR", "STOR " + name, "Send file " + name);
        }},
        {"STOR", {150, 125}, [this] {
            if (DataSocket)
                DataSocket->AllowSending(), DataSocket->Poll();
        }},
        {"STOR", {226, 250}, [this] { StopTimer(); ReportSuccess("File Transfer Complete."); }},
    };
}

void FTPSessionClass::DeleteLocalFile(const QString& name)
{
    if (FTPIsPlainName(name))
        QFile::remove(QDir(LocalDirectory).filePath(name));
}

void FTPSessionClass::DeleteLocalFile(const QFileInfo& item)
{
    if (!item.filePath().isEmpty() && item.exists())
        QFile::remove(item.absoluteFilePath());
}
