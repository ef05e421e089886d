#pragma once

#include <QString>

class Window1Base;

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

    // Stamps the main window's activity time, when there is a main window.
    void UpdateTimeStamp();

    // The main window whose StatusField receives the lines.
    void AttachWindow(Window1Base* window) { m_window = window; }

private:
    Window1Base* m_window = nullptr;
};
