#pragma once

#include "Globals.h"
#include "ManualClock.h"
#include "REALEasyPrefs.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "VexilHid.h"
#include "Window1.h"
#include "Window1View.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

// The main window with its widgets, on the simulated device.
class Window1ViewFixture : public ::testing::Test {
protected:
    // Declared first so it runs last: views whose models died with the window
    // are deleted late, and must not leak into the next case.
    struct FlushDeferredDeletes {
        ~FlushDeferredDeletes() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
    } flush;
    ManualClock clock;
    SimulatedVexil device{clock};
    VexilHid hid{device};
    Globals globals;
    ScriptedPlatformServices platform;
    REALEasyPrefs prefs;
    Window1 window{globals, clock, platform, hid, prefs};
    Window1View view{window};
};
