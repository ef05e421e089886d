#pragma once

#include "StatusSink.h"

#include <QString>

// Shared state of the application and its one status function.
// One instance is owned by the application; tests make fresh ones.
class Globals {
public:
    QString m_StatusMsg;
    QString mTIMESTAMP;
    bool m_TraceMode = false;
    bool m_Verbose = false;
    bool m_ProgressWinOpen = false;
    QString m_FolderPath;
    QString m_FirmwareStatus;
    QString m_strMcuRevision;
    int m_TabPanel = 0;
    QString appHelpFolder;
    bool FTPDone = false;
    bool FTPError = false;
    QString FTPFile;
    bool mRETR = false;

    // Appends a time-stamped line to the status log (trace-only lines only while
    // m_Verbose is set) and then gives the event loop one pass, shown line or not.
    void SetStatusText(const QString& text, bool verboseOnly = false);

    // Marks activity (the main window's time stamp), when there is a sink.
    void UpdateTimeStamp();

    // Where the lines go (the main window's log); nullptr drops them.
    void AttachSink(StatusSink* sink) { m_sink = sink; }

private:
    StatusSink* m_sink = nullptr;
};
