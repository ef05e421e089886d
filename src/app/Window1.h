#pragma once

#include "FirmwareDownload.h"
#include "Label.h"
#include "MenuItem.h"
#include "PushButton.h"
#include "Timer.h"
#include "Window1Firmware.h"

#include <QRect>
#include <QString>

#include <functional>
#include <vector>

class REALEasyPrefs;

// The main window's controller. Every operation of the program hangs off it;
// the widgets in Window1View only draw its controls and forward user events.
class Window1 : public Window1Firmware {
    Q_OBJECT
public:
    static constexpr int DesignWidth = 600;
    static constexpr int DesignHeight = 570;
    static constexpr int MinimumWidth = 600;
    static constexpr int MinimumHeight = 590;
    // Where the window waits, out of sight, while start-up runs its checks.
    static constexpr int OffScreenTop = 10000;
    static constexpr int MaximumSize = 32000;

    Window1(Globals& globals, Clock& clock, PlatformServices& platform, VexilHid& hid, REALEasyPrefs& prefs,
            QObject* parent = nullptr);

    QString Title() const { return m_title; }
    void SetTitle(const QString& title);

    // The window's content area in screen coordinates.
    QRect Bounds() const { return m_bounds; }
    void SetBounds(const QRect& bounds);
    // The view reports where the user put the window; nothing is redrawn.
    void BoundsChangedByUser(const QRect& bounds) { m_bounds = bounds; }

    int TabPanel1Value() const { return m_tabPanel; }

    Label StaticText1{QStringLiteral("Folder Location")};
    Label StaticText21{QStringLiteral("Local folder for firmware files:")};
    Label StaticText22{QStringLiteral("Check for New Files")};
    Label Firmwareversionstext{QStringLiteral("Firmware Revisions")};
    Label StaticText5{QStringLiteral("Installed in Vexil")};
    Label StaticText6{QStringLiteral("Available")};
    Label StaticText23{QStringLiteral("Activity Log")};
    Label DisplayStatus{QStringLiteral("Ready")};
    PushButton CopyNewFilesButton{QStringLiteral("Copy New Files from Corvane")};
    MenuItem FileSendFirmwareFile{QStringLiteral("Send Firmware File\u2026")};
    MenuItem FileQuit{QStringLiteral("Quit")};
    MenuItem ViewTrace{QStringLiteral("Trace")};
    MenuItem WindowMinimize{QStringLiteral("Minimize")};
    MenuItem WindowZoom{QStringLiteral("Zoom")};
    MenuItem WindowSettodefaultposition{QStringLiteral("Set To Default Position")};
    MenuItem HelpVexilUtilHelp{QStringLiteral("Vexil Utility Help")};
    MenuItem HelpReleaseNotes{QStringLiteral("Vexil Firmware Release Notes")};
    MenuItem HelpAboutVexilUtil{QStringLiteral("About Vexil Utility")};
    MenuItem BrowserHelp{QStringLiteral("Open Help In Browser")};

    // One line of a menu: an item, or a separator where `item` is null. The
    // shortcut is in portable form ("Ctrl" becomes Command on a Mac keyboard).
    struct MenuEntry {
        QString name;
        MenuItem* item;
        QString shortcut;
    };
    struct Menu {
        QString name;
        QString text;
        std::vector<MenuEntry> entries;
    };
    // The menu bar, menus and items in their order.
    const std::vector<Menu>& MenuBar1() const { return m_menuBar; }
    // The item of that name, or null.
    MenuItem* MenuItemNamed(const QString& name) const;
    Timer FTPTimer{250};
    Timer SendAllTimer{250};

    // The download run; the handlers below only start it.
    FirmwareDownload Download{*this, CopyNewFilesButton};

    // The answer of the last question window.
    bool m_MyYesWindowResponse = false;

    void Event_Open();
    // Asked first whenever the window is to close, by any way: true keeps it
    // open. A load cannot be stopped once the flash is erased, so a close asked
    // for during one is noted, logged and carried out when the load ends.
    bool Event_CancelClose();
    void Event_Close();
    void SendVexilButton_Action();
    // The load driver: checks, progress window, the load, and its closing steps.
    void SendAllTimer_Action();
    void CopyNewFilesButton_Action();
    void FTPTimer_Action() { DoMacDownload(); }
    void DoMacDownload() { Download.DoMacDownload(); }
    void GetOSVersion();
    void TabPanel1_Change(int value);

    // Binds each menu item to its handler by the item's name.
    void AddMenuHandlers();
    // A key the window got with no control taking it; false lets it go on.
    bool Event_KeyDown(const QString& key, Qt::KeyboardModifiers modifiers);
    // A file the user chooses goes through the same checks, questions and load as the folder's newest.
    bool _FileSendFirmwareFile_Action();
    bool _ViewTrace_Action();
    bool _WindowMinimize_Action();
    bool _WindowZoom_Action();
    bool _WindowSettodefaultposition_Action();
    bool _HelpVexilUtilHelp_Action();
    bool _HelpReleaseNotes_Action();
    bool _HelpAboutVexilUtil_Action();
    bool _BrowserHelp_Action();

    // How "Vexil Utility Help" opens the manual: given the start page's path,
    // the help system shows it. Without one the item does nothing.
    using HelpRunner = std::function<void(const QString& file)>;
    void SetHelpRunner(HelpRunner run) { m_runHelp = std::move(run); }

signals:
    void titleChanged();
    void boundsChanged();
    void tabPanelChanged();
    // The view gives the keyboard focus to the status log.
    void focusStatusField();
    // The close put off by Event_CancelClose is due: the view closes the window.
    void closeRequested();
    void minimizeRequested();
    void zoomRequested();

private:
    // The load driver's steps up to the question; true when the load succeeded.
    bool SendAll();
    // The controls that would start an exchange or change the folder, out of use during a load.
    void SetLoadControlsEnabled(bool enabled);
    // Asks before an older or the same revision is sent; true to go ahead.
    bool MaySendRevision(const QString& revision);
    // A stored geometry is usable when its size suits the window and its title bar lies on a screen.
    bool PlacementFits(qint64 left, qint64 top, qint64 width, qint64 height);

    REALEasyPrefs& m_prefs;
    bool m_loadRunning = false;
    bool m_closeWhenLoadEnds = false;
    // The file chosen with "Send Firmware File…" for the load about to start.
    QString m_chosenFile;
    // How the last press of Send ended, for its message; empty when nothing is to be told.
    QString m_loadEndMessage;
    QString m_title = QStringLiteral("Corvane Vexil Utility");
    QRect m_bounds;
    int m_tabPanel = 0;
    std::vector<Menu> m_menuBar;
    HelpRunner m_runHelp;
};
