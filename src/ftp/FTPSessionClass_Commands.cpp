#include "FTPSessionClass.h"

#include "FTPReply.h"

// The shape shared by the operations that send one command: START sends it,
// its step takes the expected code and reports success.
void FTPSessionClass::RunOneCommandSteps(const QString& line, int code, const OneCommand& row)
{
    if (!(row.test == FinalTest::A ? FTPFinalLineA(line) : FTPFinalLineB(line)))
        return;
    if (AtStep("START")) {
        const auto [command, statusText] = row.commandAndText();
        NextFTPStep(QLatin1String(row.step), command, statusText);
    } else if (AtStep(row.step)) {
        if (!row.accepts(code))
            return UnexpectedReply(line);
        StopTimer();
        ReportSuccess(row.success);
    } else {
        UnknownStep();
    }
}

void FTPSessionClass::ChangeDir()
{
    StartOperation(QStringLiteral("ChangeDir"), QStringLiteral("Send Change Directory Command"));
}

void FTPSessionClass::ExecuteChangeDirSteps(const QString& line, int code)
{
    RunOneCommandSteps(line, code, {FinalTest::B, "CWD",
        [this] { return std::pair<QString, QString>{QStringLiteral("CWD ") + ServerDirectory,
                                    QStringLiteral("Change directory to: ") + ServerDirectory}; },
        [](int c) { return c == 250; }, QStringLiteral("Directory Change Complete.")});
}

void FTPSessionClass::ParentDir()
{
    StartOperation(QStringLiteral("ParentDir"), QStringLiteral("Send Change Directory Command"));
}

void FTPSessionClass::ExecuteParentDirSteps(const QString& line, int code)
{
    RunOneCommandSteps(line, code, {FinalTest::B, "CDUP",
        [] { return std::pair<QString, QString>{QStringLiteral("CDUP"), QStringLiteral("Changing to parent directory.")}; },
        [](int c) { return c == 250; }, QStringLiteral("Directory Change Complete.")});
}

void FTPSessionClass::GetWorkingDir()
{
    StartOperation(QStringLiteral("GetWorkingDir"), QStringLiteral("Send Print Working Directory Command"));
}

void FTPSessionClass::ExecuteGetWorkingDirSteps(const QString& line, int code)
{
    RunOneCommandSteps(line, code, {FinalTest::A, "PWD",
        [] { return std::pair<QString, QString>{QStringLiteral("PWD"), QStringLiteral("Get working directory for ")}; },
        [](int c) { return c == 257; }, QStringLiteral("The working directory has been transferred.")});
}

void FTPSessionClass::MakeDir()
{
    StartOperation(QStringLiteral("MakeDir"), QStringLiteral("Send Make Directory Command"));
}

void FTPSessionClass::ExecuteMakeDirSteps(const QString& line, int code)
{
    RunOneCommandSteps(line, code, {FinalTest::B, "MKD",
        [this] { return std::pair<QString, QString>{QStringLiteral("MKD ") + ServerDirectory,
                                    QStringLiteral("Create directory: ") + ServerDirectory}; },
        [](int c) { return c == 257; }, QStringLiteral("Directory Created.")});
}

void FTPSessionClass::RemoveDir()
{
    StartOperation(QStringLiteral("RemoveDir"), QStringLiteral("Send Remove Directory Command"));
}

void FTPSessionClass::ExecuteRemoveDirSteps(const QString& line, int code)
{
    RunOneCommandSteps(line, code, {FinalTest::B, "RMD",
        [this] { return std::pair<QString, QString>{QStringLiteral("RMD ") + ServerDirectory,
                                    QStringLiteral("Delete: ") + ServerDirectory}; },
        [](int c) { return c == 250; }, QStringLiteral("Empty Directory Removed.")});
}

void FTPSessionClass::ChmodSingleFile()
{
    StartOperation(QStringLiteral("ChmodSingleFile"), QStringLiteral("Send Change Mode Command"));
}

void FTPSessionClass::ExecuteChmodSingleFileSteps(const QString& line, int code)
{
    RunOneCommandSteps(line, code, {FinalTest::B, "DONE",
        [this] {
            const QString name = GetNextFileName();
            return std::pair<QString, QString>{QStringLiteral("SITE CHMOD ") + ChmodMask + QLatin1Char(' ') + name,
                               QStringLiteral("Change Mode of: ") + name + QStringLiteral(" to: ") + ChmodMask};
        },
        [](int c) { return c == 200; }, QStringLiteral("Chmod Command Complete.")});
}

void FTPSessionClass::SITECommand(const QString& text)
{
    DirectCommandText = text;
    StartOperation(QStringLiteral("SITECommand"), QStringLiteral("Send FTP SITE command ") + text);
}

void FTPSessionClass::ExecuteSITESteps(const QString& line, int code)
{
    RunOneCommandSteps(line, code, {FinalTest::B, "DONE",
        [this] { return std::pair<QString, QString>{QStringLiteral("SITE ") + DirectCommandText, DirectCommandText}; },
        [](int c) { return c == 200; }, QStringLiteral("FTP SITE command complete")});
}

void FTPSessionClass::DirectCommand(const QString& text)
{
    DirectCommandText = text;
    StartOperation(QStringLiteral("DirectCommand"), QStringLiteral("Send FTP Direct Command ") + text);
}

void FTPSessionClass::ExecuteDirectCommandSteps(const QString& line, int code)
{
    RunOneCommandSteps(line, code, {FinalTest::B, "DONE",
        [this] { return std::pair<QString, QString>{DirectCommandText, DirectCommandText}; },
        [](int c) { return c / 100 == 2; }, QStringLiteral("FTP Direct Command complete")});
}

void FTPSessionClass::RenameSingleFile()
{
    StartOperation(QStringLiteral("RenameSingleFile"), QStringLiteral("Send Rename Single File Command"));
}

void FTPSessionClass::ExecuteRenameSingleFileSteps(const QString& line, int code)
{
    if (!FTPFinalLineB(line))
        return;
    if (AtStep("START")) {
        const QString name = GetNextFileName();
        NextFTPStep(QStringLiteral("TO"), QStringLiteral("RNFR ") + name, QStringLiteral("Renaming file.") + name);
    } else if (AtStep("TO")) {
        if (code != 350)
            return UnexpectedReply(line);
        const QString name = GetNextFileName();
        NextFTPStep(QStringLiteral("DONE"), QStringLiteral("RNTO ") + name, QStringLiteral(" to: ") + name);
    } else if (AtStep("DONE")) {
        if (code != 250)
            return UnexpectedReply(line);
        StopTimer();
        ReportSuccess(QStringLiteral("File Rename Complete."));
    } else {
        UnknownStep();
    }
}

void FTPSessionClass::AbortTransfer()
{
    StartOperation(QStringLiteral("AbortTransfer"), QStringLiteral("Aborting File Transfer"));
}

void FTPSessionClass::ExecuteAbortTransferSteps(const QString& line, int code)
{
    if (!FTPFinalLineB(line))
        return;
    if (AtStep("START")) {
        NextFTPStep(QStringLiteral("ABORT"), QStringLiteral("ABOR"), QStringLiteral("Aborting File Transfer"));
    } else if (AtStep("ABORT")) {
        if (code != 226)
            return UnexpectedReply(line);
        // The timer keeps running after an abort; a 226 that is not about the
        // abort ends quietly.
        if (line.contains(QLatin1String("Abort"), Qt::CaseInsensitive))
            ReportSuccess(QStringLiteral("Transfer Aborted"));
        else
            EndFTPSession(QString());
    } else {
        UnknownStep();
    }
}
