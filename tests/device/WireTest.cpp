#include "ProgramFrame.h"
#include "VexilHid.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

std::array<std::uint8_t, 33> Wire(ProgramFrame frame)
{
    VexilHid::SetChecksum(frame.pkt);
    return frame.pkt.ToOutputReport(frame.rpt);
}

std::uint8_t PacketSum(const std::array<std::uint8_t, 33>& report)
{
    return static_cast<std::uint8_t>(std::accumulate(report.begin() + 1, report.begin() + 26, 0));
}

} // namespace

TEST(Wire, SyncRequestIsLetterAndChecksumOnly)
{
    ProgramFrame frame;
    frame.pkt.cmd = 'U';
    const auto report = Wire(frame);
    for (std::size_t i = 0; i < report.size(); ++i) {
        const int expected = i == 1 ? 0x55 : i == 24 ? 0xAB : 0;
        EXPECT_EQ(report[i], expected) << "byte " << i;
    }
}

TEST(Wire, ChecksumMakesThePacketSumToZero)
{
    struct Row {
        char cmd;
        std::int32_t addr;
        std::uint8_t pkno;
        int expectedCksm; // -1: only the zero sum is checked
    };
    const Row rows[] = {
        {'U', 0, 0, 0xAB},
        {'E', 0, 0, 0xBB},
        {'!', 0x1D008000, 3, -1},
        {'!', static_cast<std::int32_t>(0x8FFFFFFF), 0, -1},
    };
    for (const Row& row : rows) {
        ProgramFrame frame;
        frame.pkt.cmd = row.cmd;
        frame.pkt.addr = row.addr;
        frame.pkt.pkno = row.pkno;
        if (row.cmd == '!' && row.addr > 0)
            std::iota(frame.pkt.data.begin(), frame.pkt.data.end(), 0xF0);
        const auto report = Wire(frame);
        EXPECT_EQ(PacketSum(report), 0) << row.cmd;
        if (row.expectedCksm >= 0) {
            EXPECT_EQ(report[24], row.expectedCksm) << row.cmd;
        }
    }
}

TEST(Wire, DataAndCompletionPacketLayout)
{
    ProgramFrame data;
    data.pkt.cmd = '!';
    data.pkt.addr = 0x1D008000;
    data.pkt.pkno = 3;
    std::iota(data.pkt.data.begin(), data.pkt.data.end(), 1);
    const auto report = Wire(data);
    const std::uint8_t header[] = {0x00, '!', 0x03, 0x00, 0x00, 0x80, 0x00, 0x1D};
    for (std::size_t i = 0; i < sizeof header; ++i)
        EXPECT_EQ(report[i], header[i]) << "byte " << i;
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(report[8 + i], i + 1) << "data byte " << i;
    for (std::size_t i = 25; i < 33; ++i)
        EXPECT_EQ(report[i], 0) << "byte " << i;

    ProgramFrame completion;
    completion.pkt.cmd = '!';
    completion.pkt.addr = static_cast<std::int32_t>(0x8FFFFFFF);
    const auto done = Wire(completion);
    EXPECT_EQ(done[4], 0xFF);
    EXPECT_EQ(done[5], 0xFF);
    EXPECT_EQ(done[6], 0xFF);
    EXPECT_EQ(done[7], 0x8F);
}

TEST(Wire, InputReportStandsOneByteLower)
{
    std::uint8_t report[32] = {};
    report[0] = 'G';
    report[1] = 5;
    report[2] = 1;
    report[3] = 0x80; // addr 0x1D008080, little-endian
    report[4] = 0x80;
    report[5] = 0x00;
    report[6] = 0x1D;
    report[7] = 112;
    report[22] = 0xEE;
    report[23] = 0x42;
    report[24] = 'A';
    report[31] = 0x99; // padding is ignored
    const ProgramPacket p = ProgramPacket::FromInputReport(report);
    EXPECT_EQ(p.cmd, 'G');
    EXPECT_EQ(p.pkno, 5);
    EXPECT_EQ(p.rw, 1);
    EXPECT_EQ(static_cast<std::uint32_t>(p.addr), 0x1D008080u);
    EXPECT_EQ(p.data[0], 112);
    EXPECT_EQ(p.data[15], 0xEE);
    EXPECT_EQ(p.cksm, 0x42);
    EXPECT_EQ(p.status, 'A');
}
