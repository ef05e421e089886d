#include "FTPSessionClass.h"

// The sequences that connect for themselves, and the loops over a list of
// file names. A loop takes its names from the end of Files and opens a new
// data front for each.

void FTPSessionClass::StartSequence(const QString& type, const QString& step, const QString& text,
                                    const std::function<bool()>& prepare)
{
    FTPSessionType = type;
    NT = false;
    IgnoreCancel = false;
    Buffer.clear();
    // Late replies of an earlier connection (an aborted transfer's) must not
    // reach the new sequence while its first report runs the event loop.
    DropSockets(false);
    const auto alive = Alive();
    NextFTPStep(step, QString(), text);
    if (alive.expired() || (prepare && !prepare()))
        return;
    ResetConnectionTimer();
    OpenConnection();
}

void FTPSessionClass::LoopOrQuit()
{
    if (GetFileCount() < 0)
        return NextFTPStep("QUIT", "QUIT", "FTP Session Complete.");
    // A server may still hold the last active port for a moment.
    if (!PassiveMode)
        NextDataPort();
    NextFTPStep("LOOP", "NOOP", QString());
}

FTPSessionClass::StepRows FTPSessionClass::ListFront(const QString& line)
{
    return LogonPrefix(line, [this] { NextFTPStep("LOOP", "NOOP", QString()); }) + StepRows{
        {"LOOP", 200, [this] { EnterDataFront(); }},
    };
}

void FTPSessionClass::ExecuteGetFileSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, ListFront(line) + DataFront(line, {"TYPE", "TYPE " + FTPTransferType, "Change transfer type."})
      + ReceiveWalk(false, [this] { LoopOrQuit(); })
      + StepRows{QuitEnd("File Transfer Complete.")});
}

void FTPSessionClass::ExecutePutFileSteps(const QString& line, int code)
{
    const auto type = [this] { NextFTPStep("TYPE", "TYPE " + FTPTransferType, "Change transfer type."); };
    // Earlier rows win: these replace the single upload's TYPE and its end.
    RunSteps(line, code, FinalTest::A, LogonPrefix(line, type) + StepRows{
        {"TYPE", 200, [this] { NextFTPStep("LOOP", "NOOP", QString()); }},
        {"LOOP", 200, [this] { EnterDataFront(); }},
        {"STOR", {226, 250}, [this] { LoopOrQuit(); }},
    } + SendWalk(line, false) + StepRows{QuitEnd("File Transfer Complete.")});
}

void FTPSessionClass::ExecuteDeleteFileSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::B, ListFront(line) + StepRows{
        {"DELE", 250, [this] { LoopOrQuit(); }},
    } + DeleteWalk(line) + StepRows{QuitEnd("File has been deleted.")});
}

void FTPSessionClass::ExecuteRenameFileSteps(const QString& line, int code)
{
    // The old name is taken first, from the end of Files.
    const auto send = [this](const char* step, const QString& command, const QString& text) {
        const QString name = GetNextFileName();
        NextFTPStep(step, command + name, text + name);
    };
    RunSteps(line, code, FinalTest::A, ListFront(line) + DataFront(line, {"TYPE", "TYPE " + FTPTransferType, "Change transfer type."}) + StepRows{
        {"TYPE", 200, [this] { NextFTPStep("FROM", "NOOP", "Renaming file."); }},
        {"FROM", 200, [=] { send("TO", "RNFR ", "Renaming file."); }},
        {"TO", 350, [=] { send("DONE", "RNTO ", " to: "); }},
        {"DONE", 250, [this] { LoopOrQuit(); }},
        QuitEnd("File Rename Complete."),
    });
}
