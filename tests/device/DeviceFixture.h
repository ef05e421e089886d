#pragma once

#include "Globals.h"
#include "ManualClock.h"
#include "QtPrinters.h"
#include "StatusLog.h"
#include "ScriptedPlatformServices.h"
#include "SimulatedVexil.h"
#include "VexilHid.h"
#include "Window1Device.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <memory>

// The device layer on the simulated bootloader, with time under the test's control.
class DeviceFixture : public ::testing::Test {
protected:
    ManualClock clock;
    SimulatedVexil sim{clock};
    ScriptedPlatformServices platform;
    Globals globals;
    VexilHid hid{sim};
    std::unique_ptr<Window1Device> window = std::make_unique<Window1Device>(globals, clock, platform, hid);

    void TraceOn()
    {
        globals.m_TraceMode = true;
        globals.m_Verbose = true;
    }

    void OpenProgressWin()
    {
        window->GetProgressWin().Show();
        globals.m_ProgressWinOpen = true;
    }

    QStringList StatusLines() const { return StatusLinesOf(window->StatusField); }

    QStringList ActivityLines()
    {
        if (!window->HasProgressWin())
            return {};
        return window->GetProgressWin().ActivityLog.Text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    qint64 ElapsedMs() const { return clock.Elapsed() / 1000; }
};
