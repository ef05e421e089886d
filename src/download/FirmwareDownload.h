#pragma once

#include "FTP.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

class PushButton;
class Window1Firmware;

// One download run: log on to the firmware server, list its firmware folder,
// fetch and verify the newest file when it is newer than the local folder's,
// fetch the release notes, log off and refresh the revisions. It needs the
// firmware layer and a button model, never a window, so a program without one
// can run it too.
class FirmwareDownload {
public:
    static constexpr const char* ServerDirectory = "/Vexil/firmware";
    static constexpr const char* FirmwarePrefix = "vexil";
    // Five minutes: three fetches of a firmware file over a slow link fit, and
    // a server that keeps an operation alive without end still lets go.
    static constexpr qint64 DefaultRunBoundMs = 5 * 60 * 1000;

    // How a run ended, for a caller without a window to read it from.
    enum class Outcome { Copied, UpToDate, Unreachable, FetchFailed, Unsound, FolderBusy };

    FirmwareDownload(Window1Firmware& window, PushButton& button);

    FTP Ftp;
    qint64 RunBoundMs = DefaultRunBoundMs;
    // Who runs the download, as another copy is told while it holds the folder.
    QString Holder = QStringLiteral("the Vexil Utility");
    // The window refreshes the device's revision after a run; a fetch from a
    // terminal leaves the device alone, as another program may be using it.
    bool CheckDeviceAfterRun = true;

    // A mirror or test server; an empty host or an impossible port keeps the
    // firmware server's.
    void SetServer(const QString& host, int port);

    // The button was pressed: the run starts when the caller's timer fires.
    void CopyNewFilesButton_Action();
    Outcome DoMacDownload();
    // The names the last run wrote into the folder, in the order it wrote them.
    QStringList Copied;
    // The main window closes: a waiting run ends at once, quietly, and the
    // device link is left closed.
    void Event_Close() { Ftp.Abandon(); }

private:
    void Tell(const QString& text);

    Window1Firmware& m_window;
    PushButton& m_button;
};
