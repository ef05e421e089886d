#include "Window1.h"

#include "FirmwareServer.h"
#include "REALEasyPrefs.h"
#include "Version.h"

#include <algorithm>

Window1::Window1(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid, REALEasyPrefs& prefs,
                 QObject* parent)
    : Window1Firmware(globals, clock, platform, hid, parent), m_prefs(prefs)
{
    DisplayStatus.SetVisible(false);
    connect(&SendVexilButton, &PushButton::Action, this, &Window1::SendVexilButton_Action);
    connect(&SendAllTimer, &Timer::Action, this, &Window1::SendAllTimer_Action);
    connect(&CopyNewFilesButton, &PushButton::Action, this, &Window1::CopyNewFilesButton_Action);
    connect(&FTPTimer, &Timer::Action, this, &Window1::FTPTimer_Action);
    m_menuBar = {
        {QStringLiteral("FileMenu"), QStringLiteral("File"), {{QStringLiteral("FileSendFirmwareFile"), &FileSendFirmwareFile, QStringLiteral("Ctrl+O")},
          {QStringLiteral("UntitledSeparator1"), nullptr, {}},
          {QStringLiteral("FileQuit"), &FileQuit, QStringLiteral("Ctrl+Q")}}},
        {QStringLiteral("ViewMenu"), QStringLiteral("View"), {{QStringLiteral("ViewTrace"), &ViewTrace, {}}}},
        {QStringLiteral("WindowMenu"),
         QStringLiteral("Window"),
         {{QStringLiteral("WindowMinimize"), &WindowMinimize, QStringLiteral("Ctrl+M")},
          {QStringLiteral("WindowZoom"), &WindowZoom, {}},
          {QStringLiteral("UntitledSeparator0"), nullptr, {}},
          {QStringLiteral("WindowSettodefaultposition"), &WindowSettodefaultposition, {}}}},
        {QStringLiteral("HelpMenu"),
         QStringLiteral("Help"),
         {{QStringLiteral("HelpVexilUtilHelp"), &HelpVexilUtilHelp, QStringLiteral("F1")},
          {QStringLiteral("HelpReleaseNotes"), &HelpReleaseNotes, {}},
          {QStringLiteral("HelpAboutVexilUtil"), &HelpAboutVexilUtil, {}},
          {QStringLiteral("UntitledSeparator"), nullptr, {}},
          {QStringLiteral("BrowserHelp"), &BrowserHelp, {}}}},
    };
    AddMenuHandlers();
    // Designed size, centred on the main screen, until the preferences say otherwise.
    const QRect screen = platform.AvailableScreen();
    m_bounds = QRect(screen.x() + (screen.width() - DesignWidth) / 2,
                     screen.y() + std::max(0, (screen.height() - DesignHeight) / 2), DesignWidth, DesignHeight);
}

void Window1::SetTitle(const QString& title)
{
    if (title == m_title)
        return;
    m_title = title;
    emit titleChanged();
}

void Window1::SetBounds(const QRect& bounds)
{
    if (bounds == m_bounds)
        return;
    m_bounds = bounds;
    emit boundsChanged();
}

void Window1::Event_Open()
{
    mStartup = true;
    SetTitle(QStringLiteral("Corvane Vexil Utility Revision " VEXIL_SHORT_VERSION));

    m_prefs.InitPrefFile(QStringLiteral("VexilUtilPrefs"));
    // Stored by hand or by an older version, the path may lack its final "/".
    m_globals.m_FolderPath = StoredForm(m_prefs.GetPrefString(QStringLiteral("FolderPath"), QString()));
    m_globals.m_TabPanel = m_prefs.GetPrefNumber(QStringLiteral("Tab"), 0);
    m_globals.m_TraceMode = m_prefs.GetPrefBoolean(QStringLiteral("TraceMode"), false);
    m_globals.m_Verbose = m_globals.m_TraceMode;
    m_globals.m_FirmwareStatus = QStringLiteral("Unknown");
    ViewTrace.SetChecked(m_globals.m_TraceMode);

    // Checked in 64 bits before any rectangle is made: a hand-edited file must
    // not overflow, open a giant window or put the window where nobody sees it.
    const qint64 left = m_prefs.GetPrefNumber(QStringLiteral("winLEFT"), m_bounds.left());
    const qint64 width = m_prefs.GetPrefNumber(QStringLiteral("winWIDTH"), m_bounds.width());
    const qint64 top = m_prefs.GetPrefNumber(QStringLiteral("winTOP"), m_bounds.top());
    const qint64 height = m_prefs.GetPrefNumber(QStringLiteral("winHEIGHT"), m_bounds.height());
    if (PlacementFits(left, top, width, height))
        SetBounds(QRect(static_cast<int>(left), static_cast<int>(top), static_cast<int>(width), static_cast<int>(height)));

    // Out of sight until the checks are done; the user sees only the notice.
    const int savedTop = m_bounds.top();
    SetBounds(m_bounds.translated(0, OffScreenTop - m_bounds.top()));
    m_platform.ShowInitWin(m_bounds.left() + 200, QStringLiteral("Initializing..."));

    // A folder that cannot be made now is still where the files belong; the
    // local check reports the trouble.
    QString defaultFolder = MakeDefaultFolder();
    if (defaultFolder.isEmpty())
        defaultFolder = DefaultFolderPath();
    if (m_globals.m_FolderPath.isEmpty())
        m_globals.m_FolderPath = defaultFolder;
    FolderPath.SetText(m_globals.m_FolderPath);

    m_globals.SetStatusText(QStringLiteral("Corvane Vexil Utility for OS X Revision " VEXIL_SHORT_VERSION), false);
    GetOSVersion();

    ResponsePacket = ProgramPacket{};
    WriteFrame = ProgramFrame{};

    // The folder first: the device check enables the send button whenever the link opens.
    Checklocalfiles();
    CheckVexilRevisions();

    m_tabPanel = 0;
    emit tabPanelChanged();
    mStartup = false;
    m_platform.CloseInitWin();
    SetBounds(m_bounds.translated(0, savedTop - m_bounds.top()));
}

bool Window1::PlacementFits(qint64 left, qint64 top, qint64 width, qint64 height)
{
    // The title bar is the window manager's; this is a fair guess at its height,
    // and enough of it must show for the user to take hold of it.
    constexpr qint64 TitleBarHeight = 24;
    constexpr qint64 TitleBarGrip = 48;
    const QList<QRect> screens = m_platform.ScreenGeometries();
    QRect desktop;
    for (const QRect& screen : screens)
        desktop |= screen;
    const qint64 lowestHeight = std::min(DesignHeight, MinimumHeight);
    if (width < MinimumWidth || width > std::min<qint64>(MaximumSize, desktop.width()))
        return false;
    if (height < lowestHeight || height > std::min<qint64>(MaximumSize, desktop.height()))
        return false;
    for (const QRect& screen : screens) {
        const qint64 across = std::min<qint64>(left + width, qint64(screen.x()) + screen.width())
                              - std::max<qint64>(left, screen.x());
        const qint64 down = std::min<qint64>(top, qint64(screen.y()) + screen.height())
                            - std::max<qint64>(top - TitleBarHeight, screen.y());
        if (across >= TitleBarGrip && down >= TitleBarHeight / 2)
            return true;
    }
    return false;
}

bool Window1::Event_CancelClose()
{
    if (!m_loadRunning)
        return false;
    if (!m_closeWhenLoadEnds) {
        m_closeWhenLoadEnds = true;
        m_globals.SetStatusText(QStringLiteral("The Vexil Utility will close when the firmware load is over: "
                                               "stopping the load now would leave the Vexil without firmware"),
                                false);
    }
    return true;
}

void Window1::CopyNewFilesButton_Action()
{
    // A mirror or a test server when the preferences name one; never written back.
    Download.SetServer(m_prefs.GetPrefString(QStringLiteral("FTPServer"), QString()),
                       m_prefs.GetPrefNumber(QStringLiteral("FTPPort"), FirmwareServer::kPort));
    Download.CopyNewFilesButton_Action();
    FTPTimer.SetMode(Timer::ModeSingle);
}

void Window1::Event_Close()
{
    // A load armed but not yet begun must not start behind a closed window.
    SendAllTimer.SetMode(Timer::ModeOff);
    // A window closed during start-up stands off screen: nothing of it is worth keeping.
    if (mStartup)
        return;
    m_prefs.SetPrefNumber(QStringLiteral("winLEFT"), m_bounds.left());
    m_prefs.SetPrefNumber(QStringLiteral("winWIDTH"), m_bounds.width());
    m_prefs.SetPrefNumber(QStringLiteral("winTOP"), m_bounds.top());
    m_prefs.SetPrefNumber(QStringLiteral("winHEIGHT"), m_bounds.height());
    m_prefs.SetPrefBoolean(QStringLiteral("Verbose"), m_globals.m_Verbose);
    m_prefs.SetPrefNumber(QStringLiteral("Tab"), m_globals.m_TabPanel);
    m_prefs.SetPrefString(QStringLiteral("FolderPath"), m_globals.m_FolderPath);
    m_prefs.SetPrefBoolean(QStringLiteral("TraceMode"), m_globals.m_TraceMode);
    m_prefs.WritePrefsFile();
    hid().Close();
    // A download waiting inside this close ends at once, and one armed does not start.
    Download.Event_Close();
}

void Window1::GetOSVersion()
{
    const OSVersionRecord v = m_platform.OSVersion();
    m_globals.SetStatusText(QStringLiteral("OS X Version %1.%2.%3").arg(v.major).arg(v.minor).arg(v.patch), false);
}

void Window1::TabPanel1_Change(int value)
{
    m_tabPanel = value;
    m_globals.m_TabPanel = value;
    emit focusStatusField();
}
