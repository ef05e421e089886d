#pragma once

#include "ManualClock.h"
#include "QtPrinters.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "StatusLog.h"
#include "Window1Device.h"

#include <gtest/gtest.h>

// A window layer on the simulated bootloader, with time under the test's control.
template <class Window>
class SimulatedDeviceFixture : public ::testing::Test {
protected:
    ManualClock clock;
    SimulatedVexil sim{clock};
    ScriptedPlatformServices platform;
    Globals globals;
    VexilHid hid{sim};
    std::unique_ptr<Window> window = std::make_unique<Window>(globals, clock, platform, hid);

    void OpenProgressWin()
    {
        window->GetProgressWin().Show();
        globals.m_ProgressWinOpen = true;
    }

    QStringList StatusLines() const { return StatusLinesOf(window->StatusField); }

    QStringList ActivityLines()
    {
        return window->HasProgressWin() ? window->GetProgressWin().ActivityLog.Text().split('\n', Qt::SkipEmptyParts) : QStringList();
    }

    // The command letters the device received since entry `from` of its log.
    std::string Sent(std::size_t from = 0) const
    {
        std::string letters;
        for (std::size_t i = from; i < sim.Log().size(); ++i)
            letters += sim.Log()[i].cmd;
        return letters;
    }
};

using DeviceFixture = SimulatedDeviceFixture<Window1Device>;
