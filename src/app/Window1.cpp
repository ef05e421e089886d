#include "Window1.h"

#include "FirmwareServer.h"
#include "REALEasyPrefs.h"
#include "Version.h"

Window1::Window1(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid, REALEasyPrefs& prefs,
                 QObject* parent)
    : Window1Firmware(globals, clock, platform, hid, parent), m_prefs(prefs)
{
    DisplayStatus.SetVisible(false);
    connect(&SendVexilButton, &PushButton::Action, this, &Window1::SendVexilButton_Action);
    connect(&SendAllTimer, &Timer::Action, this, &Window1::SendAllTimer_Action);
    connect(&CopyNewFilesButton, &PushButton::Action, this, &Window1::CopyNewFilesButton_Action);
    connect(&FTPTimer, &Timer::Action, this, &Window1::FTPTimer_Action);
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
    m_globals.m_FolderPath = m_prefs.GetPrefString(QStringLiteral("FolderPath"), QString());
    m_globals.m_TabPanel = m_prefs.GetPrefNumber(QStringLiteral("Tab"), 0);
    m_globals.m_TraceMode = m_prefs.GetPrefBoolean(QStringLiteral("TraceMode"), false);
    m_globals.m_Verbose = m_globals.m_TraceMode;
    m_globals.m_FirmwareStatus = QStringLiteral("Unknown");
    ViewTrace.SetChecked(m_globals.m_TraceMode);

    QRect bounds = m_bounds;
    bounds.moveLeft(m_prefs.GetPrefNumber(QStringLiteral("winLEFT"), bounds.left()));
    bounds.setWidth(m_prefs.GetPrefNumber(QStringLiteral("winWIDTH"), bounds.width()));
    bounds.moveTop(m_prefs.GetPrefNumber(QStringLiteral("winTOP"), bounds.top()));
    bounds.setHeight(m_prefs.GetPrefNumber(QStringLiteral("winHEIGHT"), bounds.height()));
    SetBounds(bounds);

    // Out of sight until the checks are done; the user sees only the notice.
    const int savedTop = m_bounds.top();
    SetBounds(m_bounds.translated(0, OffScreenTop - m_bounds.top()));
    m_platform.ShowInitWin(m_bounds.left() + 200, QStringLiteral("Initializing..."));

    const QString defaultFolder = MakeDefaultFolder();
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
