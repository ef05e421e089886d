#pragma once

#include "Globals.h"
#include "ManualClock.h"
#include "QtPrinters.h"
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

    // Status lines without their time stamps.
    QStringList StatusLines() const
    {
        static const QRegularExpression stamp(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d "));
        QStringList lines = window->StatusField.Text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (QString& line : lines)
            line.remove(stamp); // the second line of a two-line message has no stamp
        return lines;
    }

    QStringList ActivityLines()
    {
        if (!window->HasProgressWin())
            return {};
        return window->GetProgressWin().ActivityLog.Text().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    qint64 ElapsedMs() const { return clock.Elapsed() / 1000; }
};
