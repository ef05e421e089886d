#include "FTPSessionClass.h"

void FTPSessionClass::GetDirList()
{
    if (!EnterOperation("GetDirListImmediate"))
        return;
    DirectoryFileList.clear();
    NextFTPStep("START", "NOOP", "Send Get Directory List Command");
}

void FTPSessionClass::StartGetDirList()
{
    DirectoryFileList.clear();
    StartSequence("GetDirList", "CONNECT", "Start Get Directory List Sequence", [this] { return CurrentDirectoryIndex = 0, true; });
}

QString FTPSessionClass::ListCommand() const
{
    return QString(UseNameList ? "NLST" : "LIST") + (ShowInvisible ? " -a" : "");
}

FTPSessionClass::StepRows FTPSessionClass::ListingWalk(const QString& line, std::function<void()> done)
{
    const auto status = [this] { return "Get full directory list for " + CurrentWorkingDirectory; };
    return DataFront(line, {"NEXT", "NOOP", "NOOP"}) + StepRows{
        {"NEXT", 200, [this] { NextFTPStep("PWD", "PWD", "Get working directory for "); }},
        {"PWD", 257, [=, this] {
            CurrentWorkingDirectory = line.section(QLatin1Char('"'), 1, 1);
            if (DataSocket)
                DataSocket->BeginTransfer();
            NextFTPStep("LIST", ListCommand(), status());
        }},
        {"LIST", {150, 125}, [this] { DataSocket ? DataSocket->Poll() : void(); }},
        {"LIST", 226, [=, this] { NextFTPStep("LISTEND", "NOOP", status()); }},
        DataEnd("LISTEND", status(), done),
    };
}

void FTPSessionClass::ExecuteGetDirListImmediateSteps(const QString& line, int code)
{
    // The timer keeps running after the listing, as after a received file.
    RunSteps(line, code, FinalTest::A,
             ListingWalk(line, [this] { ReportSuccess("The file list has been transferred."); }));
}

void FTPSessionClass::ExecuteGetDirListSteps(const QString& line, int code)
{
    const auto typeA = [this] { NextFTPStep("TYPE", "TYPE A", "Change transfer type to ASCII."); };
    RunSteps(line, code, FinalTest::A, LogonPrefix(line, typeA) + StepRows{
        {"TYPE", 200, [this] { EnterDataFront(); }},
    } + ListingWalk(line, [this] { NextFTPStep("QUIT", "QUIT", "FTP Session Complete."); })
      + StepRows{QuitEnd("The file list has been transferred.")});
}
