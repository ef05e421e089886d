#pragma once

#include "Globals.h"
#include "ManualClock.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "VexilHid.h"

// What every window-level test stands on: time under the test's control, the
// simulated device behind the real link, and desktop services that record.
struct SimRig {
    ManualClock clock;
    SimulatedVexil sim{clock};
    VexilHid hid{sim};
    Globals globals;
    ScriptedPlatformServices platform;
};
