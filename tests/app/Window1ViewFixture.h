#pragma once

#include "REALEasyPrefs.h"
#include "SimRig.h"
#include "Window1.h"
#include "Window1View.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

// The main window with its widgets, on the simulated device.
class Window1ViewFixture : public ::testing::Test, protected SimRig {
protected:
    // Declared before the window so it runs after it: views whose models died
    // with the window are deleted late, and must not leak into the next case.
    struct FlushDeferredDeletes {
        ~FlushDeferredDeletes() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
    } flush;
    REALEasyPrefs prefs;
    Window1 window{globals, clock, platform, hid, prefs};
    Window1View view{window};
};
