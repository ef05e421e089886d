#include "FTPSessionClass.h"

// The operations that exchange one or two commands: START sends the command,
// its step takes the expected code and reports success.

void FTPSessionClass::ChangeDir()
{
    StartOperation("ChangeDir", "Send Change Directory Command");
}

void FTPSessionClass::ExecuteChangeDirSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [this] { NextFTPStep("CWD", "CWD " + ServerDirectory, "Change directory to: " + ServerDirectory); }},
        {"CWD", 250, [this] { StopTimer(); ReportSuccess("Directory Change Complete."); }},
    });
}

void FTPSessionClass::ParentDir()
{
    StartOperation("ParentDir", "Send Change Directory Command");
}

void FTPSessionClass::ExecuteParentDirSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [this] { NextFTPStep("CDUP", "CDUP", "Changing to parent directory."); }},
        {"CDUP", 250, [this] { StopTimer(); ReportSuccess("Directory Change Complete."); }},
    });
}

void FTPSessionClass::GetWorkingDir()
{
    StartOperation("GetWorkingDir", "Send Print Working Directory Command");
}

void FTPSessionClass::ExecuteGetWorkingDirSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, {
        {"START", kAnyCode, [this] { NextFTPStep("PWD", "PWD", "Get working directory for "); }},
        {"PWD", 257, [this] { StopTimer(); ReportSuccess("The working directory has been transferred."); }},
    });
}

void FTPSessionClass::MakeDir()
{
    StartOperation("MakeDir", "Send Make Directory Command");
}

void FTPSessionClass::ExecuteMakeDirSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [this] { NextFTPStep("MKD", "MKD " + ServerDirectory, "Create directory: " + ServerDirectory); }},
        {"MKD", 257, [this] { StopTimer(); ReportSuccess("Directory Created."); }},
    });
}

void FTPSessionClass::RemoveDir()
{
    StartOperation("RemoveDir", "Send Remove Directory Command");
}

void FTPSessionClass::ExecuteRemoveDirSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [this] { NextFTPStep("RMD", "RMD " + ServerDirectory, "Delete: " + ServerDirectory); }},
        {"RMD", 250, [this] { StopTimer(); ReportSuccess("Empty Directory Removed."); }},
    });
}

void FTPSessionClass::ChmodSingleFile()
{
    StartOperation("ChmodSingleFile", "Send Change Mode Command");
}

void FTPSessionClass::ExecuteChmodSingleFileSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [this] {
            const QString name = GetNextFileName();
            NextFTPStep("DONE", "SITE CHMOD " + ChmodMask + ' ' + name, "Change Mode of: " + name + " to: " + ChmodMask);
        }},
        {"DONE", 200, [this] { StopTimer(); ReportSuccess("Chmod Command Complete."); }},
    });
}

void FTPSessionClass::SITECommand(const QString& text)
{
    DirectCommandText = text;
    StartOperation("SITECommand", "Send FTP SITE command " + text);
}

void FTPSessionClass::ExecuteSITESteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [this] { NextFTPStep("DONE", "SITE " + DirectCommandText, DirectCommandText); }},
        {"DONE", 200, [this] { StopTimer(); ReportSuccess("FTP SITE command complete"); }},
    });
}

void FTPSessionClass::DirectCommand(const QString& text)
{
    DirectCommandText = text;
    StartOperation("DirectCommand", "Send FTP Direct Command " + text);
}

void FTPSessionClass::ExecuteDirectCommandSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [this] { NextFTPStep("DONE", DirectCommandText, DirectCommandText); }},
        {"DONE", kAny2xx, [this] { StopTimer(); ReportSuccess("FTP Direct Command complete"); }},
    });
}

void FTPSessionClass::RenameSingleFile()
{
    StartOperation("RenameSingleFile", "Send Rename Single File Command");
}

void FTPSessionClass::ExecuteRenameSingleFileSteps(const QString& line, int code)
{
    const auto send = [this](const char* step, const QString& command, const QString& text) {
        const QString name = GetNextFileName();
        NextFTPStep(step, command + name, text + name);
    };
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [=] { send("TO", "RNFR ", "Renaming file."); }},
        {"TO", 350, [=] { send("DONE", "RNTO ", " to: "); }},
        {"DONE", 250, [this] { StopTimer(); ReportSuccess("File Rename Complete."); }},
    });
}

void FTPSessionClass::AbortTransfer()
{
    StartOperation("AbortTransfer", "Aborting File Transfer");
}

void FTPSessionClass::ExecuteAbortTransferSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, {
        {"START", kAnyCode, [this] { NextFTPStep("ABORT", "ABOR", "Aborting File Transfer"); }},
        // The timer keeps running after an abort; a 226 that is not about the
        // abort ends quietly.
        {"ABORT", 226, [=, this] {
            if (line.contains(QLatin1String("Abort"), Qt::CaseInsensitive))
                ReportSuccess("Transfer Aborted");
            else
                EndFTPSession(QString());
        }},
    });
}
