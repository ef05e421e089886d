#include "FTPSessionClass.h"

#include "DoEvents.h"

#include <QDir>

// The upload of a local tree. Files and Paths hold it as a flat list, walked
// by CurrentFileIndex: a name to send, "*" + a folder to enter (made when the
// server has none), "*UP" to go back up.

// The names stay relative, whatever the prefix: the walk enters each folder
// before its files.
bool FTPSessionClass::GetFiles([[maybe_unused]] const QString& prefix, const QString& path)
{
    const QFileInfo item(QDir::cleanPath(path));
    if (!item.exists()) {
        EndFTPSession("Cannot find this path: " + path);
        return false;
    }
    if (item.isDir()) {
        Files << "*" + item.fileName();
        Paths << QStringLiteral("Ignore");
        // Links are not followed, so a loop of them cannot make the list endless.
        const QDir::Filters filters = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks;
        const auto alive = Alive();
        for (const QFileInfo& child : QDir(item.absoluteFilePath()).entryInfoList(filters, QDir::Name)) {
            if (!GetFiles(item.fileName() + FileDelimiter, child.absoluteFilePath()))
                return false;
            DoEvents(-1);
            if (alive.expired())
                return false;
        }
        Files << QStringLiteral("*UP");
        Paths << QStringLiteral("Ignore");
    } else if (item.size() > 0) {
        Files << item.fileName();
        Paths << item.absoluteFilePath();
    }
    return true;
}

bool FTPSessionClass::CollectUploadList()
{
    Files.clear();
    Paths.clear();
    if (!GetFiles(QString(), LocalDirectory))
        return false;
    FileCount = GetFileCount();
    // Element 0 is the top folder's own marker: the walk starts inside it.
    CurrentFileIndex = 1;
    return true;
}

void FTPSessionClass::StartPutDir()
{
    // The list is made first, so a missing folder costs no connection.
    StartSequence("PutDir", "GETFILES", "Start Put Directory Sequence", [this] {
        const auto alive = Alive();
        return CollectUploadList() && (NextFTPStep("CONNECT", QString(), "Connecting..."), !alive.expired());
    });
}

void FTPSessionClass::PutDir()
{
    if (EnterOperation("PutDirImmediate"))
        Paths.clear(), NextFTPStep("GETFILES", "NOOP", "Start Put Directory Sequence");
}

FTPSessionClass::StepRows FTPSessionClass::UploadWalk(const QString& line, std::function<void()> done)
{
    const auto element = [this] { return Files.value(CurrentFileIndex); };
    const auto enter = [this](const QString& name) { NextFTPStep("USERDIR", "CWD " + name, "Change directory to: " + name); };
    const auto next = [this](const QString& text) { ++CurrentFileIndex, NextFTPStep("NEXT", "NOOP", text); };
    const auto onward = [=, this](const QString& text) {
        if (CurrentFileIndex <= FileCount)
            NextFTPStep("LOOP", "NOOP", text);
        else
            done();
    };
    // Passive mode connects per file, when the file is named.
    return StepRows{
        {"GETFILES", 200, [this] {
            if (CollectUploadList())
                NextFTPStep("TYPE", "TYPE " + FTPTransferType, "Change transfer type.");
        }},
        {"TYPE", 200, [=] { onward("Start of transfer loop."); }},
        // Only a file gets a data front: a server that connects as soon as it
        // has the port would otherwise be handed a folder's marker as a file.
        {"LOOP", 200, [=, this] {
            if (element().startsWith(QLatin1Char('*')))
                return NextFTPStep("SENDFILE", "NOOP", "Send file ");
            EnterDataFront();
        }},
        {"PASV", 227, [=, this] {
            PassivePort = CalculatePassivePort(line);
            if (PassivePort == 0)
                return UnexpectedReply(line);
            NextFTPStep("SENDFILE", "NOOP", "Send file ");
        }},
    } + DataFront(line, {"SENDFILE", "NOOP", "Send file "}) + StepRows{
        {"SENDFILE", 200, [=, this] {
            const QString item = element();
            if (item == QLatin1String("*UP"))
                return NextFTPStep("UPDIR", "CDUP", "Going up one directory level.");
            if (item.startsWith(QLatin1Char('*')))
                return enter(item.mid(1));
            // Named in both modes: the data side starts each file afresh.
            if (DataSocket)
                DataSocket->PutFileName(item);
            if (PassiveMode)
                SetPassivePort(PassivePort);
            NextFTPStep("STOR", "STOR " + item, "Send file " + item);
        }},
        {"USERDIR", 250, [=] { next("Next file"); }},
        {"USERDIR", 550, [=, this] {
            const QString name = element().mid(1);
            NextFTPStep("MAKEDIR", "MKD " + name, "Create directory: ");
        }},
        {"MAKEDIR", 257, [=] { enter(element().mid(1)); }},
        {"UPDIR", 250, [=] { next("Next file"); }},
        {"STOR", {150, 125}, [this] {
            if (DataSocket)
                DataSocket->AllowSending(), DataSocket->Poll();
        }},
        {"STOR", {226, 250}, [=, this] {
            if (!PassiveMode)
                NextDataPort();
            next("Next File/Folder...");
        }},
        {"NEXT", 200, [=] { onward("Top of transfer loop"); }},
    };
}

void FTPSessionClass::ExecutePutDirImmediateSteps(const QString& line, int code)
{
    RunSteps(line, code, FinalTest::A, UploadWalk(line, [this] { StopTimer(); ReportSuccess("Directory Transfer Complete."); }));
}

void FTPSessionClass::ExecutePutDirSteps(const QString& line, int code)
{
    // The list was made before connecting; its element 0 names the top folder.
    const auto top = [this] { return Files.value(0).mid(1); };
    const auto make = [=, this] { NextFTPStep("MAKETOPDIR", "MKD " + top(), "Create directory: " + top()); };
    RunSteps(line, code, FinalTest::A, LogonPrefix(line, make) + StepRows{
        // A top folder that is there already (550) is used as it is.
        {"MAKETOPDIR", {257, 550}, [=, this] { NextFTPStep("SERVERDIR", "CWD " + top(), "Change directory to: " + top()); }},
        {"SERVERDIR", 250, [this] { NextFTPStep("TYPE", "TYPE " + FTPTransferType, "Change transfer type."); }},
    } + UploadWalk(line, [this] { NextFTPStep("QUIT", "QUIT", "FTP Session Complete."); })
      + StepRows{QuitEnd("Directory Transfer Complete.")});
}
