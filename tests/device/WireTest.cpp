#include "ManualClock.h"
#include "ProgramFrame.h"
#include "SimulatedVexil.h"
#include "VexilHid.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <numeric>

// The 33 bytes of each output report, checksum included, as the device must receive them.
TEST(Wire, OutputReportBytes)
{
    // With a non-zero pkno the data bytes are 1 to 16.
    struct Row { char cmd; std::uint8_t pkno; std::uint32_t addr; std::uint8_t status; const char* hex; };
    const Row rows[] = {
        {'U', 0, 0, 0, "005500000000000000000000000000000000000000000000ab0000000000000000"},
        {'!', 3, 0x1D008000, 0, "002103000080001d0102030405060708090a0b0c0d0e0f10b70000000000000000"},
        {'E', 0, 0, 'A', "0045000000000000000000000000000000000000000000007a4100000000000000"}, // status is summed too
    };
    for (const Row& row : rows) {
        ProgramFrame frame;
        frame.pkt.cmd = row.cmd;
        frame.pkt.pkno = row.pkno;
        frame.pkt.addr = static_cast<std::int32_t>(row.addr);
        frame.pkt.status = row.status;
        for (std::size_t i = 0; row.pkno != 0 && i < frame.pkt.data.size(); ++i)
            frame.pkt.data[i] = static_cast<std::uint8_t>(i + 1);
        VexilHid::SetChecksum(frame.pkt);
        const auto report = frame.pkt.ToOutputReport(frame.rpt);
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(report.data()), report.size()).toHex().toStdString(), row.hex);
    }
}

// The simulator is the yardstick for the host code, so it must itself refuse
// what a real bootloader would not take, and answer none of it.
TEST(SimulatedDevice, RefusesMalformedReportsAndPacketsOutOfOrderWithoutAnswering)
{
    ManualClock clock;
    SimulatedVexil sim{clock};
    const std::unique_ptr<HidDevice> link = sim.Open(0x04D8, 0xF15D);
    // A well-formed output report, encoded independently of the host's encoder.
    auto report = [](char cmd, std::uint32_t addr = 0, std::uint8_t pkno = 0) {
        std::vector<unsigned char> r(33, 0);
        r[1] = static_cast<unsigned char>(cmd);
        r[2] = pkno;
        for (int i = 0; i < 4; ++i)
            r[4 + i] = static_cast<unsigned char>(addr >> (8 * i));
        r[24] = static_cast<unsigned char>(-std::accumulate(r.begin() + 1, r.begin() + 26, 0));
        return r;
    };
    // The status letter of the answer, or 0 when none came.
    auto exchange = [&link](const std::vector<unsigned char>& r) {
        EXPECT_EQ(link->Write(r.data(), r.size()), static_cast<int>(r.size()));
        unsigned char answer[32] = {};
        return link->ReadTimeout(answer, sizeof answer, 100) == 32 ? answer[24] : 0;
    };
    auto badSum = report('U'), padding = report('U'), shortReport = report('U');
    badSum[24] ^= 1;
    padding[30] = 1;
    shortReport.pop_back();
    const std::vector<unsigned char> malformed[] = {badSum, padding, shortReport, report('U', 0x1D008000),
                                                    report('Q'), report('E'), report('!', 0x1D008000)};
    for (const auto& r : malformed)
        EXPECT_EQ(exchange(r), 0) << static_cast<char>(r[1]);
    EXPECT_EQ(exchange(report('=')), 'A');
    EXPECT_EQ(exchange(report('E')), 'A');
    EXPECT_EQ(exchange(report('!', 0x1D008000, 1)), 0) << "a skipped packet";
    EXPECT_EQ(sim.ProtocolErrors().size(), std::size(malformed) + 1);
}
