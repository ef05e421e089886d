#include "DeviceFixture.h"

using Fault = SimulatedVexil::Fault;

class RevisionQuery : public DeviceFixture {};

// One window through all rows: each check opens the link afresh, so a device plugged in later is found.
TEST_F(RevisionQuery, LabelButtonsAndLogFollowWhatTheDeviceAnswered)
{
    enum class Device { Absent, SilentSync, SilentVersion, Answers };
    struct Row { Device device; bool startup; const char *label, *mcuRevision, *status; };
    const Row rows[] = {
        {Device::Absent, true, "??.??", "", "Unable to open Vexil device. See Vexil Utility Help, Getting Started."},
        {Device::Absent, false, "--", "", "Unable to open Vexil device. See Vexil Utility Help, Getting Started."},
        {Device::SilentSync, false, "--", "", ""},
        {Device::SilentVersion, false, "--", "N/A", ""},
        {Device::Answers, true, "00.07", "00.07", "Vexil firmware revision 00.07"},
    };
    sim.SetAppRevision(7);
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(row.device) << " start-up " << row.startup);
        window->StatusField.SetText({});
        sim.SetPresent(row.device != Device::Absent);
        sim.SetCommandFault('U', row.device == Device::SilentSync ? Fault::Silent : Fault::None);
        sim.SetCommandFault('G', row.device == Device::SilentVersion ? Fault::Silent : Fault::None);
        window->mStartup = row.startup;
        window->CheckRevisionsNowButton.SetEnabled(false);
        window->SendVexilButton.SetEnabled(row.device == Device::Absent);

        EXPECT_EQ(window->CheckVexilRevisions(), row.device == Device::Answers);
        EXPECT_EQ(window->MCUinstalledText.Text(), QString::fromLatin1(row.label));
        EXPECT_EQ(window->SendVexilButton.Enabled(), row.device != Device::Absent) << "the link opened";
        EXPECT_TRUE(window->CheckRevisionsNowButton.Enabled());
        EXPECT_EQ(globals.m_strMcuRevision, QString::fromLatin1(row.mcuRevision));
        EXPECT_EQ(globals.m_FirmwareStatus, row.device == Device::Absent ? "Unknown" : "Main");
        EXPECT_EQ(StatusLines().join('|'), QString::fromLatin1(row.status));
    }
    EXPECT_EQ(sim.OpenCount(), 3);
}

TEST_F(RevisionQuery, FailedQueriesNameTheCommandAndStatus)
{
    window->OpenHid();
    globals.m_TraceMode = globals.m_Verbose = true;
    OpenProgressWin();
    sim.SetCommandFault('U', Fault::WrongStatus, 1, 'N');
    sim.SetCommandFault('V', Fault::Silent);
    sim.SetCommandFault('G', Fault::WrongStatus, 1, 'Z');
    EXPECT_FALSE(window->VexilSync());
    EXPECT_FALSE(window->VexilBootVersion());
    EXPECT_FALSE(window->VexilAppVersion());
    EXPECT_EQ(globals.m_strMcuRevision, "N/A");
    // Nothing arrived for "V": the status shown is that of the last report that did.
    const QStringList failures{"COMMAND_SYNC unexpected response status \"N\"",
                               "COMMAND_READ_VERSION unexpected response status \"N\"",
                               "COMMAND_GET_APP_VER unexpected response status \"Z\""};
    EXPECT_EQ(StatusLines().filter("unexpected response status"), failures);
    EXPECT_EQ(ActivityLines().filter("unexpected response status"), failures);
}
