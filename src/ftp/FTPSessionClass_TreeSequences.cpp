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
    if (!EnterOperation("GetDirImmediate"))
        return;
    ResetWalk();
    NextFTPStep("START", "NOOP", "Start Get Directory Sequence");
}

void FTPSessionClass::DeleteDir()
{
    DeleteDirectory = ServerDirectory;
    if (!EnterOperation("DeleteDirImmediate"))
        return;
    ResetWalk();
    NextFTPStep("START", "NOOP", "Start Delete Directory Sequence");
}

qsizetype FTPSessionClass::PathCut(const QString& path) const
{
    qsizetype cut = path.lastIndexOf(QLatin1Char('/')) + 1;
    const qsizetype at = FileDelimiter.isEmpty() ? -1 : path.lastIndexOf(FileDelimiter);
    return at < 0 ? cut : qMax(cut, at + FileDelimiter.size());
}

QString FTPSessionClass::GetDirFromPath(const QString& path) const
{
    return path.left(PathCut(path));
}

QString FTPSessionClass::GetFileFromPath(const QString& path) const
{
    return path.mid(PathCut(path));
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

int FTPSessionClass::WalkedIndex(const char* oops)
{
    const int index = GetCurrentDirectoryIndex(CurrentWorkingDirectory);
    if (index < 0)
        EndFTPSession(QLatin1String(oops) + CurrentWorkingDirectory);
    return index;
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

    StepRows rows = DataFront(line, [=, this] {
        const auto top = DirList.value(CurrentDirectoryIndex);
        cwd(top ? top->GetName() : QString(), "Change directory to: ");
    }) + StepRows{
        {"CWD", 250, [this] { NextFTPStep("PWD", "PWD", "Get working directory for "); }},
        {"PWD", 257, [=, this] {
            CurrentWorkingDirectory = line.section(QLatin1Char('"'), 1, 1);
            // Only a directory the walk knows is listed, and so deleted from.
            const int index = WalkedIndex("oops ");
            if (index < 0 || !DataSocket)
                return;
            CurrentDirectoryIndex = index;
            DataSocket->SetFileList();
            DataSocket->BeginTransfer();
            NextFTPStep("LIST", "LIST -a", listing());
        }},
        {"LIST", {150, 125}, poll},
        {"LIST", 226, [=, this] { NextDataPort(); NextFTPStep(loop, "NOOP", listing()); }},
        {"NEXTSUBDIR", 200, [=, this] {
            const int index = WalkedIndex("NEXTSUBDIR oops ");
            if (index < 0)
                return;
            CurrentDirectoryIndex = index;
            const QString sub = DirList.at(index)->GetNextSubDirectoryName();
            if (sub.isEmpty())
                return NextFTPStep("PARENT", "CDUP", "Handle Subdirectory Handle parent directory ");
            const int subIndex = GetCurrentDirectoryIndex(sub);
            if (subIndex < 0)
                return EndFTPSession("NEXTSUBDIR oops " + sub);
            const quint64 ends = m_endCount;
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
            const int index = WalkedIndex("PARENT oops ");
            if (index < 0)
                return;
            const QString finished = DirList.takeAt(index)->GetName();
            if (DirList.isEmpty() && deleting)
                return NextFTPStep("REMOVETOPDIR", "RMD " + DeleteDirectory, "Delete: " + DeleteDirectory);
            if (DirList.isEmpty())
                return done();
            if (deleting)
                return NextFTPStep("REMOVESUBDIR", "RMD " + finished, "Delete: " + finished);
            NextFTPStep("PARENTPWD", "PWD", "Handle parent directory Get working directory for ");
        }},
        {"PARENTPWD", 257, [=, this] {
            CurrentWorkingDirectory = line.section(QLatin1Char('"'), 1, 1);
            if (!deleting)
                LocalDirectory = UpOneLocalDirectory(LocalDirectory);
            NextFTPStep("NEXTSUBDIR", "NOOP", "Handle parent directory Next subdirectory.");
        }},
    };
    // The next step waits until the listing has been read into DirList.
    if (deleting) {
        return rows + StepRows{
            DataEnd("DELETEFILELOOP", listing(), [=, this] {
                const int index = WalkedIndex("oops ");
                if (index < 0)
                    return;
                const QString name = DirList.at(index)->GetNextFileName();
                if (name.isEmpty())
                    return nextSubdirectory();
                NextFTPStep("DELETE", "DELE " + name, "Deleting " + name);
            }),
            {"DELETE", 250, [this] {
                const int index = WalkedIndex("oops ");
                if (index < 0)
                    return;
                DirList.at(index)->DeleteFile(DirList.at(index)->GetNextFileName());
                NextFTPStep("DELETEFILELOOP", "NOOP", "Deleting file...");
            }},
            {"REMOVESUBDIR", 250, [this] { NextFTPStep("PARENTPWD", "PWD", "Handle parent directory Get working directory for "); }},
            {"REMOVETOPDIR", 250, done},
        } + DataFront(line, [=, this] { cwd(CurrentWorkingDirectory, "Handle Subdirectory Change directory to: "); }, subFront);
    }
    return rows + StepRows{
        DataEnd("GETFILELOOP", listing(), [this] {
            if (DataSocket)
                DataSocket->FileList = false; // what comes next are files
            NextFTPStep("NEXTTYPE", "TYPE " + FTPTransferType, "Handle File Loop Change transfer type.");
        }),
        {"NEXTTYPE", 200, [=, this] { EnterDataFront(fileFront); }},
        {"GETFILE", {150, 125}, poll},
        {"GETFILE", 226, [this] { NextFTPStep("FILEEND", "NOOP", "Get file "); }},
        DataEnd("FILEEND", "Get file ", [this] {
            if (!CommitReceived())
                return;
            const int index = WalkedIndex("oops ");
            if (index < 0)
                return;
            DirList.at(index)->DeleteFile(DataSocket->GetFileName());
            NextDataPort();
            NextFTPStep("GETFILELOOP", "NOOP", "Next file");
        }),
    } + DataFront(line, [=, this] {
        const int index = WalkedIndex("NEXTPORT oops ");
        if (index < 0 || !DataSocket)
            return;
        const QString name = DirList.at(index)->GetNextFileName();
        if (name.isEmpty()) {
            // The unused data connection goes before the server drops it.
            DataSocket->Close();
            return nextSubdirectory();
        }
        if (DataSocket->PutFileName(name))
            NextFTPStep("GETFILE", "RETR " + name, "Get file " + name);
    }, fileFront) + DataFront(line, [=, this] { cwd(CurrentWorkingDirectory, "Handle Subdirectory Change directory to: "); }, subFront);
}

void FTPSessionClass::ExecuteGetDirImmediateSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, TreeWalk(line, false, [this] {
        StopTimer();
        ReportSuccess("Directory Transfer Complete.");
    }));
}

void FTPSessionClass::ExecuteDeleteDirImmediateSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, TreeWalk(line, true, [this] {
        StopTimer();
        ReportSuccess("The directory has been deleted.");
    }));
}

void FTPSessionClass::ExecuteGetDirSteps(const QString& line, int code)
{
    const auto type = [this] { NextFTPStep("TYPE", "TYPE " + FTPTransferType, "Change transfer type."); };
    // The walk has a CWD step of its own.
    RunSteps(line, code, FinalTest::A, LogonPrefix(line, type, "LOGONCWD") + StepRows{
        {"TYPE", 200, [this] { EnterDataFront(); }},
    } + TreeWalk(line, false, [this] { NextFTPStep("QUIT", "QUIT", "FTP Session Complete."); })
      + StepRows{QuitEnd("Directory Transfer Complete.")});
}

void FTPSessionClass::ExecuteDeleteDirSteps(const QString& line, int code)
{
    const auto type = [this] { NextFTPStep("TYPE", "TYPE " + FTPTransferType, "Change transfer type."); };
    RunSteps(line, code, FinalTest::A, LogonPrefix(line, type, "LOGONCWD") + StepRows{
        {"TYPE", 200, [this] { EnterDataFront(); }},
    } + TreeWalk(line, true, [this] { NextFTPStep("QUIT", "QUIT", "FTP Session Complete."); })
      + StepRows{QuitEnd("The directory has been deleted.")});
}
