#pragma once

#include "Globals.h"
#include "OnlyCopyLock.h"
#include "REALEasyPrefs.h"
#include "PrintingHelpGlobals.h"
#include "VexilHid.h"
#include "Window1.h"


#include <QCommandLineOption>
#include <QLocalServer>
#include <QList>

#include <memory>

class Clock;
class HelpPlatform;
class HidBackend;
class PlatformServices;
class Window1View;

// The application: owns the shared modules and the main window, and is the
// one place that knows which clock, HID backend and desktop it runs on.
class App {
public:
    App(Clock& clock, HidBackend& backend, PlatformServices& platform, HelpPlatform& helpPlatform);
    ~App();

    Globals& globals() { return m_globals; }
    REALEasyPrefs& prefs() { return m_prefs; }
    VexilHid& vexilHid() { return m_hid; }
    Window1& window1() { return *m_window1; }
    Window1View* view() { return m_view.get(); }
    // The help system's state; its engine exists once Event_Open has run.
    UniHelpGlobals& helpGlobals() { return m_helpGlobals; }

    // Sets up what the menus need, then opens the main window: its start-up
    // checks run first, and the window shows once they are done.
    void Event_Open();

    // The help pages: "Resources/Help" beside the executable's folder (the
    // build tree), else the installed "share/vexil-utility/Help" there.
    static QString HelpFolderFor(const QString& executableDir);

    // What the program sets on the application before any window opens. No
    // display name: the desktop would add it to every window's title.
    static void ConfigureApplication();
    // --help and --version are answered in the terminal, as every Qt program
    // does, before any window or display is needed; true when one was asked.
    static bool AnswerInTerminal(int argc, char* argv[], const QString& description,
                                 const QList<QCommandLineOption>& options = {});

    // One copy at a time: a second would share the device and the preferences.
    // The lock (held until destroyed), or null after telling the user.
    static std::unique_ptr<OnlyCopyLock> ClaimOnlyCopy(PlatformServices& platform);
    // The local socket through which a second start asks the running copy to
    // show its main window; one per preferences folder, as the lock is.
    static QString RaiseServerName();

private:
    // A second start that finds this copy running brings its window to the front.
    void ListenForSecondStarts();

    std::unique_ptr<QLocalServer> m_raiseServer;
    Globals m_globals;
    REALEasyPrefs m_prefs;
    VexilHid m_hid;
    PrintingHelpGlobals m_helpGlobals;
    std::unique_ptr<Window1> m_window1;
    std::unique_ptr<Window1View> m_view;
};
