#include "ManualClock.h"
#include "SimulatedVexil.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

// The simulator is the yardstick for the host code, so it must itself refuse
// what a real bootloader would not take.
class SimulatedDevice : public ::testing::Test {
protected:
    ManualClock clock;
    SimulatedVexil sim{clock};
    std::unique_ptr<HidDevice> link = sim.Open(0x04D8, 0xF15D);

    // A well-formed output report, encoded independently of the host's encoder.
    static std::vector<unsigned char> Report(char cmd, std::uint32_t addr = 0, std::uint8_t pkno = 0, std::uint8_t fill = 0)
    {
        std::vector<unsigned char> r(33, 0);
        r[1] = static_cast<unsigned char>(cmd);
        r[2] = pkno;
        for (int i = 0; i < 4; ++i)
            r[4 + i] = static_cast<unsigned char>(addr >> (8 * i));
        std::fill(r.begin() + 8, r.begin() + 24, fill);
        r[24] = static_cast<unsigned char>(-std::accumulate(r.begin() + 1, r.begin() + 26, 0));
        return r;
    }

    // The status letter of the answer, or 0 when none came.
    int Exchange(std::vector<unsigned char> report)
    {
        EXPECT_EQ(link->Write(report.data(), report.size()), static_cast<int>(report.size()));
        unsigned char answer[32] = {};
        if (link->ReadTimeout(answer, sizeof answer, 100) != 32)
            return 0;
        return answer[24];
    }
};

TEST_F(SimulatedDevice, RefusesMalformedReportsAndPacketsOutOfOrderWithoutAnswering)
{
    auto badSum = Report('U'), reportNumber = Report('U'), padding = Report('U'), shortReport = Report('U');
    badSum[24] ^= 1;
    reportNumber[0] = 2;
    padding[30] = 1;
    shortReport.pop_back();
    const std::vector<unsigned char> malformed[] = {badSum, reportNumber, padding, shortReport, Report('U', 0x1D008000),
                                                    Report('Q'), Report('E'), Report('!', 0x1D008000)};
    for (const auto& report : malformed)
        EXPECT_EQ(Exchange(report), 0) << static_cast<char>(report[1]);
    EXPECT_EQ(sim.ProtocolErrors().size(), std::size(malformed));

    EXPECT_EQ(Exchange(Report('=')), 'A');
    EXPECT_EQ(Exchange(Report('E')), 'A');
    EXPECT_EQ(Exchange(Report('!', 0x1D008000, 1)), 0) << "a skipped packet";
    EXPECT_EQ(sim.ProtocolErrors().size(), std::size(malformed) + 1);
}
