#include "DeviceFixture.h"

using Fault = SimulatedVexil::Fault;

class Exchange : public DeviceFixture {
protected:
    void SetUp() override { window->OpenHid(); }

    // A program packet with data bytes i * step, or the completion packet.
    bool Send(std::uint32_t addr, std::uint8_t step = 0)
    {
        window->WriteFrame.pkt = ProgramPacket{};
        window->WriteFrame.pkt.addr = static_cast<std::int32_t>(addr);
        for (std::size_t i = 0; i < 16; ++i)
            window->WriteFrame.pkt.data[i] = static_cast<std::uint8_t>(i * step);
        return window->VexilWriteReadResponse('!');
    }
};

TEST_F(Exchange, AnswerWithinTheCommandsTimeOutAndOnlyTheRightStatus)
{
    // cmd '!' sends the completion packet; a failure takes the whole time-out, and less than one read slice more.
    struct Row { const char* name; char cmd; qint64 latencyUs, eraseUs; Fault fault; char letter; bool succeeds; qint64 tookUs; };
    const Row rows[] = {
        {"erase answered at 7.9 s", 'E', 0, 7'900'000, Fault::None, 0, true, 7'900'000},
        {"erase answered at 8.1 s", 'E', 0, 8'100'000, Fault::None, 0, false, 8'000'000},
        {"sync answered at 0.9 s", 'U', 900'000, 0, Fault::None, 0, true, 900'000},
        {"sync answered at 1.1 s", 'U', 1'100'000, 0, Fault::None, 0, false, 1'000'000},
        {"wrong status, not retried", 'U', 0, 0, Fault::WrongStatus, 'N', false, 1'000'000},
        {"a status-0 report first", 'G', 4000, 0, Fault::EmptyReportFirst, 0, true, 4000},
        {"completion answered with A", '!', 0, 0, Fault::WrongStatus, 'A', false, 1'000'000},
        {"completion answered with B", '!', 2000, 0, Fault::None, 0, true, 2000},
    };
    globals.m_TraceMode = globals.m_Verbose = true;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        window->OpenHid();
        sim.SetLatencyMicroseconds(0);
        sim.SetEraseMicroseconds(0);
        ASSERT_TRUE(window->VexilWriteReadResponse('=') && window->VexilWriteReadResponse('E'));
        window->StatusField.SetText({});
        sim.SetLatencyMicroseconds(row.latencyUs);
        sim.SetEraseMicroseconds(row.eraseUs);
        sim.SetCommandFault(row.cmd, row.fault, 1, row.letter);
        const int sent = sim.CountCommands(row.cmd);
        const qint64 start = clock.Elapsed();
        EXPECT_EQ(row.cmd == '!' ? Send(Window1Device::LOAD_COMPLETE_ADDRESS) : window->VexilWriteReadResponse(row.cmd), row.succeeds);
        const qint64 took = clock.Elapsed() - start;
        EXPECT_TRUE(row.succeeds ? took == row.tookUs : took >= row.tookUs && took < row.tookUs + 100'000) << took;
        EXPECT_EQ(sim.CountCommands(row.cmd), sent + 1);
        EXPECT_EQ(StatusLines().join('|'), row.succeeds ? "" : "VexilWriteReadResponse VexilHid Read Timed Out");
    }
    EXPECT_TRUE(sim.ProtocolErrors().isEmpty()) << sim.ProtocolErrors().join('\n').toStdString();

    // A failed query names its command and the status of the last report that arrived.
    window->StatusField.SetText({});
    sim.SetCommandFault('U', Fault::WrongStatus, 1, 'N');
    sim.SetCommandFault('V', Fault::Silent);
    EXPECT_FALSE(window->VexilSync() || window->VexilBootVersion());
    EXPECT_EQ(StatusLines().filter("unexpected").join('|'),
              "COMMAND_SYNC unexpected response status \"N\"|COMMAND_READ_VERSION unexpected response status \"N\"");

    globals.m_TraceMode = globals.m_Verbose = false;
    window->StatusField.SetText({});
    sim.SetCommandFault('U', Fault::Silent);
    EXPECT_FALSE(window->VexilWriteReadResponse('U'));
    EXPECT_EQ(StatusLines(), QStringList{}) << "failure lines are for trace mode";

    globals.m_TraceMode = globals.m_Verbose = true;
    sim.SetPresent(false);
    const qint64 start = clock.Elapsed();
    EXPECT_FALSE(window->VexilWriteReadResponse('U'));
    EXPECT_EQ(clock.Elapsed(), start) << "a failed write returns at once";
    EXPECT_EQ(StatusLines(), QStringList{"VexilWriteReadResponse VexilHid Write failed"});
}

TEST_F(Exchange, TraceShowsEachPacketOnlyInTraceModeWithTheProgressWindowOpen)
{
    const QStringList traced{"write '='", "read status 'A' 2 ms", "write 'E'", "read status 'A' 2 ms",
                             "write '!' 0 1D008000 00112233445566778899AABBCCDDEEFF", "read status 'A' 2 ms",
                             "write '!' 0 8FFFFFFF 00000000000000000000000000000000", "read status 'B' 2 ms"};
    sim.SetLatencyMicroseconds(2400);
    // In this order the window opened for the second row stays open for the third.
    for (const auto& [trace, progressWin] : {std::pair{true, false}, {false, true}, {true, true}}) {
        globals.m_TraceMode = globals.m_Verbose = trace;
        if (progressWin)
            OpenProgressWin();
        EXPECT_TRUE(window->VexilWriteReadResponse('=') && window->VexilWriteReadResponse('E'));
        EXPECT_TRUE(Send(Window1Device::FLASH_WINDOW_START, 17) && Send(Window1Device::LOAD_COMPLETE_ADDRESS));
        EXPECT_EQ(window->HasProgressWin(), progressWin) << "trace alone opens no progress window";
        EXPECT_EQ(ActivityLines(), trace && progressWin ? traced : QStringList{}) << trace << progressWin;
    }
}

class RevisionQuery : public DeviceFixture {};

// One window through all rows: each check opens the link afresh, so a device plugged in later is found.
TEST_F(RevisionQuery, LabelButtonsAndLogFollowWhatTheDeviceAnswered)
{
    enum class Device { Absent, SilentSync, SilentVersion, Answers };
    const struct { Device device; bool startup; const char *label, *mcuRevision, *status; } rows[] = {
        {Device::Absent, true, "??.??", "", "Unable to open Vexil device. See Vexil Utility Help, Getting Started."},
        {Device::Absent, false, "--", "", "Unable to open Vexil device. See Vexil Utility Help, Getting Started."},
        {Device::SilentSync, false, "--", "", ""},
        {Device::SilentVersion, false, "--", "N/A", ""},
        {Device::Answers, true, "00.07", "00.07", "Vexil firmware revision 00.07"},
    };
    sim.SetAppRevision(7);
    for (const auto& row : rows) {
        window->StatusField.SetText({});
        sim.SetPresent(row.device != Device::Absent);
        sim.SetCommandFault('U', row.device == Device::SilentSync ? Fault::Silent : Fault::None);
        sim.SetCommandFault('G', row.device == Device::SilentVersion ? Fault::Silent : Fault::None);
        window->mStartup = row.startup;
        window->CheckRevisionsNowButton.SetEnabled(false);
        window->SendVexilButton.SetEnabled(row.device == Device::Absent);

        EXPECT_EQ(window->CheckVexilRevisions(), row.device == Device::Answers);
        // The send button follows whether the link opened; the check button is always given back.
        EXPECT_EQ(std::pair(window->SendVexilButton.Enabled(), window->CheckRevisionsNowButton.Enabled()), std::pair(row.device != Device::Absent, true));
        EXPECT_EQ((QStringList{window->MCUinstalledText.Text(), globals.m_strMcuRevision, globals.m_FirmwareStatus, StatusLines().join('|')}),
                  (QStringList{row.label, row.mcuRevision, row.device == Device::Absent ? "Unknown" : "Main", row.status}));
    }
    EXPECT_EQ(sim.OpenCount(), 3);
}
