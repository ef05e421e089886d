#pragma once

#include "Globals.h"
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
    VexilHid& vexilHid() { return m_hid; }
    Window1& window1() { return *m_window1; }
    Window1View* view() { return m_view.get(); }

    // Builds the widgets, shows the main window and runs its start-up.
    void Event_Open();

private:
    Globals m_globals;
    VexilHid m_hid;
    std::unique_ptr<Window1> m_window1;
    std::unique_ptr<Window1View> m_view;
};
