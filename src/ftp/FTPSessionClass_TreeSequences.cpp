#include "FTPSessionClass.h"

#include "FTPDirList.h"

#include <QDir>

// The tree walks: a download or a deletion of a whole server directory. The
// walk's position is DirList (each directory listed so far, dropped when its
// subtree is done), CurrentWorkingDirectory and each entry's next subdirectory.

void FTPSessionClass::ResetWalk()
{
    DirList.clear();
    DirList.append(std::make_shared<FTPDirectoryClass>(ServerDirectory, QString()));
    CurrentDirectoryIndex = 0;
    if (DataSocket)
        DataSocket->FileList = false;
}

void FTPSessionClass::StartGetDir()
{
    StartSequence("GetDir", "CONNECT", "Start Get Directory Sequence", [this] { return ResetWalk(), true; });
}

void FTPSessionClass::StartDeleteDir()
{
    DeleteDirectory = ServerDirectory;
    StartSequence("DeleteDir", "CONNECT", "Start Delete Directory Sequence", [this] { return ResetWalk(), true; });
}

void FTPSessionClass::GetDir()
{
    if (EnterOperation("GetDirImmediate"))
        ResetWalk(), NextFTPStep("START", "NOOP", "Start Get Directory Sequence");
}

void FTPSessionClass::DeleteDir()
{
    DeleteDirectory = ServerDirectory;
    if (EnterOperation("DeleteDirImmediate"))
        ResetWalk(), NextFTPStep("START", "NOOP", "Start Delete Directory Sequence");
}

qsizetype FTPSessionClass::PathCut(const QString& path) const
{
    qsizetype cut = path.lastIndexOf(QLatin1Char('/')) + 1;
    const qsizetype at = FileDelimiter.isEmpty() ? -1 : path.lastIndexOf(FileDelimiter);
    return at < 0 ? cut : qMax(cut, at + FileDelimiter.size());
}

QString FTPSessionClass::UpOneLocalDirectory(const QString& path) const
{
    QString folder = path;
    while (folder.size() > 1 && PathCut(folder) == folder.size())
        folder.chop(1);
    return GetDirFromPath(folder);
}

int FTPSessionClass::GetCurrentDirectoryIndex(const QString& path) const
{
    // A server's PWD gives "/a" for what the walk built as "//a" or "/a/".
    const QString wanted = QDir::cleanPath(path);
    for (int i = 0; i < DirList.size(); ++i) {
        if (QDir::cleanPath(DirList.at(i)->GetName()) == wanted)
            return i;
    }
    return -1;
}

FTPDirectoryClass* FTPSessionClass::WalkedDirectory(const char* oops)
{
    const int index = GetCurrentDirectoryIndex(CurrentWorkingDirectory);
    if (index < 0) {
        EndFTPSession(QLatin1String(oops) + CurrentWorkingDirectory);
        return nullptr;
    }
    CurrentDirectoryIndex = index;
    return DirList.at(index).get();
}

bool FTPSessionClass::EnterLocalFolder(const QString& sub)
{
    // The last part must be the server's whole name: one that holds the
    // delimiter would make a folder of another name and confuse the way up.
    const QString name = GetFileFromPath(sub);
    if (!FTPIsPlainName(name) || name != sub.section(QLatin1Char('/'), -1))
        return false;
    const QString folder = QDir(LocalDirectory).filePath(name);
    // A link would lead the files out of the folder.
    if (QFileInfo(folder).isSymLink() || !QDir(LocalDirectory).mkpath(name)) {
        EndFTPSession("Error writing local file: " + name);
        return false;
    }
    LocalDirectory = folder + QLatin1Char('/');
    return true;
}

FTPSessionClass::StepRows FTPSessionClass::TreeWalk(const QString& line, bool deleting, std::function<void()> done)
{
    const DataFrontSteps fileFront{"NEXTPASV", "NEXTNOTPASV", "NEXTPORT", ""};
    const DataFrontSteps subFront = deleting ? fileFront : DataFrontSteps{"NEXTSUBPASV", "NEXTSUBNOTPASV", "NEXTSUBPORT", "Handle Subdirectory "};
    const char* loop = deleting ? "DELETEFILELOOP" : "GETFILELOOP";
    const auto cwd = [this](const QString& path, const QString& text) { NextFTPStep("CWD", "CWD " + path, text + path); };
    const auto listing = [this] { return "Get full directory list for " + CurrentWorkingDirectory; };
    const auto poll = [this] { DataSocket ? DataSocket->Poll() : void(); };
    const auto nextSubdirectory = [this] { NextFTPStep("NEXTSUBDIR", "NOOP", "Next subdirectory."); };
    const auto parentPwd = [this] { NextFTPStep("PARENTPWD", "PWD", "Handle parent directory Get working directory for "); };

    StepRows rows = DataFront(line, [=, this] {
        const auto top = DirList.value(CurrentDirectoryIndex);
        cwd(top ? top->GetName() : QString(), "Change directory to: ");
    }) + DataFront(line, [=, this] { cwd(CurrentWorkingDirectory, "Handle Subdirectory Change directory to: "); }, subFront)
       + StepRows{
        {"CWD", 250, [this] { NextFTPStep("PWD", "PWD", "Get working directory for "); }},
        {"PWD", 257, [=, this] {
            CurrentWorkingDirectory = line.section(QLatin1Char('"'), 1, 1);
            // Only a directory the walk knows is listed, and so deleted from.
            if (!WalkedDirectory("oops ") || !DataSocket)
                return;
            DataSocket->SetFileList();
            DataSocket->BeginTransfer();
            NextFTPStep("LIST", "LIST -a", listing());
        }},
        {"LIST", {150, 125}, poll},
        {"LIST", 226, [=, this] { NextDataPort(); NextFTPStep(loop, "NOOP", listing()); }},
        {"NEXTSUBDIR", 200, [=, this] {
            FTPDirectoryClass* directory = WalkedDirectory("NEXTSUBDIR oops ");
            const QString sub = directory ? directory->GetNextSubDirectoryName() : QString();
            if (!directory)
                return;
            if (sub.isEmpty())
                return NextFTPStep("PARENT", "CDUP", "Handle Subdirectory Handle parent directory ");
            const int subIndex = GetCurrentDirectoryIndex(sub);
            const quint64 ends = m_endCount;
            if (subIndex < 0)
                return EndFTPSession("NEXTSUBDIR oops " + sub);
            if (!deleting && !EnterLocalFolder(sub)) {
                // A name the local side cannot hold is passed over with its subtree.
                if (m_endCount == ends)
                    DirList.removeAt(subIndex), nextSubdirectory();
                return;
            }
            CurrentWorkingDirectory = sub;
            CurrentDirectoryIndex = subIndex;
            if (!PassiveMode)
                NextDataPort();
            EnterDataFront(subFront);
        }},
        {"PARENT", 250, [=, this] {
            if (!WalkedDirectory("PARENT oops "))
                return;
            const QString finished = DirList.takeAt(CurrentDirectoryIndex)->GetName();
            if (!DirList.isEmpty())
                deleting ? NextFTPStep("REMOVESUBDIR", "RMD " + finished, "Delete: " + finished) : parentPwd();
            else if (deleting)
                NextFTPStep("REMOVETOPDIR", "RMD " + DeleteDirectory, "Delete: " + DeleteDirectory);
            else
                done();
        }},
        {"PARENTPWD", 257, [=, this] {
            CurrentWorkingDirectory = line.section(QLatin1Char('"'), 1, 1);
            if (!deleting)
                LocalDirectory = UpOneLocalDirectory(LocalDirectory);
            NextFTPStep("NEXTSUBDIR", "NOOP", "Handle parent directory Next subdirectory.");
        }},
    };
    // The loop over a directory's files waits until its listing is in DirList.
    if (deleting) {
        return rows + StepRows{
            DataEnd("DELETEFILELOOP", listing(), [=, this] {
                FTPDirectoryClass* directory = WalkedDirectory("oops ");
                const QString name = directory ? directory->GetNextFileName() : QString();
                if (directory && name.isEmpty())
                    nextSubdirectory();
                else if (directory)
                    NextFTPStep("DELETE", "DELE " + name, "Deleting " + name);
            }),
            {"DELETE", 250, [this] {
                if (FTPDirectoryClass* directory = WalkedDirectory("oops "))
                    directory->DeleteFile(directory->GetNextFileName()), NextFTPStep("DELETEFILELOOP", "NOOP", "Deleting file...");
            }},
            {"REMOVESUBDIR", 250, parentPwd},
            {"REMOVETOPDIR", 250, done},
        };
    }
    return rows + DataFront(line, [=, this] {
        FTPDirectoryClass* directory = WalkedDirectory("NEXTPORT oops ");
        const QString name = directory ? directory->GetNextFileName() : QString();
        if (!directory || !DataSocket)
            return;
        if (name.isEmpty()) {
            // The unused data connection goes before the server drops it.
            DataSocket->Close();
            return nextSubdirectory();
        }
        if (DataSocket->PutFileName(name))
            NextFTPStep("GETFILE", "RETR " + name, "Get file " + name);
    }, fileFront) + StepRows{
        DataEnd("GETFILELOOP", listing(), [this] {
            if (DataSocket)
                DataSocket->FileList = false; // what comes next are files
            NextFTPStep("NEXTTYPE", "TYPE " + FTPTransferType, "Handle File Loop Change transfer type.");
        }),
        {"NEXTTYPE", 200, [=, this] { EnterDataFront(fileFront); }},
        {"GETFILE", {150, 125}, poll},
        {"GETFILE", 226, [this] { NextFTPStep("FILEEND", "NOOP", "Get file "); }},
        DataEnd("FILEEND", "Get file ", [this] {
            FTPDirectoryClass* directory = CommitReceived() ? WalkedDirectory("oops ") : nullptr;
            if (!directory)
                return;
            directory->DeleteFile(DataSocket->GetFileName());
            NextDataPort();
            NextFTPStep("GETFILELOOP", "NOOP", "Next file");
        }),
    };
}

void FTPSessionClass::RunTreeWalk(const QString& line, int code, bool deleting, bool connecting)
{
    const QString end = deleting ? "The directory has been deleted." : "Directory Transfer Complete.";
    if (!connecting)
        return RunSteps(line, code, FinalTest::A, TreeWalk(line, deleting, [=, this] { StopTimer(); ReportSuccess(end); }));
    const auto type = [this] { NextFTPStep("TYPE", "TYPE " + FTPTransferType, "Change transfer type."); };
    // The walk has a CWD step of its own.
    RunSteps(line, code, FinalTest::A, LogonPrefix(line, type, "LOGONCWD") + StepRows{
        {"TYPE", 200, [this] { EnterDataFront(); }},
    } + TreeWalk(line, deleting, [this] { NextFTPStep("QUIT", "QUIT", "FTP Session Complete."); })
      + StepRows{QuitEnd(end)});
}
