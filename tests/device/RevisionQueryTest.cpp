#include "DeviceFixture.h"
#include "RevisionText.h"

#include <QSignalSpy>

using Fault = SimulatedVexil::Fault;

TEST(RevisionText, HundredsDotRemainder)
{
    const std::pair<int, const char*> rows[] = {
        {5, "00.05"}, {100, "01.00"}, {112, "01.12"}, {199, "01.99"}, {255, "02.55"}, {1005, "10.05"}, {0, "00.00"}};
    for (const auto& [number, text] : rows)
        EXPECT_EQ(RevisionText(number), QString::fromLatin1(text)) << number;
}

class RevisionQuery : public DeviceFixture {};

TEST_F(RevisionQuery, LabelAndButtonsFollowWhatTheDeviceAnswered)
{
    enum class Device { Absent, SilentSync, SilentVersion, Answers };
    struct Row {
        const char* name;
        Device device;
        bool startup;
        bool result;
        const char* label;
        bool sendEnabled;
        const char* mcuRevision;
    };
    const Row rows[] = {
        {"absent", Device::Absent, false, false, "--", false, ""},
        {"absent at start-up", Device::Absent, true, false, "??.??", false, ""},
        {"silent sync", Device::SilentSync, false, false, "--", true, ""},
        {"silent sync at start-up", Device::SilentSync, true, false, "??.??", true, ""},
        {"silent version", Device::SilentVersion, false, false, "--", true, "N/A"},
        {"answers", Device::Answers, false, true, "01.12", true, "01.12"},
        {"answers at start-up", Device::Answers, true, true, "01.12", true, "01.12"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ManualClock rowClock;
        SimulatedVexil rowSim(rowClock);
        Globals rowGlobals;
        VexilHid rowHid(rowSim);
        Window1Device w(rowGlobals, rowClock, platform, rowHid);
        rowSim.SetAppRevision(112);
        rowSim.SetPresent(row.device != Device::Absent);
        if (row.device == Device::SilentSync)
            rowSim.SetCommandFault('U', Fault::Silent);
        if (row.device == Device::SilentVersion)
            rowSim.SetCommandFault('G', Fault::Silent);
        w.mStartup = row.startup;
        w.CheckRevisionsNowButton.SetEnabled(false);
        w.SendVexilButton.SetEnabled(!row.sendEnabled);

        EXPECT_EQ(w.CheckVexilRevisions(), row.result);
        EXPECT_EQ(w.MCUinstalledText.Text(), QString::fromLatin1(row.label));
        EXPECT_EQ(w.SendVexilButton.Enabled(), row.sendEnabled);
        EXPECT_TRUE(w.CheckRevisionsNowButton.Enabled());
        EXPECT_EQ(rowGlobals.m_strMcuRevision, QString::fromLatin1(row.mcuRevision));
        EXPECT_EQ(rowGlobals.m_FirmwareStatus, row.device == Device::Absent ? "Unknown" : "Main");

        const QString log = w.StatusField.Text();
        EXPECT_EQ(log.contains("Unable to open Vexil device. See Vexil Utility Help, Getting Started."),
                  row.device == Device::Absent);
        EXPECT_EQ(log.contains("Vexil firmware revision 01.12"), row.result);
    }
}

TEST_F(RevisionQuery, EachCheckReopensSoALaterDeviceIsFound)
{
    sim.SetPresent(false);
    window->mStartup = false;
    EXPECT_FALSE(window->CheckVexilRevisions());
    EXPECT_FALSE(window->SendVexilButton.Enabled());

    sim.SetPresent(true);
    sim.SetAppRevision(7);
    EXPECT_TRUE(window->CheckVexilRevisions());
    EXPECT_EQ(window->MCUinstalledText.Text(), "00.07");
    EXPECT_TRUE(window->CheckVexilRevisions());
    EXPECT_EQ(sim.OpenCount(), 2);
    EXPECT_EQ(sim.CountCommands('V'), 0) << "the check does not ask for the bootloader revision";
}

TEST_F(RevisionQuery, FailedQueriesNameTheCommandAndStatus)
{
    TraceOn();
    OpenProgressWin();
    window->OpenHid();
    sim.SetCommandFault('U', Fault::WrongStatus, 1, 'N');
    sim.SetCommandFault('V', Fault::Silent);
    sim.SetCommandFault('G', Fault::WrongStatus, 1, 'Z');
    EXPECT_FALSE(window->VexilSync());
    EXPECT_FALSE(window->VexilBootVersion());
    EXPECT_FALSE(window->VexilAppVersion());
    EXPECT_EQ(globals.m_strMcuRevision, "N/A");

    const QStringList failures = StatusLines().filter("unexpected response status");
    EXPECT_EQ(failures, (QStringList{
                            "COMMAND_SYNC unexpected response status \"N\"",
                            // Nothing arrived for "V": the status is that of the last report that did.
                            "COMMAND_READ_VERSION unexpected response status \"N\"",
                            "COMMAND_GET_APP_VER unexpected response status \"Z\"",
                        }));
    EXPECT_EQ(ActivityLines().filter("unexpected response status"), failures);
}

TEST_F(RevisionQuery, BootAndAppVersionsAreReportedAndMarkTheLinkMain)
{
    sim.SetBootVersion("02.41");
    sim.SetAppRevision(255);
    window->OpenHid();
    globals.m_FirmwareStatus = "Unknown";
    EXPECT_TRUE(window->VexilBootVersion());
    EXPECT_EQ(globals.m_FirmwareStatus, "Main");
    globals.m_FirmwareStatus = "Unknown";
    EXPECT_TRUE(window->VexilAppVersion());
    EXPECT_EQ(globals.m_FirmwareStatus, "Main");
    EXPECT_EQ(StatusLines(), (QStringList{"Vexil Bootloader revision 02.41", "Vexil firmware revision 02.55"}));
    EXPECT_FALSE(window->HasProgressWin()) << "no progress window is touched when none is open";
}

TEST_F(RevisionQuery, TimerRunsTheCheckOnce)
{
    window->mStartup = false;
    window->CheckRevisionsNowButton.SetEnabled(false);
    window->VexilRevisionsTimer.SetMode(Timer::ModeSingle);
    QSignalSpy fired(&window->VexilRevisionsTimer, &Timer::Action);
    ASSERT_TRUE(fired.wait(2000));
    EXPECT_EQ(window->MCUinstalledText.Text(), "01.12");
    EXPECT_TRUE(window->CheckRevisionsNowButton.Enabled());
    EXPECT_EQ(window->VexilRevisionsTimer.GetMode(), Timer::ModeOff);
    EXPECT_FALSE(fired.wait(400)) << "a single-shot timer fires once";
}
