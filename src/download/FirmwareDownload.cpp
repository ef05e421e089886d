#include "FirmwareDownload.h"

#include "FirmwareServer.h"
#include "OnlyCopyLock.h"
#include "PushButton.h"
#include "Window1Firmware.h"

#include <QFileInfo>

FirmwareDownload::FirmwareDownload(Window1Firmware& window, PushButton& button)
    : Ftp(window), m_window(window), m_button(button)
{
}

void FirmwareDownload::SetServer(const QString& host, int port)
{
    Ftp.ServerHost = host.trimmed().isEmpty() ? QString::fromLatin1(FirmwareServer::kHost) : host.trimmed();
    Ftp.ServerPort = port > 0 && port <= 65535 ? port : FirmwareServer::kPort;
}

void FirmwareDownload::CopyNewFilesButton_Action()
{
    m_button.SetEnabled(false);
    m_window.Checklocalfiles();
    m_window.globals().mRETR = false;
}

void FirmwareDownload::Tell(const QString& text)
{
    if (!Ftp.Abandoned())
        m_window.platform().MsgBox(text);
}

FirmwareDownload::Outcome FirmwareDownload::DoMacDownload()
{
    Globals& globals = m_window.globals();
    Copied.clear();
    if (Ftp.Abandoned()) {
        m_button.SetEnabled(true);
        return Outcome::Unreachable;
    }
    // Two downloads into one folder would write the same files: the second waits its turn.
    OnlyCopyLock folderLock(QString::fromLatin1(OnlyCopyLock::DownloadLockName));
    if (!folderLock.TryClaim(Holder)) {
        const QString busy = QStringLiteral("Another download into the firmware folder is running (%1). Try again when "
                                            "it is done.")
                                 .arg(folderLock.Holder().isEmpty() ? QStringLiteral("another program")
                                                                    : folderLock.Holder());
        globals.SetStatusText(busy, false);
        Tell(busy);
        m_button.SetEnabled(true);
        return Outcome::FolderBusy;
    }
    Ftp.BeginRun(RunBoundMs);
    int count = 0;
    Outcome outcome = Outcome::Unreachable;
    if (!Ftp.FTPLogon()) {
        // No connection at all is not a refused log-on: the log says which, and what to check.
        if (const QString cause = Ftp.ConnectFailureText(); !cause.isEmpty() && !Ftp.Abandoned())
            globals.SetStatusText(cause, false);
        Tell(QStringLiteral("Logon to Corvane FTP server failed"));
    } else if (!Ftp.FTPChangeDir(QLatin1String(ServerDirectory))) {
        Tell(QStringLiteral("Could not find /Vexil/firmware directory on Corvane server"));
    } else if (const QString listing = Ftp.FTPGetDirectory(); listing == QLatin1String("ERROR")) {
        Tell(QStringLiteral("Error getting directory listing from ftp server."));
    } else {
        const QStringList names = listing.split(QLatin1Char('\n'));
        Ftp.Session->SetLocalDirectoryPathName(globals.m_FolderPath);
        Ftp.FTPGetNewHexRevision(names, QLatin1String(FirmwarePrefix), count);
        // A failed verification deletes the file after a fetch that went well.
        outcome = count == 0 ? Outcome::UpToDate
            : QFileInfo(globals.m_FolderPath + Ftp.strFileName).isFile() ? Outcome::Copied
            : globals.FTPError ? Outcome::FetchFailed
                               : Outcome::Unsound;
        if (outcome == Outcome::Copied)
            Copied << Ftp.strFileName;
        const QString notes = QLatin1String(Window1Firmware::ReleaseNotesName);
        if (count > 0 && names.contains(notes, Qt::CaseInsensitive)) {
            ++count;
            if (Ftp.FTPGetFile(notes))
                Copied << notes;
        }
        // The word stays "file" for every count.
        if (!Ftp.Abandoned() && count > 0)
            globals.SetStatusText(QStringLiteral("Copied %1 file from Corvane to \"%2\"")
                                      .arg(QString::number(count), globals.m_FolderPath));
        else if (!Ftp.Abandoned())
            globals.SetStatusText(QStringLiteral("Your folder has the most recent Vexil firmware files from Corvane."));
    }
    Ftp.FTPLogoff();
    // A closing window has closed the device link, which stays closed.
    // A download can end inside a load's event pump: the revision check then
    // waits for the load, so no exchange ever falls between two packets.
    if (!Ftp.Abandoned()) {
        m_window.Checklocalfiles();
        if (CheckDeviceAfterRun)
            m_window.VexilRevisionsTimer_Action();
    }
    m_button.SetEnabled(true);
    return outcome;
}
