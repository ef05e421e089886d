#pragma once

#include "FTPSessionClass.h"
#include "FirmwareServer.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <memory>

class Window1Firmware;

// The FTP client made blocking for the download: each wrapper starts one
// operation of the session and pumps the event loop until the status class
// reports its end through Globals.FTPDone and Globals.FTPError.
class FTP {
public:
    static constexpr int TimeoutSeconds = 60;
    // The pump period of a wait: the window stays responsive and a step's end
    // is seen at once, while the bound and a closing window are checked at
    // least this often.
    static constexpr int PumpMs = 5;
    static constexpr int FetchAttempts = 3;

    explicit FTP(Window1Firmware& window);

    std::unique_ptr<FTPSessionClass> Session;
    QString strFileName;

    // Where a log-on connects: the firmware server unless a preference names a
    // mirror. The connecting message names the firmware server either way.
    QString ServerHost = QLatin1String(FirmwareServer::kHost);
    int ServerPort = FirmwareServer::kPort;

    bool FTPLogon();
    // After a failed log-on: why no connection could be made and what to
    // check; empty when the server was reached (it refused the log-on).
    QString ConnectFailureText() const;
    void FTPLogoff();
    bool FTPChangeDir(const QString& dir);
    // The name listing with "\n" line ends, or "ERROR".
    QString FTPGetDirectory();
    bool FTPGetFile(const QString& name);
    bool FTPGetNewRevision(const QStringList& list, const QString& prefix, const QString& extension, int& count);
    bool FTPHexVerify();
    void FTPGetNewHexRevision(const QStringList& list, const QString& prefix, int& count);

    // A run ends its waits as time-outs once boundMs have passed from here, so
    // that a server which keeps an operation alive cannot hold it forever.
    void BeginRun(qint64 boundMs);
    // Ends the wait in progress and every later one at once (the main window closes).
    void Abandon() { m_abandoned = true; }
    bool Abandoned() const { return m_abandoned; }

    // A listed name that is safe as a file name inside the folder.
    static bool IsPlainName(const QString& name);

private:
    // Clears the flags, runs the operation and waits for its end; true unless it failed.
    template <typename Operation>
    bool Run(Operation operation);
    bool Wait();

    Window1Firmware& m_window;
    qint64 m_deadlineUs = 0;
    bool m_abandoned = false;
};
