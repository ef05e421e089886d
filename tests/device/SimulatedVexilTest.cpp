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

    // Sends one report and returns the status letter of the answer, or 0 when none came.
    int Exchange(std::vector<unsigned char> report)
    {
        EXPECT_EQ(link->Write(report.data(), report.size()), static_cast<int>(report.size()));
        unsigned char answer[32] = {};
        if (link->ReadTimeout(answer, sizeof answer, 100) != 32)
            return 0;
        EXPECT_EQ(std::accumulate(answer, answer + 25, 0) % 256, 0) << "answer checksum";
        return answer[24];
    }
};

TEST_F(SimulatedDevice, RejectsMalformedReportsWithoutAnswering)
{
    struct Row {
        const char* name;
        std::vector<unsigned char> report;
    };
    auto badSum = Report('U');
    badSum[24] ^= 1;
    auto reportNumber = Report('U');
    reportNumber[0] = 2;
    auto padding = Report('U');
    padding[30] = 1;
    padding[24] = static_cast<unsigned char>(padding[24]); // padding is outside the checksum
    auto shortReport = Report('U');
    shortReport.pop_back();
    const Row rows[] = {
        {"bad checksum", badSum},
        {"report number", reportNumber},
        {"padding", padding},
        {"32 bytes", shortReport},
        {"fields on a sync", Report('U', 0x1D008000)},
        {"unknown letter", Report('Q')},
        {"erase while locked", Report('E')},
        {"program before erase", Report('!', 0x1D008000)},
    };
    for (const Row& row : rows) {
        const auto before = sim.ProtocolErrors().size();
        EXPECT_EQ(Exchange(row.report), 0) << row.name;
        EXPECT_EQ(sim.ProtocolErrors().size(), before + 1) << row.name;
    }
}

TEST_F(SimulatedDevice, ProgramsOnlyInOrderAfterUnlockAndErase)
{
    EXPECT_EQ(Exchange(Report('=')), 'A');
    EXPECT_EQ(Exchange(Report('E')), 'A');
    EXPECT_EQ(Exchange(Report('!', 0x1D008000, 0, 0x11)), 'A');
    EXPECT_EQ(Exchange(Report('!', 0x1D008000, 2, 0x22)), 0) << "a skipped packet is refused";
    EXPECT_EQ(Exchange(Report('!', 0x1D008000, 1, 0x22)), 'A');
    EXPECT_EQ(sim.ProtocolErrors().size(), 1);
    EXPECT_EQ(sim.Flash()[0], 0x11);
    EXPECT_EQ(sim.Flash()[16], 0x22);
    EXPECT_EQ(sim.Flash()[32], 0xFF);

    sim.SetRevisionAfterLoad(140);
    EXPECT_EQ(Exchange(Report('!', 0x8FFFFFFF)), 'B');
    EXPECT_TRUE(sim.LoadCompleted());
    EXPECT_EQ(sim.AppRevision(), 140);
    EXPECT_EQ(Exchange(Report('!', 0x1D008000, 2)), 0) << "nothing more after completion";
}

TEST_F(SimulatedDevice, UnplugAfterReportsDropsTheLastAnswerAndTheDevice)
{
    sim.UnplugAfterReports(2);
    EXPECT_EQ(Exchange(Report('U')), 'A');
    auto sync = Report('U');
    EXPECT_EQ(link->Write(sync.data(), sync.size()), 33);
    unsigned char answer[32];
    EXPECT_EQ(link->ReadTimeout(answer, sizeof answer, 100), -1);
    EXPECT_EQ(link->Write(sync.data(), sync.size()), -1);
    EXPECT_EQ(sim.Open(0x04D8, 0xF15D), nullptr);
    EXPECT_EQ(sim.Open(0x04D8, 0x0001), nullptr);
}
