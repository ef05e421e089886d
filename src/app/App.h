#pragma once

#include "Globals.h"
#include "REALEasyPrefs.h"
#include "VexilHid.h"
#include "Window1.h"

#include <memory>

class Clock;
class HidBackend;
class PlatformServices;
class Window1View;

// The application: owns the shared modules and the main window, and is the
// one place that knows which clock, HID backend and desktop it runs on.
class App {
public:
    App(Clock& clock, HidBackend& backend, PlatformServices& platform);
    ~App();

    Globals& globals() { return m_globals; }
    REALEasyPrefs& prefs() { return m_prefs; }
    VexilHid& vexilHid() { return m_hid; }
    Window1& window1() { return *m_window1; }
    Window1View* view() { return m_view.get(); }

    // Sets up what the menus need, then opens the main window: its start-up
    // checks run first, and the window shows once they are done.
    void Event_Open();

    // The help pages: "Resources/Help" beside the executable's folder.
    static QString HelpFolderFor(const QString& executableDir);

private:
    Globals m_globals;
    REALEasyPrefs m_prefs;
    VexilHid m_hid;
    std::unique_ptr<Window1> m_window1;
    std::unique_ptr<Window1View> m_view;
};
