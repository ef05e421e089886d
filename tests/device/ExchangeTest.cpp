#include "DeviceFixture.h"

#include <QCoreApplication>

using Fault = SimulatedVexil::Fault;

class Exchange : public DeviceFixture {
protected:
    void SetUp() override
    {
        window->OpenHid();
        ASSERT_EQ(globals.m_FirmwareStatus, "Main");
    }

    void Erase()
    {
        ASSERT_TRUE(window->VexilWriteReadResponse('='));
        ASSERT_TRUE(window->VexilWriteReadResponse('E'));
    }

    bool SendCompletion()
    {
        window->WriteFrame.pkt = ProgramPacket{};
        window->WriteFrame.pkt.addr = static_cast<std::int32_t>(Window1Device::LOAD_COMPLETE_ADDRESS);
        return window->VexilWriteReadResponse('!');
    }
};

TEST_F(Exchange, AnswerTimeOutsByCommand)
{
    struct Row {
        char cmd;
        qint64 answerAfterUs;
        bool succeeds;
    };
    const Row rows[] = {
        {'E', 5'000'000, true},   // an erase may take seconds
        {'E', 7'900'000, true},
        {'E', 8'100'000, false},
        {'U', 900'000, true},
        {'U', 1'100'000, false},  // one second is the limit for everything else
        {'G', 1'100'000, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.cmd << " after " << row.answerAfterUs << " us");
        window->OpenHid();
        sim.SetLatencyMicroseconds(row.cmd == 'E' ? 0 : row.answerAfterUs);
        sim.SetEraseMicroseconds(row.cmd == 'E' ? row.answerAfterUs : 0);
        if (row.cmd == 'E') {
            ASSERT_TRUE(window->VexilWriteReadResponse('='));
        }
        const qint64 start = clock.Elapsed();
        EXPECT_EQ(window->VexilWriteReadResponse(row.cmd), row.succeeds);
        const qint64 took = clock.Elapsed() - start;
        if (row.succeeds) {
            EXPECT_EQ(took, row.answerAfterUs) << "the read must return as soon as the answer is there";
        } else {
            const qint64 limit = row.cmd == 'E' ? 8'000'000 : 1'000'000;
            EXPECT_GE(took, limit);
            EXPECT_LT(took, limit + 100'000);
        }
    }
    EXPECT_TRUE(sim.ProtocolErrors().isEmpty()) << sim.ProtocolErrors().join('\n').toStdString();
}

TEST_F(Exchange, CompletionPacketWaitsForB)
{
    Erase();
    sim.SetCommandFault('!', Fault::WrongStatus, 1, 'A');
    EXPECT_FALSE(SendCompletion());
    EXPECT_GE(ElapsedMs(), 1000) << "an A must not end the completion exchange early";
    EXPECT_EQ(window->ResponsePacket.status, 'A');

    EXPECT_TRUE(SendCompletion());
    EXPECT_EQ(window->ResponsePacket.status, 'B');
    EXPECT_TRUE(sim.LoadCompleted());
}

TEST_F(Exchange, WrongStatusCostsTheWholeTimeOutAndIsNotRetried)
{
    TraceOn();
    sim.SetCommandFault('U', Fault::WrongStatus, 1, 'N');
    EXPECT_FALSE(window->VexilWriteReadResponse('U'));
    EXPECT_GE(ElapsedMs(), 1000);
    EXPECT_EQ(window->ResponsePacket.status, 'N');
    EXPECT_EQ(sim.CountCommands('U'), 1);
    EXPECT_EQ(StatusLines(), QStringList{"VexilWriteReadResponse VexilHid Read Timed Out"});
}

TEST_F(Exchange, StatusZeroReportDoesNotEndTheExchange)
{
    sim.SetLatencyMicroseconds(4000);
    sim.SetCommandFault('G', Fault::EmptyReportFirst);
    EXPECT_TRUE(window->VexilWriteReadResponse('G'));
    EXPECT_EQ(window->ResponsePacket.status, 'A');
    EXPECT_EQ(clock.Elapsed(), 4000);
}

TEST_F(Exchange, WriteFailureReturnsAtOnce)
{
    TraceOn();
    OpenProgressWin();
    sim.SetPresent(false);
    EXPECT_FALSE(window->VexilWriteReadResponse('U'));
    EXPECT_EQ(clock.Elapsed(), 0);
    EXPECT_EQ(StatusLines(), QStringList{"VexilWriteReadResponse VexilHid Write failed"});
    EXPECT_EQ(ActivityLines(), (QStringList{"write 'U'", "VexilWriteReadResponse VexilHid Write failed"}));
}

TEST_F(Exchange, FailureLinesAreTraceOnly)
{
    sim.SetCommandFault('U', Fault::Silent);
    EXPECT_FALSE(window->VexilWriteReadResponse('U'));
    EXPECT_TRUE(StatusLines().isEmpty());
    EXPECT_EQ(window->ResponsePacket.status, 0) << "nothing arrived, so the status stays 0";
}

TEST_F(Exchange, TraceLinesNeedTraceAndProgressWindow)
{
    struct Row {
        bool trace;
        bool progressWin;
    };
    for (const Row row : {Row{false, false}, Row{true, false}, Row{false, true}, Row{true, true}}) {
        SCOPED_TRACE(testing::Message() << "trace " << row.trace << " window " << row.progressWin);
        globals.m_TraceMode = globals.m_Verbose = row.trace;
        if (row.progressWin)
            OpenProgressWin();
        EXPECT_TRUE(window->VexilWriteReadResponse('U'));
        const QStringList expected = row.trace && row.progressWin
            ? QStringList{"write 'U'", "read status 'A' 0 ms"}
            : QStringList{};
        EXPECT_EQ(ActivityLines(), expected);
        EXPECT_FALSE(row.trace && !row.progressWin && window->HasProgressWin())
            << "trace alone must not open the progress window";
        if (window->HasProgressWin())
            window->GetProgressWin().CloseIt_Action();
        globals.m_ProgressWinOpen = false;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(Exchange, DataPacketTraceShowsBlockAndBytes)
{
    Erase();
    TraceOn();
    OpenProgressWin();
    sim.SetLatencyMicroseconds(2400);
    window->WriteFrame.pkt = ProgramPacket{};
    window->WriteFrame.pkt.addr = 0x1D008000;
    window->WriteFrame.pkt.pkno = 0;
    for (int i = 0; i < 16; ++i)
        window->WriteFrame.pkt.data[i] = static_cast<std::uint8_t>(i * 17);
    ASSERT_TRUE(window->VexilWriteReadResponse('!'));
    EXPECT_TRUE(SendCompletion()) << sim.ProtocolErrors().join('\n').toStdString();
    EXPECT_EQ(ActivityLines(), (QStringList{
                                   "write '!' 0 1D008000 00112233445566778899AABBCCDDEEFF",
                                   "read status 'A' 2 ms",
                                   "write '!' 0 8FFFFFFF 00000000000000000000000000000000",
                                   "read status 'B' 2 ms",
                               }));
}

TEST(Hex2, PadsOnlySingleDigits)
{
    const std::pair<int, const char*> rows[] = {{0, "00"}, {9, "09"}, {15, "0F"}, {16, "10"}, {255, "FF"}, {4096, "1000"}};
    for (const auto& [value, text] : rows)
        EXPECT_EQ(Window1Device::Hex2(value), QString::fromLatin1(text)) << value;
}
